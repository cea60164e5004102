// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What conversions of reals depend on beside the number, for a scope: the locale's decimal point
// and the rounding mode. The locales are made here, so no machine has to have them installed.

#ifndef QXRECORDSET_TESTS_SUPPORT_NUMERICMODES_H
#define QXRECORDSET_TESTS_SUPPORT_NUMERICMODES_H

#include <unistd.h>

#include <cfenv>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace Support {

class Rounding {
 public:
  explicit Rounding(int nMode) : nBefore(std::fegetround()) { std::fesetround(nMode); }
  Rounding(const Rounding&) = delete;
  Rounding& operator=(const Rounding&) = delete;
  ~Rounding() { std::fesetround(nBefore); }

  // Whether the processor rounds so. That of valgrind rounds to nearest whatever it is told, while
  // the C library believes the mode.
  bool IsObeyed() const {
    const volatile double d = 1;
    switch (std::fegetround()) {
      case FE_UPWARD:
        return d / 3 > 1.0 / 3;
      case FE_DOWNWARD:
        return -d / 3 < -1.0 / 3;
      case FE_TOWARDZERO:
        return d / 10 < 1.0 / 10;
      default:
        return true;
    }
  }

 private:
  int nBefore;
};

// The decimal point of the process.
class DecimalPoint {
 public:
  explicit DecimalPoint(const std::string& strPoint) {
    if (!Set(strPoint)) throw std::runtime_error("no locale with the point " + strPoint);
  }
  DecimalPoint(const DecimalPoint&) = delete;
  DecimalPoint& operator=(const DecimalPoint&) = delete;
  ~DecimalPoint() { std::setlocale(LC_NUMERIC, "C"); }

 private:
  // The C library reads a category's texts from a file: a mark, the number of items, where each of
  // them lies, and the items. Here these are the point, no separator of thousands and no grouping,
  // the first two as wide characters, and the character set.
  static std::string File(std::string strPoint) {
    constexpr std::uint32_t kWords[] = {0x20031115 ^ LC_NUMERIC, 6, 32, 40, 40, 44, 40, 48};
    strPoint.resize(12);
    return std::string(reinterpret_cast<const char*>(kWords), sizeof kWords) + strPoint +
           std::string(".\0\0\0UTF-8\0", 10);
  }

  static bool Set(const std::string& strPoint) {
    char szFolder[] = "/tmp/numeric-XXXXXX";
    if (mkdtemp(szFolder) == nullptr) return false;
    // A name of its own for each point: the C library keeps what it has read.
    std::string strName = "point";
    for (const char c : strPoint)
      strName += std::to_string(static_cast<unsigned char>(c));
    const std::filesystem::path folder(szFolder);
    std::filesystem::create_directory(folder / strName);
    std::ofstream(folder / strName / "LC_NUMERIC", std::ios::binary) << File(strPoint);
    setenv("LOCPATH", szFolder, 1);
    const bool bSet = std::setlocale(LC_NUMERIC, strName.c_str()) != nullptr;
    unsetenv("LOCPATH");
    std::filesystem::remove_all(folder);
    return bSet;
  }
};

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_NUMERICMODES_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Numbers to text, beside the C library's snprintf and the C++ library's to_chars.

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <iterator>

#include "bench/text/Text.h"
#include "json/JSONSerialize.h"

namespace bench::text {
namespace {

constexpr std::size_t kNumbers = 1'000;
constexpr int kBufferSize = 32;

// One integer of every length in turn, both signs.
std::vector<std::int64_t> Integers() {
  std::vector<std::int64_t> vNumbers;
  std::int64_t nPower = 1;
  for (std::size_t i = 0; i < kNumbers; ++i) {
    constexpr std::int64_t kLargestPower = 1'000'000'000'000'000'000;
    nPower = nPower == kLargestPower ? 1 : nPower * 10;
    const std::int64_t nNumber = nPower + static_cast<std::int64_t>(i);
    vNumbers.push_back(i % 3 == 0 ? -nNumber : nNumber);
  }
  return vNumbers;
}

// Prices, coordinates, and very small and large reals.
std::vector<double> Reals() {
  std::vector<double> vNumbers;
  for (std::size_t i = 0; i < kNumbers; ++i) {
    const double f = static_cast<double>(i);
    const double vKinds[] = {f / 100, -65.6136 + f / 10'000, f * 1e-9, f * 12'345'678.9};
    vNumbers.push_back(vKinds[i % std::size(vKinds)]);
  }
  return vNumbers;
}

struct Qx {
  static void Format(std::int64_t n, char* szBuffer) {
    JSON::Long64ToStr(n, szBuffer, kBufferSize);
  }
  static void Format(double f, char* szBuffer) { JSON::DoubleToStr(f, szBuffer, kBufferSize); }
};

struct Snprintf {
  static void Format(std::int64_t n, char* szBuffer) {
    std::snprintf(szBuffer, kBufferSize, "%lld", static_cast<long long>(n));
  }
  static void Format(double f, char* szBuffer) { std::snprintf(szBuffer, kBufferSize, "%g", f); }
};

struct ToChars {
  static void Format(std::int64_t n, char* szBuffer) {
    *std::to_chars(szBuffer, szBuffer + kBufferSize - 1, n).ptr = '\0';
  }
  static void Format(double f, char* szBuffer) {
    constexpr int kDigits = 6;
    char* const pEnd = szBuffer + kBufferSize - 1;
    *std::to_chars(szBuffer, pEnd, f, std::chars_format::general, kDigits).ptr = '\0';
  }
};

template <typename Formatter, typename Number>
class FormatJob {
 public:
  explicit FormatJob(std::vector<Number> vSource) : vNumbers(std::move(vSource)) {}

  template <typename Sink>
  void Run(Sink& sink) {
    char szBuffer[kBufferSize];
    long lIndex = 0;
    for (const Number number : vNumbers) {
      Formatter::Format(number, szBuffer);
      sink.Text(++lIndex, "", szBuffer);
    }
  }

 private:
  std::vector<Number> vNumbers;
};

template <typename Number>
void AddKind(Suite& suite, const char* szWork, const std::vector<Number>& vNumbers) {
  const Amount amount{0, vNumbers.size()};
  suite.Add<FormatJob<Qx, Number>>({szWork, "mixed-1k", kQx, "reused"}, amount, vNumbers);
  suite.Add<FormatJob<Snprintf, Number>>({szWork, "mixed-1k", "snprintf", "reused"}, amount,
                                         vNumbers);
  suite.Add<FormatJob<ToChars, Number>>({szWork, "mixed-1k", "to_chars", "reused"}, amount,
                                        vNumbers);
}

}  // namespace

void AddNumbers(Suite& suite) {
  AddKind(suite, "integers", Integers());
  AddKind(suite, "reals", Reals());
}

}  // namespace bench::text

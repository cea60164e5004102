// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Between a target and what makes its inputs. Built for libFuzzer, that is the fuzzer. Otherwise it
// is the main function here: it runs the target on the files it is given, or on those in the
// folders, and on what is left of each when it breaks off behind any of its bytes.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "fuzz/common/Fuzz.h"
#include "tests/support/PlainParser.h"

void Fuzz::Expect(bool bHolds, const char* what) {
  if (bHolds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

void Fuzz::ExpectNone(const std::string& difference) {
  Expect(difference.empty(), difference.c_str());
}

void Fuzz::ExpectEqual(std::string_view got, std::string_view wanted, const char* what) {
  if (got == wanted) return;
  std::fprintf(stderr, "got    %s\nwanted %s\n", Plain::Printable(got).c_str(),
               Plain::Printable(wanted).c_str());
  Expect(false, what);
}

#ifdef QXRECORDSET_LIBFUZZER

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
  Fuzz::Run({reinterpret_cast<const char*>(pData), nSize});
  return 0;
}

#else

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

// Beyond this only the whole file is run.
#ifdef QXRECORDSET_SHORT_TESTS
constexpr std::size_t kMostCuts = 50;
#else
constexpr std::size_t kMostCuts = 2000;
#endif

void RunCopy(std::string_view input) {
  const std::unique_ptr<char[]> pCopy(new char[input.size()]);
  std::copy(input.begin(), input.end(), pCopy.get());
  Fuzz::Run({pCopy.get(), input.size()});
}

void RunFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string strInput{std::istreambuf_iterator<char>(file), {}};
  std::fprintf(stderr, "%s: %zu bytes\n", path.c_str(), strInput.size());
  Fuzz::Expect(file.good(), "the file can be read");
  for (std::size_t n = std::min(strInput.size(), kMostCuts); n-- > 0;)
    RunCopy(std::string_view(strInput).substr(0, n));
  RunCopy(strInput);
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::filesystem::path> vFiles;
  for (const char* szPath : std::vector<const char*>(argv + 1, argv + argc)) {
    if (!std::filesystem::is_directory(szPath)) {
      vFiles.emplace_back(szPath);
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(szPath))
      vFiles.push_back(entry.path());
  }
  Fuzz::Expect(!vFiles.empty(), "there is a file to run");
  std::sort(vFiles.begin(), vFiles.end());
  for (const auto& path : vFiles)
    RunFile(path);
}

#endif

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Support::Random is a small generator of reproducible numbers (splitmix64): the same seed gives
// the same numbers on every platform, and starting one costs nothing, so each case can have its
// own. Given bytes instead of a seed, it takes its numbers from them: so a fuzzer, which makes up
// the bytes, takes over the choices of a random test.

#ifndef QXRECORDSET_TESTS_SUPPORT_RANDOM_H
#define QXRECORDSET_TESTS_SUPPORT_RANDOM_H

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace Support {

// Random tests in instrumented builds, which are slower, take every fifth case, and on emulated
// processors (QXRECORDSET_SHORT_TESTS) every tenth.
#ifdef QXRECORDSET_SHORT_TESTS
constexpr int kStride = 10;
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(NDEBUG)
constexpr int kStride = 5;
#else
constexpr int kStride = 1;
#endif

class Random {
 public:
  explicit Random(std::uint64_t seed) : nState(seed) {}

  // `bytes` must stay where they are. When they are used up, numbers go on like those of seed 0.
  explicit Random(std::string_view bytes) : strBytes(bytes) {}
  bool UsedUp() const { return strBytes.empty(); }

  // A number from 0 to nBound - 1. REQUIRES: nBound is not 0.
  std::uint32_t Below(std::size_t nBound) {
    if (!strBytes.empty()) return TakeBytes(nBound);
    nState += 0x9E3779B97F4A7C15u;
    std::uint64_t n = nState;
    n = (n ^ (n >> 30)) * 0xBF58476D1CE4E5B9u;
    n = (n ^ (n >> 27)) * 0x94D049BB133111EBu;
    return static_cast<std::uint32_t>(((n ^ (n >> 31)) >> 16) % nBound);
  }

  // True once in `nTimes` on average.
  bool OneIn(std::size_t nTimes) { return Below(nTimes) == 0; }

  // Any element of an array or container.
  template <typename Choices>
  auto& Of(Choices& choices) {
    return std::begin(choices)[static_cast<std::ptrdiff_t>(Below(std::size(choices)))];
  }

 private:
  // As many bytes as the bound needs, or as there are.
  std::uint32_t TakeBytes(std::size_t nBound) {
    std::uint32_t n = 0;
    for (std::uint64_t nReach = 1; nReach < nBound && !strBytes.empty(); nReach *= 256) {
      n = n << 8 | static_cast<unsigned char>(strBytes.front());
      strBytes.remove_prefix(1);
    }
    return static_cast<std::uint32_t>(n % nBound);
  }

  std::uint64_t nState = 0;
  std::string_view strBytes;
};

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_RANDOM_H

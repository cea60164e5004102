// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Support::Random is a small generator of reproducible numbers (splitmix64): the same seed gives
// the same numbers on every platform, and starting one costs nothing, so each case can have its
// own.

#ifndef QXRECORDSET_TESTS_SUPPORT_RANDOM_H
#define QXRECORDSET_TESTS_SUPPORT_RANDOM_H

#include <cstddef>
#include <cstdint>
#include <iterator>

namespace Support {

class Random {
 public:
  explicit Random(std::uint64_t seed) : nState(seed) {}

  // A number from 0 to nBound - 1. REQUIRES: nBound is not 0.
  std::uint32_t Below(std::size_t nBound) {
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
    return *(std::begin(choices) + Below(std::size(choices)));
  }

 private:
  std::uint64_t nState;
};

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_RANDOM_H

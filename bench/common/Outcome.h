// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What a piece of work came to, in a form that is equal whichever library did it. Every text, name,
// integer, boolean and null goes into a hash; members of an object may come in any order. Reals are
// added up instead, because libraries may differ in their last bit.

#ifndef QXRECORDSET_BENCH_COMMON_OUTCOME_H
#define QXRECORDSET_BENCH_COMMON_OUTCOME_H

#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

namespace bench {

struct Outcome {
  std::uint64_t nHash = 0;
  std::uint64_t nValues = 0;  // values that went in
  double fReals = 0;          // sum of the reals' absolute values

  bool operator==(const Outcome& other) const {
    constexpr double kTolerance = 1e-9;  // relative; far above rounding, far below a wrong digit
    return nHash == other.nHash && nValues == other.nValues &&
           std::fabs(fReals - other.fReals) <= kTolerance * std::fabs(fReals);
  }

  std::string Describe() const {
    return std::to_string(nValues) + " values, hash " + std::to_string(nHash) + ", reals " +
           std::to_string(fReals);
  }
};

// A well-mixed hash of two words (the finalizer of splitmix64).
inline std::uint64_t Mix(std::uint64_t a, std::uint64_t b) {
  std::uint64_t n = a * 0x9E3779B97F4A7C15U + b + 0x7F4A7C15U;
  n = (n ^ (n >> 30)) * 0xBF58476D1CE4E5B9U;
  n = (n ^ (n >> 27)) * 0x94D049BB133111EBU;
  return n ^ (n >> 31);
}

// FNV-1a.
inline std::uint64_t HashBytes(std::string_view text) {
  std::uint64_t nHash = 0xCBF29CE484222325U;
  for (const char c : text) {
    nHash = (nHash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
  }
  return nHash;
}

// Folds a document tree into an outcome. Each library has a walker (QxTree.h and its neighbours)
// that calls these for every value; each call returns the hash of that value, and the walker hands
// the root's to Finish().
class TreeHasher {
 public:
  std::uint64_t Null() { return Leaf(1, 0); }
  std::uint64_t Boolean(bool b) { return Leaf(2, b ? 1 : 0); }
  std::uint64_t Integer(std::int64_t n) { return Leaf(3, static_cast<std::uint64_t>(n)); }
  std::uint64_t String(std::string_view text) { return Leaf(5, HashBytes(text)); }
  std::uint64_t Real(double f) {
    outcome.fReals += std::fabs(f);
    return Leaf(4, 0);
  }

  // A container starts with the hash that Array() or Object() gives and takes in its elements, or
  // its members, one after the other.
  std::uint64_t Array() { return Leaf(6, 0); }
  std::uint64_t Object() { return Leaf(7, 0); }
  static std::uint64_t WithElement(std::uint64_t nArray, std::uint64_t nElement) {
    return Mix(nArray, nElement);
  }
  static std::uint64_t WithMember(std::uint64_t nObject, std::string_view name,
                                  std::uint64_t nValue) {
    return nObject + Mix(HashBytes(name), nValue);
  }

  Outcome Finish(std::uint64_t nRoot) {
    outcome.nHash = nRoot;
    return outcome;
  }

 private:
  std::uint64_t Leaf(std::uint64_t nKind, std::uint64_t nContent) {
    ++outcome.nValues;
    return Mix(nKind, nContent);
  }

  Outcome outcome;
};

}  // namespace bench

#endif  // QXRECORDSET_BENCH_COMMON_OUTCOME_H

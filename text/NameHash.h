// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The hash of a name: of a column, or of an object's member. Names come from texts of unknown
// origin, which must not be able to prepare names that collide: every object that hashes draws keys
// of its own, and each step multiplies two words that both depend on the keys and mixes the two
// halves of the product. (Without a key in both factors, there are words for which the product is
// 0, or keeps a difference, for every seed.)

#ifndef QXRECORDSET_TEXT_NAMEHASH_H
#define QXRECORDSET_TEXT_NAMEHASH_H

#include <chrono>
#include <cstddef>
#include <cstdint>

#include "text/ShortBytes.h"

namespace JSON {

class NameHash {
 public:
  // Keys that differ from object to object and from run to run: they come from where the object
  // lies and from the time.
  NameHash()
      : NameHash(reinterpret_cast<std::uintptr_t>(this) ^
                 static_cast<std::uint64_t>(
                     std::chrono::steady_clock::now().time_since_epoch().count())) {}

  explicit NameHash(std::uint64_t nSeed)
      : nKeyA_(Scramble(nSeed + kSeedStep)), nKeyB_(Scramble(nSeed + 2 * kSeedStep)) {}

  // Reads eight bytes at a time, and nothing outside the name.
  std::uint32_t operator()(const char* name, std::size_t length) const {
    return (*this)(name, length, length);
  }

  // The same for a name that counts as longer than the bytes that are read.
  std::uint32_t operator()(const char* name, std::size_t length, std::uint64_t nLength) const {
    std::uint64_t nHash = nKeyA_;
    for (; length > 16; name += 16, length -= 16) {
      nHash = Multiply(ReadWord<std::uint64_t>(name) ^ nKeyB_,
                       ReadWord<std::uint64_t>(name + 8) ^ nHash);
    }
    nHash = Multiply(Front(name, length) ^ nKeyB_, Back(name, length) ^ nHash);
    return static_cast<std::uint32_t>(Multiply(nHash ^ nKeyA_, nLength ^ nKeyB_));
  }

 private:
  static constexpr std::uint64_t kSeedStep = 0x9E3779B97F4A7C15u;  // 2^64 / golden ratio

  // The two words that cover a name of up to 16 bytes; they may overlap.
  static std::uint64_t Front(const char* name, std::size_t length) {
    if (length >= 8) return ReadWord<std::uint64_t>(name);
    if (length >= 4) return ReadWord<std::uint32_t>(name);
    if (length == 0) return 0;
    return static_cast<std::uint64_t>(static_cast<unsigned char>(name[0])) << 16 |
           static_cast<std::uint64_t>(static_cast<unsigned char>(name[length / 2])) << 8 |
           static_cast<unsigned char>(name[length - 1]);
  }
  static std::uint64_t Back(const char* name, std::size_t length) {
    if (length >= 8) return ReadWord<std::uint64_t>(name + length - 8);
    return length >= 4 ? ReadWord<std::uint32_t>(name + length - 4) : 0;
  }

  // The two halves of the 128-bit product, combined.
  static std::uint64_t Multiply(std::uint64_t a, std::uint64_t b) {
#ifdef __SIZEOF_INT128__
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
#else
    const std::uint64_t nLow = static_cast<std::uint64_t>(Low(a)) * Low(b);
    const std::uint64_t nCrossA = static_cast<std::uint64_t>(High(a)) * Low(b) + High(nLow);
    const std::uint64_t nCrossB = static_cast<std::uint64_t>(Low(a)) * High(b) + Low(nCrossA);
    const std::uint64_t nHigh =
        static_cast<std::uint64_t>(High(a)) * High(b) + High(nCrossA) + High(nCrossB);
    return nHigh ^ (nCrossB << 32 | Low(nLow));
#endif
  }
  static std::uint32_t Low(std::uint64_t n) { return static_cast<std::uint32_t>(n); }
  static std::uint32_t High(std::uint64_t n) { return static_cast<std::uint32_t>(n >> 32); }

  // Spreads a seed over all bits (the finisher of splitmix64).
  static std::uint64_t Scramble(std::uint64_t n) {
    n = (n ^ (n >> 30)) * 0xBF58476D1CE4E5B9u;
    n = (n ^ (n >> 27)) * 0x94D049BB133111EBu;
    return n ^ (n >> 31);
  }

  std::uint64_t nKeyA_;
  std::uint64_t nKeyB_;
};

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_NAMEHASH_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Sixteen bytes of text at a time: the one place that knows the processor. Block16 compares all its
// bytes at once and gives the result as a bit mask, bit i for byte i. It is a vector of the
// compiler, so its operations are a few instructions where the processor has vectors, and loops
// on other processors. Three functions have no such form: they are written for SSE2, which every
// x86 build of the library may use, and for NEON, which 64-bit ARM has always and 32-bit ARM where
// the build allows it; otherwise (or with QXRECORDSET_NO_SIMD defined) they are plain loops.
//
// Load() reads and Store() writes exactly 16 bytes: callers prove that they are there. For shorter
// texts there are halves and quarters, which may overlap: a text of 8 to 16 bytes is its first and
// its last 8 bytes, one of 4 to 8 bytes its first and its last 4.

#ifndef QXRECORDSET_TEXT_BLOCK_H
#define QXRECORDSET_TEXT_BLOCK_H

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "text/ShortBytes.h"

// The order of bytes counts: the vector versions take the first byte of a word for its lowest.
#if defined(__SSE2__) && !defined(QXRECORDSET_NO_SIMD)
#define QXRECORDSET_SSE2 1
#include <emmintrin.h>
#elif defined(__ARM_NEON) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ && \
    !defined(QXRECORDSET_NO_SIMD)
#define QXRECORDSET_NEON 1
#include <arm_neon.h>
#endif

// For the few functions whose call would cost more than their work, where the compiler sees only
// that they are recursive.
#define QXRECORDSET_HOT [[gnu::always_inline]] inline

namespace JSON {

// The condition, with the hint that it usually is true: the compiler keeps that path in registers.
QXRECORDSET_HOT bool Usually(bool bCondition) {
  return __builtin_expect(static_cast<long>(bCondition), 1L) != 0;
}

// Number of zero bits below the lowest set bit. REQUIRES: mask is not 0.
inline unsigned LowestBit(std::uint32_t mask) {
  assert(mask != 0);
  return static_cast<unsigned>(__builtin_ctz(mask));
}

class Block16 {
 public:
  static constexpr int kBytes = 16;

  static Block16 Load(const char* p) { return Block16(ReadWord<Bytes>(p)); }
  void Store(char* p) const { WriteWord(p, v_); }

  // The `n` bytes at `p`, and zeros. REQUIRES: n is no more than kBytes.
  static Block16 LoadFirst(const char* p, std::size_t n) {
    assert(n <= kBytes);
    char aBytes[kBytes] = {};
    std::memcpy(aBytes, p, n);
    return Load(aBytes);
  }

  // Eight bytes at `p` and eight at `q` side by side, and back again.
  static Block16 LoadHalves(const char* p, const char* q) {
    return Block16(
        reinterpret_cast<Bytes>(Halves{ReadWord<std::uint64_t>(p), ReadWord<std::uint64_t>(q)}));
  }
  void StoreHalves(char* p, char* q) const {
    WriteWord(p, reinterpret_cast<Halves>(v_)[0]);
    WriteWord(q, reinterpret_cast<Halves>(v_)[1]);
  }

  // Four bytes at `p` and four at `q` side by side, both twice, and back again.
  static Block16 LoadQuarters(const char* p, const char* q) {
    const auto nP = ReadWord<std::uint32_t>(p);
    const auto nQ = ReadWord<std::uint32_t>(q);
    return Block16(reinterpret_cast<Bytes>(Quarters{nP, nQ, nP, nQ}));
  }
  void StoreQuarters(char* p, char* q) const {
    WriteWord(p, reinterpret_cast<Quarters>(v_)[0]);
    WriteWord(q, reinterpret_cast<Quarters>(v_)[1]);
  }

  // Bytes equal to `c`; bytes equal to the other block's byte at the same place.
  std::uint32_t Equals(char c) const { return Mask(Is(c)); }
  std::uint32_t Equals(Block16 other) const { return Mask(v_ == other.v_); }

  // Bytes that end or interrupt a JSON string: '"' or '\'.
  std::uint32_t QuoteOrBackslash() const { return Mask(Is('"') | Is('\\')); }

  // The same, and NUL.
  std::uint32_t QuoteBackslashOrNul() const { return Mask(Is('\0') | (Is('"') | Is('\\'))); }

  // Bytes that a JSON string cannot hold raw: '"', '\' and everything below 0x20, NUL included.
  std::uint32_t NeedsEscape() const { return Mask((v_ <= All('\x1F')) | (Is('"') | Is('\\'))); }

  // Bytes that are no decimal digits.
  std::uint32_t NonDigits() const { return Mask(v_ - All('0') >= All('\n')); }

  // The eight decimal digits of a value below 10^8, most significant first; they fill the lower
  // half. REQUIRES: value < 10^8.
  static Block16 DecimalDigits(std::uint32_t value) {
    assert(value < 100000000);
#ifdef QXRECORDSET_SSE2
    // Every lane of 32, then 16 bits is split in two until each holds a digit; multiplication by
    // 2^20 / 100 and 2^16 / 10, rounded up, is an exact division for lanes this small.
    const auto lane = [](std::uint32_t n) { return _mm_cvtsi32_si128(static_cast<int>(n)); };
    const __m128i fours = _mm_unpacklo_epi32(lane(value / 10000), lane(value % 10000));
    const __m128i high2 = _mm_srli_epi16(_mm_mulhi_epu16(fours, _mm_set1_epi32(10486)), 4);
    const __m128i low2 = _mm_sub_epi16(fours, _mm_mullo_epi16(high2, _mm_set1_epi32(100)));
    const __m128i twos = _mm_or_si128(high2, _mm_slli_epi32(low2, 16));
    const __m128i high1 = _mm_mulhi_epu16(twos, _mm_set1_epi16(6554));
    const __m128i low1 = _mm_sub_epi16(twos, _mm_mullo_epi16(high1, _mm_set1_epi16(10)));
    const __m128i ones = _mm_or_si128(high1, _mm_slli_epi16(low1, 8));
    return Block16(reinterpret_cast<Bytes>(_mm_add_epi8(ones, _mm_set1_epi8('0'))));
#elif defined(QXRECORDSET_NEON)
    // The same with the vectors of half a block, whose products have room in the lanes themselves:
    // multiplication by 2^20 / 100 and 2^10 / 10, rounded up.
    const HalfOf32 fours{value / 10000, value % 10000};
    const HalfOf32 high2 = fours * 10486 >> 20;
    const auto twos = reinterpret_cast<HalfOf16>(high2 | (fours - high2 * 100) << 16);
    const HalfOf16 high1 = twos * 103 >> 10;
    const auto ones = reinterpret_cast<std::uint64_t>(high1 | (twos - high1 * 10) << 8);
    return Block16(reinterpret_cast<Bytes>(Halves{ones, 0}) + All('0'));
#else
    Bytes digits{};
    for (int i = 7; i >= 0; --i, value /= 10) {
      digits[i] = static_cast<unsigned char>('0' + value % 10);
    }
    return Block16(digits);
#endif
  }

  // Stores eight bytes: the lower half without its first nSkip bytes, then zeros. REQUIRES: nSkip
  // is less than 8.
  void StoreHalfFrom(unsigned nSkip, char* p) const {
    assert(nSkip < kBytes / 2);
#if defined(QXRECORDSET_SSE2) || defined(QXRECORDSET_NEON)
    WriteWord(p, (reinterpret_cast<Halves>(v_) >> (8 * nSkip))[0]);
#else
    std::memset(p, 0, kBytes / 2);
    std::memcpy(p, reinterpret_cast<const char*>(&v_) + nSkip, kBytes / 2 - nSkip);
#endif
  }

 private:
  // Vectors of the compiler: it knows instructions for them, or does lane by lane what they lack.
  using Bytes = unsigned char __attribute__((vector_size(kBytes)));
  using Quarters = std::uint32_t __attribute__((vector_size(kBytes)));
  using Halves = std::uint64_t __attribute__((vector_size(kBytes)));
  using Marks = signed char __attribute__((vector_size(kBytes)));  // -1 for yes, 0 for no
#ifdef QXRECORDSET_NEON
  using HalfOf32 = std::uint32_t __attribute__((vector_size(kBytes / 2)));
  using HalfOf16 = std::uint16_t __attribute__((vector_size(kBytes / 2)));
#endif

  explicit Block16(Bytes v) : v_(v) {}

  static Bytes All(char c) { return Bytes{} + static_cast<unsigned char>(c); }
  Marks Is(char c) const { return v_ == All(c); }

  static std::uint32_t Mask(Marks marks) {
#ifdef QXRECORDSET_SSE2
    return static_cast<std::uint32_t>(_mm_movemask_epi8(reinterpret_cast<__m128i>(marks)));
#elif defined(QXRECORDSET_NEON)
    // Each byte keeps the bit of its place among eight; adding neighbours three times makes one
    // byte of each eight.
    constexpr Bytes kBits = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
    const Bytes bits = reinterpret_cast<Bytes>(marks) & kBits;
    uint8x8_t sums = vpadd_u8(vget_low_u8(bits), vget_high_u8(bits));
    sums = vpadd_u8(sums, sums);
    sums = vpadd_u8(sums, sums);
    return vget_lane_u16(vreinterpret_u16_u8(sums), 0);
#else
    std::uint32_t mask = 0;
    for (int i = 0; i < kBytes; ++i) {
      mask |= static_cast<std::uint32_t>(marks[i] & 1) << i;
    }
    return mask;
#endif
  }

  Bytes v_;
};

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_BLOCK_H

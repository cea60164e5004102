// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Sixteen bytes of text at a time: the one place that knows the processor. Block16 compares all its
// bytes at once and gives the result as a bit mask, bit i for byte i. With SSE2, which every x86
// build of the library may use, an operation is one or two instructions; elsewhere (or with
// QXRECORDSET_NO_SIMD defined) a plain byte loop does the same, so callers are written once.
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

#if defined(__SSE2__) && !defined(QXRECORDSET_NO_SIMD)
#define QXRECORDSET_SSE2 1
#include <emmintrin.h>
#endif

// For the few functions whose call would cost more than their work, where the compiler sees only
// that they are recursive.
#define QXRECORDSET_HOT [[gnu::always_inline]] inline

namespace JSON {

// The condition, which mostly holds: what it usually leads to is kept in registers.
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

#ifdef QXRECORDSET_SSE2
  static Block16 Load(const char* p) {
    __m128i v;
    std::memcpy(&v, p, sizeof v);
    return Block16(v);
  }
  void Store(char* p) const { std::memcpy(p, &v_, sizeof v_); }

  // The `n` bytes at `p`, and zeros. REQUIRES: n is no more than kBytes.
  static Block16 LoadFirst(const char* p, std::size_t n) {
    assert(n <= kBytes);
    char aBytes[kBytes] = {};
    std::memcpy(aBytes, p, n);
    return Load(aBytes);
  }

  // Eight bytes at `p` and eight at `q` side by side, and back again.
  static Block16 LoadHalves(const char* p, const char* q) {
    return Block16(_mm_unpacklo_epi64(LoadHalf(p), LoadHalf(q)));
  }
  void StoreHalves(char* p, char* q) const {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v_);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(q), _mm_unpackhi_epi64(v_, v_));
  }

  // Four bytes at `p` and four at `q` side by side, both twice, and back again.
  static Block16 LoadQuarters(const char* p, const char* q) {
    const __m128i v = _mm_unpacklo_epi32(LoadQuarter(p), LoadQuarter(q));
    return Block16(_mm_unpacklo_epi64(v, v));
  }
  void StoreQuarters(char* p, char* q) const {
    StoreQuarter(p, v_);
    StoreQuarter(q, _mm_srli_si128(v_, 4));
  }

  // The eight decimal digits of a value below 10^8, most significant first; they fill the lower
  // half. Every lane of 32, then 16 bits is split in two until each holds a digit; multiplication
  // by 2^20 / 100 and 2^16 / 10, rounded up, is an exact division for lanes this small.
  static Block16 DecimalDigits(std::uint32_t value) {
    const auto lane = [](std::uint32_t n) { return _mm_cvtsi32_si128(static_cast<int>(n)); };
    const __m128i fours = _mm_unpacklo_epi32(lane(value / 10000), lane(value % 10000));
    const __m128i high2 = _mm_srli_epi16(_mm_mulhi_epu16(fours, _mm_set1_epi32(10486)), 4);
    const __m128i low2 = _mm_sub_epi16(fours, _mm_mullo_epi16(high2, _mm_set1_epi32(100)));
    const __m128i twos = _mm_or_si128(high2, _mm_slli_epi32(low2, 16));
    const __m128i high1 = _mm_mulhi_epu16(twos, _mm_set1_epi16(6554));
    const __m128i low1 = _mm_sub_epi16(twos, _mm_mullo_epi16(high1, _mm_set1_epi16(10)));
    const __m128i ones = _mm_or_si128(high1, _mm_slli_epi16(low1, 8));
    return Block16(_mm_add_epi8(ones, _mm_set1_epi8('0')));
  }

  // Stores eight bytes: the lower half without its first nSkip bytes, then zeros. REQUIRES:
  // nSkip < 8.
  void StoreHalfFrom(unsigned nSkip, char* p) const {
    assert(nSkip < 8);
    const __m128i v = _mm_srl_epi64(v_, _mm_cvtsi32_si128(static_cast<int>(8 * nSkip)));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v);
  }

  // Bytes equal to `c`; bytes equal to the other block's byte at the same place.
  std::uint32_t Equals(char c) const { return Mask(_mm_cmpeq_epi8(v_, _mm_set1_epi8(c))); }
  std::uint32_t Equals(Block16 other) const { return Mask(_mm_cmpeq_epi8(v_, other.v_)); }

  // Bytes that end or interrupt a JSON string: '"' or '\'.
  std::uint32_t QuoteOrBackslash() const {
    return Mask(_mm_or_si128(_mm_cmpeq_epi8(v_, _mm_set1_epi8('"')),
                             _mm_cmpeq_epi8(v_, _mm_set1_epi8('\\'))));
  }

  // The same, and NUL.
  std::uint32_t QuoteBackslashOrNul() const {
    const __m128i nul = _mm_cmpeq_epi8(v_, _mm_setzero_si128());
    const __m128i quote = _mm_cmpeq_epi8(v_, _mm_set1_epi8('"'));
    const __m128i backslash = _mm_cmpeq_epi8(v_, _mm_set1_epi8('\\'));
    return Mask(_mm_or_si128(nul, _mm_or_si128(quote, backslash)));
  }

  // Bytes that a JSON string cannot hold raw: '"', '\' and everything below 0x20, NUL included.
  std::uint32_t NeedsEscape() const {
    const __m128i control = _mm_cmpeq_epi8(_mm_min_epu8(v_, _mm_set1_epi8(0x1F)), v_);
    const __m128i quote = _mm_cmpeq_epi8(v_, _mm_set1_epi8('"'));
    const __m128i backslash = _mm_cmpeq_epi8(v_, _mm_set1_epi8('\\'));
    return Mask(_mm_or_si128(control, _mm_or_si128(quote, backslash)));
  }

  // Bytes that are no decimal digits.
  std::uint32_t NonDigits() const {
    const __m128i shifted = _mm_sub_epi8(v_, _mm_set1_epi8('0'));
    return Mask(_mm_cmpeq_epi8(_mm_max_epu8(shifted, _mm_set1_epi8(10)), shifted));
  }

 private:
  explicit Block16(__m128i v) : v_(v) {}
  // The type of the pointer says 16 bytes, the instruction reads 8; the stores of halves likewise.
  static __m128i LoadHalf(const char* p) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
  }
  static __m128i LoadQuarter(const char* p) {
    int n = 0;
    std::memcpy(&n, p, sizeof n);
    return _mm_cvtsi32_si128(n);
  }
  static void StoreQuarter(char* p, __m128i v) {
    const int n = _mm_cvtsi128_si32(v);
    std::memcpy(p, &n, sizeof n);
  }
  static std::uint32_t Mask(__m128i v) { return static_cast<std::uint32_t>(_mm_movemask_epi8(v)); }
  __m128i v_;
#else
  static Block16 Load(const char* p) {
    Block16 block;
    std::memcpy(block.bytes_, p, sizeof block.bytes_);
    return block;
  }
  void Store(char* p) const { std::memcpy(p, bytes_, sizeof bytes_); }

  static Block16 LoadFirst(const char* p, std::size_t n) {
    assert(n <= kBytes);
    Block16 block;
    std::memset(block.bytes_, 0, sizeof block.bytes_);
    std::memcpy(block.bytes_, p, n);
    return block;
  }

  static Block16 LoadHalves(const char* p, const char* q) {
    Block16 block;
    std::memcpy(block.bytes_, p, 8);
    std::memcpy(block.bytes_ + 8, q, 8);
    return block;
  }
  void StoreHalves(char* p, char* q) const {
    std::memcpy(p, bytes_, 8);
    std::memcpy(q, bytes_ + 8, 8);
  }
  static Block16 LoadQuarters(const char* p, const char* q) {
    Block16 block;
    std::memcpy(block.bytes_, p, 4);
    std::memcpy(block.bytes_ + 4, q, 4);
    std::memcpy(block.bytes_ + 8, block.bytes_, 8);
    return block;
  }
  void StoreQuarters(char* p, char* q) const {
    std::memcpy(p, bytes_, 4);
    std::memcpy(q, bytes_ + 4, 4);
  }
  static Block16 DecimalDigits(std::uint32_t value) {
    Block16 block;
    std::memset(block.bytes_, '0', sizeof block.bytes_);
    for (int i = 7; i >= 0; --i, value /= 10) {
      block.bytes_[i] = static_cast<unsigned char>('0' + value % 10);
    }
    return block;
  }
  void StoreHalfFrom(unsigned nSkip, char* p) const {
    assert(nSkip < 8);
    std::memset(p, 0, 8);
    std::memcpy(p, bytes_ + nSkip, 8 - nSkip);
  }

  std::uint32_t Equals(char c) const {
    return Mask([c](unsigned char b) { return b == static_cast<unsigned char>(c); });
  }
  std::uint32_t Equals(Block16 other) const {
    std::uint32_t mask = 0;
    for (int i = 0; i < kBytes; ++i) {
      mask |= static_cast<std::uint32_t>(bytes_[i] == other.bytes_[i]) << i;
    }
    return mask;
  }
  std::uint32_t QuoteOrBackslash() const {
    return Mask([](unsigned char b) { return b == '"' || b == '\\'; });
  }
  std::uint32_t QuoteBackslashOrNul() const {
    return Mask([](unsigned char b) { return b == '"' || b == '\\' || b == '\0'; });
  }
  std::uint32_t NeedsEscape() const {
    return Mask([](unsigned char b) { return b < 0x20 || b == '"' || b == '\\'; });
  }
  std::uint32_t NonDigits() const {
    return Mask([](unsigned char b) { return b < '0' || b > '9'; });
  }

 private:
  Block16() = default;
  template <typename Test>
  std::uint32_t Mask(Test test) const {
    std::uint32_t mask = 0;
    for (int i = 0; i < kBytes; ++i) {
      mask |= static_cast<std::uint32_t>(test(bytes_[i])) << i;
    }
    return mask;
  }
  unsigned char bytes_[kBytes];
#endif
};

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_BLOCK_H

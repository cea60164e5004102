// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Sixteen bytes of text at a time: the one place that knows the processor. Block16 compares all its
// bytes at once and gives the result as a bit mask, bit i for byte i. With SSE2, which every x86
// build of the library may use, an operation is one or two instructions; elsewhere (or with
// QXRECORDSET_NO_SIMD defined) a plain byte loop does the same, so callers are written once.
//
// Load() reads and Store() writes exactly 16 bytes: callers prove that they are there.

#ifndef QXRECORDSET_JSON_BLOCK_H
#define QXRECORDSET_JSON_BLOCK_H

#include <cstdint>
#include <cstring>

#if defined(__SSE2__) && !defined(QXRECORDSET_NO_SIMD)
#define QXRECORDSET_SSE2 1
#include <emmintrin.h>
#endif

namespace JSON {

// Number of zero bits below the lowest set bit. REQUIRES: mask is not 0.
inline unsigned LowestBit(std::uint32_t mask) {
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

  // Bytes equal to `c`; bytes equal to the other block's byte at the same place.
  std::uint32_t Equals(char c) const { return Mask(_mm_cmpeq_epi8(v_, _mm_set1_epi8(c))); }
  std::uint32_t Equals(Block16 other) const { return Mask(_mm_cmpeq_epi8(v_, other.v_)); }

  // Bytes that end or interrupt a JSON string: '"' or '\'.
  std::uint32_t QuoteOrBackslash() const {
    return Mask(_mm_or_si128(_mm_cmpeq_epi8(v_, _mm_set1_epi8('"')),
                             _mm_cmpeq_epi8(v_, _mm_set1_epi8('\\'))));
  }

  // Bytes that a JSON string cannot hold raw: '"', '\' and everything below 0x20, NUL included.
  std::uint32_t NeedsEscape() const {
    const __m128i control = _mm_cmpeq_epi8(_mm_min_epu8(v_, _mm_set1_epi8(0x1F)), v_);
    const __m128i quote = _mm_cmpeq_epi8(v_, _mm_set1_epi8('"'));
    const __m128i backslash = _mm_cmpeq_epi8(v_, _mm_set1_epi8('\\'));
    return Mask(_mm_or_si128(control, _mm_or_si128(quote, backslash)));
  }

 private:
  explicit Block16(__m128i v) : v_(v) {}
  static std::uint32_t Mask(__m128i v) { return static_cast<std::uint32_t>(_mm_movemask_epi8(v)); }
  __m128i v_;
#else
  static Block16 Load(const char* p) {
    Block16 block;
    std::memcpy(block.bytes_, p, sizeof block.bytes_);
    return block;
  }
  void Store(char* p) const { std::memcpy(p, bytes_, sizeof bytes_); }

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
  std::uint32_t NeedsEscape() const {
    return Mask([](unsigned char b) { return b < 0x20 || b == '"' || b == '\\'; });
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

#endif  // QXRECORDSET_JSON_BLOCK_H

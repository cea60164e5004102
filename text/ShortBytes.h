// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Comparing and copying short runs of bytes. Most column names and cell texts are a few bytes
// long, where the call to memcmp or memmove costs more than its work. Up to 16 bytes are therefore
// covered by two words read from both ends, which may overlap; nothing outside the run is touched,
// since a word is read or written only where the run is as long as the word.

#ifndef QXRECORDSET_TEXT_SHORTBYTES_H
#define QXRECORDSET_TEXT_SHORTBYTES_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace JSON {

// The word that begins at `p`, which need not be aligned.
template <typename Word>
inline Word ReadWord(const char* p) {
  Word word;
  std::memcpy(&word, p, sizeof word);
  return word;
}

template <typename Word>
inline void WriteWord(char* p, Word word) {
  std::memcpy(p, &word, sizeof word);
}

// Whether `n` bytes at `a` and `b` are equal.
inline bool SameBytes(const char* a, const char* b, std::size_t n) {
  if (n > 16) return std::memcmp(a, b, n) == 0;
  if (n >= 8) {
    return ((ReadWord<std::uint64_t>(a) ^ ReadWord<std::uint64_t>(b)) |
            (ReadWord<std::uint64_t>(a + n - 8) ^ ReadWord<std::uint64_t>(b + n - 8))) == 0;
  }
  if (n >= 4) {
    return ((ReadWord<std::uint32_t>(a) ^ ReadWord<std::uint32_t>(b)) |
            (ReadWord<std::uint32_t>(a + n - 4) ^ ReadWord<std::uint32_t>(b + n - 4))) == 0;
  }
  return n == 0 || (a[0] == b[0] && a[n / 2] == b[n / 2] && a[n - 1] == b[n - 1]);
}

// Copies `n` bytes. The two runs may overlap: everything is read before anything is written.
inline void MoveBytes(char* to, const char* from, std::size_t n) {
  if (n > 16) {
    std::memmove(to, from, n);
  } else if (n >= 8) {
    const std::uint64_t nFront = ReadWord<std::uint64_t>(from);
    const std::uint64_t nBack = ReadWord<std::uint64_t>(from + n - 8);
    WriteWord(to, nFront);
    WriteWord(to + n - 8, nBack);
  } else if (n >= 4) {
    const std::uint32_t nFront = ReadWord<std::uint32_t>(from);
    const std::uint32_t nBack = ReadWord<std::uint32_t>(from + n - 4);
    WriteWord(to, nFront);
    WriteWord(to + n - 4, nBack);
  } else if (n != 0) {
    const char first = from[0];
    const char middle = from[n / 2];
    const char last = from[n - 1];
    to[0] = first;
    to[n / 2] = middle;
    to[n - 1] = last;
  }
}

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_SHORTBYTES_H

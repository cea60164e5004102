// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// How UTF-8 encodes a code point.

#ifndef QXRECORDSET_TEXT_UTF8_H
#define QXRECORDSET_TEXT_UTF8_H

#include <cassert>
#include <cstddef>
#include <cstdint>

namespace JSON {

// Bytes of a code point, from 1 to 4.
inline std::size_t Utf8Length(std::uint32_t nCode) {
  if (nCode < 0x80) return 1;
  if (nCode < 0x800) return 2;
  return nCode < 0x10000 ? 3 : 4;
}

// Writes a code point and returns the address behind it. REQUIRES: nCode < 2^21, and room for
// Utf8Length(nCode) bytes.
inline char* WriteUtf8(std::uint32_t nCode, char* p) {
  assert(nCode < 0x200000);
  constexpr unsigned char kLeadMark[] = {0, 0, 0xC0, 0xE0, 0xF0};  // by length
  const std::size_t nBytes = Utf8Length(nCode);
  for (std::size_t i = nBytes - 1; i > 0; --i) {
    p[i] = static_cast<char>(0x80U | (nCode & 0x3FU));
    nCode >>= 6;
  }
  p[0] = static_cast<char>(kLeadMark[nBytes] | nCode);
  return p + nBytes;
}

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_UTF8_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What single bytes mean, to all who read text.

#ifndef QXRECORDSET_TEXT_BYTES_H
#define QXRECORDSET_TEXT_BYTES_H

#include <string_view>

namespace JSON {

// White space of JSON text.
inline bool IsSpace(char c) {
  return static_cast<unsigned char>(c) <= ' ' &&
         (c == ' ' || c == '\n' || c == '\r' || c == '\t' || c == '\f');
}

// White space to the functions of the C library.
inline bool IsCSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

inline bool IsDigit(char c) { return c >= '0' && c <= '9'; }
inline bool BeginsNumber(char c) { return IsDigit(c) || c == '+' || c == '-'; }

// The value of a hexadecimal digit of either case, or -1.
inline int HexValue(char c) {
  if (IsDigit(c)) return c - '0';
  const char cLower = static_cast<char>(c | 0x20);
  return cLower >= 'a' && cLower <= 'f' ? cLower - 'a' + 10 : -1;
}

// `text` up to its first NUL, which is all that a C function would see of it.
inline std::string_view UpToNul(std::string_view text) { return text.substr(0, text.find('\0')); }

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_BYTES_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What single bytes mean, to all who read text.

#ifndef QXRECORDSET_TEXT_BYTES_H
#define QXRECORDSET_TEXT_BYTES_H

#include <climits>
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

// What a byte is in a number: the bytes of a number are "+-0123456789.eE", and one of ".eE" makes
// it a real one.
enum class NumberByte : unsigned char { kNone, kInteger, kReal };

struct NumberBytes {
  NumberByte aBytes[UCHAR_MAX + 1] = {};

  constexpr NumberBytes() {
    for (char c = '0'; c <= '9'; ++c) {
      Of(c) = NumberByte::kInteger;
    }
    Of('+') = Of('-') = NumberByte::kInteger;
    Of('.') = Of('e') = Of('E') = NumberByte::kReal;
  }
  constexpr NumberByte& Of(char c) { return aBytes[static_cast<unsigned char>(c)]; }
  constexpr NumberByte operator[](char c) const { return aBytes[static_cast<unsigned char>(c)]; }
};
inline constexpr NumberBytes kNumberBytes;

inline bool IsIntegerByte(char c) { return IsDigit(c) || c == '+' || c == '-'; }
inline bool IsRealByte(char c) { return kNumberBytes[c] != NumberByte::kNone; }

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

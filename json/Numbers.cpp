// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The number functions of json/JSONSerialize.h: numbers to text in a caller's buffer.

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "json/JSONSerialize.h"
#include "text/Digits.h"
#include "text/WriteReal.h"

namespace {

// Text that does not fit is cut. REQUIRES: size is 1 or more.
char* CopyText(std::string_view text, char* buffer, int size) {
  assert(size >= 1);
  const std::size_t nLength = std::min(text.size(), static_cast<std::size_t>(size) - 1);
  std::memcpy(buffer, text.data(), nLength);
  buffer[nLength] = '\0';
  return buffer + nLength;
}

template <typename Integer>
char* IntegerToStr(Integer value, char* buffer, int size) {
  constexpr std::size_t kMax = JSON::kMaxDecimal<Integer>;
  if (size < 1) return nullptr;
  buffer[size - 1] = '\0';
  if (static_cast<std::size_t>(size) > kMax) {
    char* const pEnd = JSON::WriteDecimal(value, buffer);
    *pEnd = '\0';
    return pEnd;
  }
  char text[kMax];
  char* const pEnd = JSON::WriteDecimal(value, text);
  return CopyText({text, static_cast<std::size_t>(pEnd - text)}, buffer, size);
}

// Whether "%g" writes `value` like an integer: a whole number of at most six digits. Negative zero
// ("-0") is none.
bool IsShortInteger(double value) {
  if (!(value > -1e6 && value < 1e6)) return false;
  return value == static_cast<int>(value) && !(value == 0 && std::signbit(value));
}

char* PrintDouble(double value, char* buffer, int size) {
  const int nLength = std::snprintf(buffer, static_cast<std::size_t>(size), "%g", value);
  buffer[size - 1] = '\0';
  char* const pEnd = buffer + std::clamp(nLength, 0, size - 1);
  *pEnd = '\0';  // already there, unless snprintf failed
  return pEnd;
}

}  // namespace

char* IntToStr(int value, char* buffer, int size) { return IntegerToStr(value, buffer, size); }

char* LongToStr(long value, char* buffer, int size) { return IntegerToStr(value, buffer, size); }

char* UnsignedLongToStr(unsigned long value, char* buffer, int size) {
  return IntegerToStr(value, buffer, size);
}

char* Long64ToStr(long long value, char* buffer, int size) {
  return IntegerToStr(value, buffer, size);
}

char* UnsignedLong64ToStr(unsigned long long value, char* buffer, int size) {
  return IntegerToStr(value, buffer, size);
}

char* DoubleToStr(double value, char* buffer, int size) {
  if (size < 1) return nullptr;
  if (IsShortInteger(value)) return IntegerToStr(static_cast<int>(value), buffer, size);
  char aText[JSON::kMostReal];
  const bool bRoom = static_cast<std::size_t>(size) >= sizeof aText;
  char* const pText = bRoom ? buffer : aText;
  char* const pEnd = JSON::WriteReal(value, pText);
  if (pEnd == nullptr) return PrintDouble(value, buffer, size);
  buffer[size - 1] = '\0';
  if (!bRoom) return CopyText({aText, static_cast<std::size_t>(pEnd - aText)}, buffer, size);
  *pEnd = '\0';
  return pEnd;
}

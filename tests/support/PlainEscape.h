// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// String escaping once more, a byte at a time from the list of escapes. Tests hold the library's
// escaping against it.

#ifndef QXRECORDSET_TESTS_SUPPORT_PLAINESCAPE_H
#define QXRECORDSET_TESTS_SUPPORT_PLAINESCAPE_H

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

namespace Plain {

// `text` up to its first NUL, with escapes.
inline std::string Escape(std::string_view text) {
  constexpr std::string_view strBytes = "\"\\\b\t\n\f\r";
  constexpr std::string_view strLetters = "\"\\btnfr";
  std::string strResult;
  for (const char c : text.substr(0, text.find('\0'))) {
    const std::size_t nAt = strBytes.find(c);
    if (nAt != std::string_view::npos) {
      strResult += '\\';
      strResult += strLetters[nAt];
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char szCode[8];
      std::snprintf(szCode, sizeof szCode, "\\u%04x", static_cast<unsigned>(c));
      strResult += szCode;
    } else {
      strResult += c;
    }
  }
  return strResult;
}

}  // namespace Plain

#endif  // QXRECORDSET_TESTS_SUPPORT_PLAINESCAPE_H

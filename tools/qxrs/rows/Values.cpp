// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Numbers, escapes, UTF-8.

#include "tools/qxrs/rows/Values.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cwchar>

#include "text/Bytes.h"
#include "text/Scan.h"
#include "text/Utf8.h"

namespace qxrs {

// ---- Numbers ------------------------------------------------------------------------------------

namespace {

// Behind the digits at `p`, or null when there are none.
const char* SkipDigits(const char* p, const char* pEnd) {
  const char* const pBegin = p;
  while (p != pEnd && JSON::IsDigit(*p)) {
    ++p;
  }
  return p == pBegin ? nullptr : p;
}

// Behind the fraction and the exponent of a number, or null when one of them is malformed.
const char* SkipRealPart(const char* p, const char* pEnd) {
  if (p != pEnd && *p == '.') p = SkipDigits(p + 1, pEnd);
  if (!p || p == pEnd || (*p != 'e' && *p != 'E')) return p;
  ++p;
  return SkipDigits(p + (p != pEnd && (*p == '+' || *p == '-') ? 1 : 0), pEnd);
}

}  // namespace

Kind NumberKind(std::string_view strText) {
  const char* p = strText.data();
  const char* const pEnd = p + strText.size();
  const bool bNegative = p != pEnd && *p == '-';
  const char* const pDigits = p + (bNegative ? 1 : 0);
  p = SkipDigits(pDigits, pEnd);
  if (!p || (*pDigits == '0' && p - pDigits > 1)) return Kind::Text;
  if (p == pEnd) return bNegative && *pDigits == '0' ? Kind::Text : Kind::Integer;
  return SkipRealPart(p, pEnd) == pEnd ? Kind::Real : Kind::Text;
}

Kind ReadAs(const Cell& cell) {
  if (cell.bEscaped || cell.eKind != Kind::Text) return Kind::Text;
  if (cell.strText == "true" || cell.strText == "false") return Kind::Boolean;
  const Kind eKind = NumberKind(cell.strText);
  return eKind == Kind::Integer && !ToInt64(cell.strText) ? Kind::Text : eKind;
}

std::optional<std::int64_t> ToInt64(std::string_view strText) {
  std::int64_t nValue = 0;
  const char* const pEnd = strText.data() + strText.size();
  const auto result = std::from_chars(strText.data(), pEnd, nValue);
  return result.ec == std::errc() && result.ptr == pEnd ? std::optional(nValue) : std::nullopt;
}

double ToDouble(std::string_view strText) {
  double fValue = 0;
  const char* const pEnd = strText.data() + strText.size();
  if (std::from_chars(strText.data(), pEnd, fValue).ec == std::errc::result_out_of_range) {
    return std::strtod(std::string(strText).c_str(), nullptr);  // gives zero or an infinity
  }
  return fValue;
}

std::string RealText(double fValue) {
  if (std::isinf(fValue)) return fValue < 0 ? "-9e999" : "9e999";
  char szText[32];  // 24 are needed: -2.2250738585072014e-308
  const auto result = std::to_chars(szText, szText + sizeof szText, fValue);
  std::string strText(szText, result.ptr);
  return NumberKind(strText) == Kind::Real ? strText : strText + ".0";
}

bool FitsDouble(std::string_view strText) {
  // Zeros at either end do not count, nor does the exponent.
  const auto Digits = [](std::string_view strNumber) {
    std::string strDigits;
    for (const char c : strNumber.substr(0, strNumber.find_first_of("eE"))) {
      if (JSON::IsDigit(c) && (c != '0' || !strDigits.empty())) strDigits += c;
    }
    return strDigits.erase(strDigits.find_last_not_of('0') + 1);
  };
  const double fValue = ToDouble(strText);
  if (std::isinf(fValue)) return false;
  constexpr std::size_t kSafeLength = 15;
  return strText.size() <= kSafeLength || Digits(strText) == Digits(RealText(fValue));
}

// ---- Escapes ------------------------------------------------------------------------------------

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;
constexpr std::size_t kHexDigits = 4;  // of an escape \uXXXX

bool IsSurrogate(std::uint32_t nCode) { return nCode >= 0xD800 && nCode < 0xE000; }
bool IsHighSurrogate(std::uint32_t nCode) { return nCode >= 0xD800 && nCode < 0xDC00; }

void AppendUtf8(std::uint32_t nCode, std::string& strText) {
  char aBytes[4];
  strText.append(aBytes, JSON::WriteUtf8(nCode, aBytes));
}

// The number of the hexadecimal digits at `nBegin`; they are up to four.
std::uint32_t HexCode(std::string_view strText, std::size_t nBegin, std::size_t* pnDigits) {
  std::uint32_t nCode = 0;
  std::size_t n = nBegin;
  for (; n < std::min(nBegin + kHexDigits, strText.size()) && JSON::HexValue(strText[n]) >= 0;
       ++n) {
    nCode = nCode * 16 + static_cast<std::uint32_t>(JSON::HexValue(strText[n]));
  }
  *pnDigits = n - nBegin;
  return nCode;
}

struct Escape {
  static constexpr std::uint32_t kNothing = 0xFFFFFFFF;

  std::size_t nBytes;   // of the escape
  std::uint32_t nCode;  // the character that it stands for
  bool bStrict;         // it is one of strict JSON
};

// The escape that `strRest` begins with; a pair of surrogates is one. In front of a letter that
// means nothing a backslash is nothing, too.
Escape EscapeAt(std::string_view strRest) {
  constexpr std::string_view kLetters = "\"\\/bfnrt";
  constexpr std::string_view kBytes = "\"\\/\b\f\n\r\t";
  constexpr std::size_t kLength = 2 + kHexDigits;
  if (strRest.substr(1, 1) != "u") {
    const std::size_t n = strRest.size() > 1 ? kLetters.find(strRest[1]) : std::string_view::npos;
    if (n == std::string_view::npos) return {1, Escape::kNothing, false};
    return {2, static_cast<unsigned char>(kBytes[n]), true};
  }
  std::size_t nDigits = 0;
  const std::uint32_t nCode = HexCode(strRest, 2, &nDigits);
  if (IsHighSurrogate(nCode) && strRest.substr(kLength, 2) == "\\u") {
    const std::uint32_t nOther = HexCode(strRest, kLength + 2, &nDigits);
    if (IsSurrogate(nOther) && !IsHighSurrogate(nOther)) {
      return {2 * kLength, 0x10000 + ((nCode - 0xD800) << 10) + (nOther - 0xDC00), true};
    }
    nDigits = kHexDigits;
  }
  return {std::min(kLength, strRest.size()), nCode, nDigits == kHexDigits};
}

}  // namespace

bool AppendUnescaped(std::string_view strContent, std::string& strText, bool bPairsOnly) {
  bool bWhole = true;
  while (true) {
    const std::size_t nPlain = std::min(strContent.find('\\'), strContent.size());
    strText += strContent.substr(0, nPlain);
    strContent.remove_prefix(nPlain);
    if (strContent.empty()) return bWhole;
    const Escape escape = EscapeAt(strContent);
    const bool bHalf = IsSurrogate(escape.nCode);
    if (bPairsOnly && escape.nCode < 0x10000) {
      strText += strContent.substr(0, escape.nBytes);
    } else if (escape.nCode != Escape::kNothing) {
      AppendUtf8(bHalf ? kReplacement : escape.nCode, strText);
      bWhole = bWhole && !bHalf;
    }
    strContent.remove_prefix(escape.nBytes);
  }
}

bool IsStrictContent(std::string_view strContent, bool bSurrogates) {
  for (std::size_t i = 0; i < strContent.size();) {
    if (static_cast<unsigned char>(strContent[i]) < ' ') return false;
    if (strContent[i] != '\\') {
      ++i;
      continue;
    }
    const Escape escape = EscapeAt(strContent.substr(i));
    const bool bSurrogate = IsSurrogate(escape.nCode) || escape.nCode >= 0x10000;
    if (!escape.bStrict || (bSurrogate && !bSurrogates)) return false;
    i += escape.nBytes;
  }
  return true;
}

// ---- UTF-8 --------------------------------------------------------------------------------------

namespace {

// Bytes of the character that `strText` begins with; 0 when it is none. The process has the
// character set UTF-8.
std::size_t CharacterLength(std::string_view strText) {
  std::mbstate_t state{};
  const std::size_t nLength = std::mbrlen(strText.data(), strText.size(), &state);
  // 0 is a NUL; above the text's length come the two codes for broken and cut-off sequences.
  return nLength == 0 ? 1 : nLength <= strText.size() ? nLength : 0;
}

// How many bytes of ASCII `strText` begins with, eight at a time.
std::size_t AsciiLength(std::string_view strText) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080;
  std::size_t n = 0;
  for (; n + sizeof kHighBits <= strText.size(); n += sizeof kHighBits) {
    if ((JSON::ReadWord<std::uint64_t>(strText.data() + n) & kHighBits) != 0) return n;
  }
  return n;
}

// How many bytes of UTF-8 `strText` begins with.
std::size_t ValidLength(std::string_view strText) {
  std::size_t n = AsciiLength(strText);
  while (n < strText.size()) {
    const std::size_t nLength = CharacterLength(strText.substr(n));
    if (nLength == 0) break;
    n += nLength;
  }
  return n;
}

}  // namespace

bool IsUtf8(std::string_view strText) { return ValidLength(strText) == strText.size(); }

std::string RepairedUtf8(std::string_view strText) {
  std::string strResult;
  while (true) {
    const std::size_t nValid = ValidLength(strText);
    strResult += strText.substr(0, nValid);
    if (nValid == strText.size()) return strResult;
    AppendUtf8(kReplacement, strResult);
    strText.remove_prefix(nValid + 1);
  }
}

std::string_view ShownText(const Cell& cell, std::string& strBuffer, bool* pbWhole) {
  if (!cell.bEscaped) return cell.strText;
  strBuffer.clear();
  const bool bWhole = AppendUnescaped(cell.strText, strBuffer);
  if (pbWhole) *pbWhole = bWhole;
  return strBuffer;
}

}  // namespace qxrs

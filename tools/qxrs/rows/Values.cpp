// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Numbers, escapes, UTF-8.

#include "tools/qxrs/rows/Values.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <cwchar>

#include "text/Bytes.h"
#include "text/Scan.h"

namespace qxrs {

// ---- Numbers ------------------------------------------------------------------------------------

namespace {

const char* SkipDigits(const char* p, const char* pEnd) {
  while (p != pEnd && JSON::IsDigit(*p)) {
    ++p;
  }
  return p;
}

// Behind the fraction and the exponent of a number, or null when one of them is malformed.
const char* SkipRealPart(const char* p, const char* pEnd) {
  if (p != pEnd && *p == '.') {
    const char* const pDigits = p + 1;
    p = SkipDigits(pDigits, pEnd);
    if (p == pDigits) return nullptr;
  }
  if (p != pEnd && (*p == 'e' || *p == 'E')) {
    ++p;
    p += p != pEnd && (*p == '+' || *p == '-') ? 1 : 0;
    const char* const pDigits = p;
    p = SkipDigits(pDigits, pEnd);
    if (p == pDigits) return nullptr;
  }
  return p;
}

}  // namespace

Kind NumberKind(std::string_view strText) {
  const char* p = strText.data();
  const char* const pEnd = p + strText.size();
  const bool bNegative = p != pEnd && *p == '-';
  p += bNegative ? 1 : 0;
  const char* const pDigits = p;
  p = SkipDigits(p, pEnd);
  if (p == pDigits || (*pDigits == '0' && p - pDigits > 1)) return Kind::Text;
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
  constexpr std::size_t kSafeDigits = 15;
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
  if (strText.size() <= kSafeDigits) return true;
  const std::string strDigits = Digits(strText);
  return strDigits.size() <= kSafeDigits || strDigits == Digits(RealText(fValue));
}

// ---- Escapes ------------------------------------------------------------------------------------

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;
constexpr std::size_t kHexDigits = 4;  // of an escape \uXXXX

bool IsSurrogate(std::uint32_t nCode) { return nCode >= 0xD800 && nCode < 0xE000; }
bool IsHighSurrogate(std::uint32_t nCode) { return nCode >= 0xD800 && nCode < 0xDC00; }

void AppendUtf8(std::uint32_t nCode, std::string& strText) {
  char aBytes[MB_LEN_MAX];
  std::mbstate_t state{};
  strText.append(aBytes, std::wcrtomb(aBytes, static_cast<wchar_t>(nCode), &state));
}

// The number of the hexadecimal digits that `strText` begins with; they are up to four.
std::uint32_t HexCode(std::string_view strText, std::size_t* pnDigits) {
  std::uint32_t nCode = 0;
  std::size_t n = 0;
  for (; n < std::min(kHexDigits, strText.size()) && JSON::HexValue(strText[n]) >= 0; ++n) {
    nCode = nCode * 16 + static_cast<std::uint32_t>(JSON::HexValue(strText[n]));
  }
  *pnDigits = n;
  return nCode;
}

// Takes an escape \uXXXX, behind its u, off the front; when it is the first half of a pair, the
// other one, too.
std::uint32_t TakeCode(std::string_view& strRest) {
  std::size_t nDigits = 0;
  const std::uint32_t nCode = HexCode(strRest, &nDigits);
  strRest.remove_prefix(std::min(kHexDigits, strRest.size()));
  if (!IsHighSurrogate(nCode) || strRest.substr(0, 2) != "\\u") return nCode;
  const std::uint32_t nOther = HexCode(strRest.substr(2), &nDigits);
  if (!IsSurrogate(nOther) || IsHighSurrogate(nOther)) return nCode;
  strRest.remove_prefix(2 + kHexDigits);
  return 0x10000 + ((nCode - 0xD800) << 10) + (nOther - 0xDC00);
}

// What a letter behind a backslash stands for.
char Unescaped(char c) {
  constexpr std::string_view kLetters = "bfnrt";
  constexpr std::string_view kBytes = "\b\f\n\r\t";
  const std::size_t n = kLetters.find(c);
  return n == std::string_view::npos ? c : kBytes[n];
}

}  // namespace

bool AppendUnescaped(std::string_view strContent, std::string& strText) {
  bool bWhole = true;
  while (true) {
    const std::size_t nPlain = std::min(strContent.find('\\'), strContent.size());
    strText += strContent.substr(0, nPlain);
    strContent.remove_prefix(nPlain);
    if (strContent.size() < 2) return bWhole;
    const char c = strContent[1];
    strContent.remove_prefix(2);
    if (c != 'u') {
      strText += Unescaped(c);
      continue;
    }
    const std::uint32_t nCode = TakeCode(strContent);
    bWhole = bWhole && !IsSurrogate(nCode);
    AppendUtf8(IsSurrogate(nCode) ? kReplacement : nCode, strText);
  }
}

std::string PairsAsUtf8(std::string_view strContent) {
  std::string strResult;
  while (!strContent.empty()) {
    const std::string_view strBefore = strContent;
    const bool bEscape = strContent.front() == '\\' && strContent.size() > 1;
    strContent.remove_prefix(bEscape ? 2 : 1);
    const std::uint32_t nCode = bEscape && strBefore[1] == 'u' ? TakeCode(strContent) : 0;
    if (nCode >= 0x10000) {
      AppendUtf8(nCode, strResult);
    } else {
      strResult += strBefore.substr(0, strBefore.size() - strContent.size());
    }
  }
  return strResult;
}

bool IsStrictContent(std::string_view strContent, bool bSurrogates) {
  for (std::size_t i = 0; i < strContent.size(); ++i) {
    if (static_cast<unsigned char>(strContent[i]) < ' ') return false;
    if (strContent[i] != '\\') continue;
    ++i;
    if (i == strContent.size() || !std::strchr("\"\\/bfnrtu", strContent[i])) return false;
    std::size_t nDigits = kHexDigits;
    if (strContent[i] == 'u' &&
        (IsSurrogate(HexCode(strContent.substr(i + 1), &nDigits)) && !bSurrogates)) {
      return false;
    }
    if (nDigits != kHexDigits) return false;
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

}  // namespace

bool IsUtf8(std::string_view strText) {
  for (std::size_t n = AsciiLength(strText); n < strText.size();) {
    const std::size_t nLength = CharacterLength(strText.substr(n));
    if (nLength == 0) return false;
    n += nLength;
  }
  return true;
}

std::string RepairedUtf8(std::string_view strText) {
  std::string strResult;
  while (!strText.empty()) {
    const std::size_t nLength = CharacterLength(strText);
    if (nLength == 0) {
      AppendUtf8(kReplacement, strResult);
    } else {
      strResult += strText.substr(0, nLength);
    }
    strText.remove_prefix(std::max<std::size_t>(nLength, 1));
  }
  return strResult;
}

std::string_view ShownText(const Cell& cell, std::string& strBuffer, bool* pbWhole) {
  if (!cell.bEscaped) return cell.strText;
  strBuffer.clear();
  const bool bWhole = AppendUnescaped(cell.strText, strBuffer);
  if (pbWhole) *pbWhole = bWhole;
  return strBuffer;
}

}  // namespace qxrs

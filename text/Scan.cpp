// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Escapes inside JSON strings.

#include "text/Scan.h"

#include <cstdint>
#include <cstdlib>

#include "text/Utf8.h"

namespace JSON {
namespace {

constexpr int kHexDigits = 4;  // behind "\u"
constexpr int kLongestEscape = 2 + kHexDigits;

// The four bytes behind "\u" count as strtoul reads them in base 16, also when they are no
// hexadecimal digits: it skips white space and takes a sign and "0x". Of a negative number, the
// lower 16 bits count.
std::uint32_t CodePoint(const char* p) {
  const int nHigh = (HexValue(p[0]) * 16) | HexValue(p[1]);
  const int nLow = (HexValue(p[2]) * 16) | HexValue(p[3]);
  if (nHigh >= 0 && nLow >= 0 && HexValue(p[0]) >= 0 && HexValue(p[2]) >= 0) {
    return static_cast<std::uint32_t>(nHigh << 8 | nLow);
  }
  const char szDigits[kHexDigits + 1] = {p[0], p[1], p[2], p[3], '\0'};
  return static_cast<std::uint16_t>(std::strtoul(szDigits, nullptr, 16));
}

char SimpleEscape(char c) {
  switch (c) {
    case 'b':
      return '\b';
    case 'f':
      return '\f';
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    default:
      return c;
  }
}

}  // namespace

const char* Unescape(const char* p, const char* pEnd, char*& pWrite) {
  for (;;) {
    // A backslash is at p.
    if (pEnd - p < 2) return nullptr;
    if (p[1] != 'u') {
      *pWrite++ = SimpleEscape(p[1]);
      p += 2;
    } else {
      if (pEnd - p < kLongestEscape) return nullptr;
      pWrite = WriteUtf8(CodePoint(p + 2), pWrite);  // up to three bytes for the six
      p += kLongestEscape;
    }
    const char* const pRun = p;
    p = FindQuoteOrBackslash(p, pEnd);
    const std::size_t nRun = static_cast<std::size_t>(p - pRun);
    std::memmove(pWrite, pRun, nRun);
    pWrite += nRun;
    if (p == pEnd) return nullptr;
    if (*p == '"') return p;
  }
}

const char* FindStringEnd(const char* p, const char* pEnd) {
  for (;;) {
    p = FindQuoteOrBackslash(p, pEnd);
    if (p == pEnd) return nullptr;
    if (*p == '"') return p;
    const std::ptrdiff_t nEscape = pEnd - p >= 2 && p[1] == 'u' ? kLongestEscape : 2;
    if (pEnd - p < nEscape) return nullptr;
    p += nEscape;
  }
}

}  // namespace JSON

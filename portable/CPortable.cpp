// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The default portability layer: strict UTF-8.
//
// Both functions are weak, and nothing else lives in this file. So a program that defines them
// itself links with the static library without a clash, whether or not this object is taken from
// the archive; and in the shared library, which calls them through the dynamic symbol table, the
// program's definitions come first.

#include "portable/CPortable.h"

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "text/Utf8.h"

static_assert(sizeof(wchar_t) == 4, "a wide character holds a whole code point");

namespace {

constexpr std::uint32_t kLastCodePoint = 0x10FFFF;
constexpr std::uint32_t kFirstSurrogate = 0xD800;
constexpr std::uint32_t kLastSurrogate = 0xDFFF;

// A negative character becomes a code above the last code point.
std::uint32_t CodeOf(wchar_t c) { return static_cast<std::uint32_t>(c); }

bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

bool IsScalarValue(std::uint32_t nCode) {
  return nCode <= kLastCodePoint && (nCode < kFirstSurrogate || nCode > kLastSurrogate);
}

// Bytes of the sequence that `nLead` begins; 0 when none begins with it.
std::size_t SequenceLength(std::uint32_t nLead) {
  if (nLead < 0x80) return 1;
  if (nLead < 0xC0) return 0;
  if (nLead < 0xE0) return 2;
  if (nLead < 0xF0) return 3;
  return nLead < 0xF8 ? 4 : 0;
}

// Reads one code point and gives the address behind it, or null when there is no well-formed
// sequence between `p` and `pEnd`. REQUIRES: p < pEnd.
const char* DecodeOne(const char* p, const char* pEnd, std::uint32_t& nCode) {
  assert(p < pEnd);
  nCode = static_cast<unsigned char>(*p);
  const std::size_t nBytes = SequenceLength(nCode);
  if (nBytes == 1) return p + 1;
  if (nBytes == 0 || static_cast<std::size_t>(pEnd - p) < nBytes) return nullptr;
  nCode &= 0x7FU >> nBytes;  // the lead byte holds nBytes ones, a zero and the uppermost bits
  for (std::size_t i = 1; i < nBytes; ++i) {
    if (!IsContinuation(p[i])) return nullptr;
    nCode = nCode << 6 | (static_cast<unsigned char>(p[i]) & 0x3FU);
  }
  return JSON::Utf8Length(nCode) == nBytes && IsScalarValue(nCode) ? p + nBytes : nullptr;
}

}  // namespace

[[gnu::weak]] wchar_t* CPortable::mbstowcs(char const* text, unsigned int length) {
  // Every character of a well-formed text has one byte that is no continuation, and decoding writes
  // at most one character for each such byte before it finds a fault.
  std::size_t nCharacters = 0;
  for (std::size_t i = 0; i < length; ++i) {
    nCharacters += IsContinuation(text[i]) ? 0 : 1;
  }
  auto wide = std::make_unique<wchar_t[]>(nCharacters + 1);

  wchar_t* pWide = wide.get();
  const char* const pEnd = text + length;
  for (const char* p = text; p < pEnd; ++pWide) {
    std::uint32_t nCode = 0;
    p = DecodeOne(p, pEnd, nCode);
    if (p == nullptr) return nullptr;
    *pWide = static_cast<wchar_t>(nCode);
  }
  *pWide = L'\0';
  return wide.release();
}

[[gnu::weak]] char* CPortable::wcstombs(wchar_t const* text, unsigned int length) {
  std::size_t nBytes = 0;
  for (std::size_t i = 0; i < length; ++i) {
    const std::uint32_t nCode = CodeOf(text[i]);
    if (!IsScalarValue(nCode)) return nullptr;
    nBytes += JSON::Utf8Length(nCode);
  }
  auto bytes = std::make_unique<char[]>(nBytes + 1);

  char* p = bytes.get();
  for (std::size_t i = 0; i < length; ++i) {
    p = JSON::WriteUtf8(CodeOf(text[i]), p);
  }
  *p = '\0';
  return bytes.release();
}

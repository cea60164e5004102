// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Finding the end of things in JSON text: white space, string contents, number tokens; and the
// rewriting of escapes. Each function takes the position to read and the end of the text and never
// reads at or beyond that end; where 16 bytes are left it looks at 16 at a time.
//
// The templates serve text that is rewritten in place (Char is char) and text that is only read
// (const char).

#ifndef QXRECORDSET_TEXT_SCAN_H
#define QXRECORDSET_TEXT_SCAN_H

#include <cassert>
#include <cstddef>
#include <cstdint>

#include "text/Block.h"
#include "text/Bytes.h"
#include "text/ShortBytes.h"

namespace JSON {

// The first byte at or behind p that `find` marks in a block; null, and p moved on, when none is
// found before less than a block is left.
template <typename Char, typename Find>
inline Char* FindInWholeBlocks(Char*& p, Char* pEnd, Find find) {
  for (; pEnd - p >= Block16::kBytes; p += Block16::kBytes) {
    const std::uint32_t found = find(Block16::Load(p));
    if (found != 0) return p + LowestBit(found);
  }
  return nullptr;
}

// The same where less than a block is left; or the end.
template <typename Char, typename Find>
[[gnu::noinline]] Char* FindInRest(Char* p, Char* pEnd, Find find) {
  const auto nRest = static_cast<std::size_t>(pEnd - p);
  const std::uint32_t found = find(Block16::LoadFirst(p, nRest)) & ((1u << nRest) - 1);
  return found != 0 ? p + LowestBit(found) : pEnd;
}

// The first byte at or behind p that `find` marks in a block, or the end.
template <typename Char, typename Find>
inline Char* FindInBlocks(Char* p, Char* pEnd, Find find) {
  Char* const pFound = FindInWholeBlocks(p, pEnd, find);
  return pFound != nullptr ? pFound : FindInRest(p, pEnd, find);
}

// The first byte at or behind p that is no white space, or the end. Most runs of white space
// are a line break and many blanks, or tabs, so blocks of them are skipped.
template <typename Char>
[[gnu::noinline]] Char* SkipTabs(Char* p, Char* pEnd) {
  return FindInBlocks(p, pEnd, [](Block16 block) { return ~block.Equals('\t') & 0xFFFFu; });
}
template <typename Char>
Char* SkipSpaceRun(Char* p, Char* pEnd) {
  while (pEnd - p >= Block16::kBytes) {
    const std::uint32_t other = ~Block16::Load(p).Equals(' ') & 0xFFFFu;
    if (other == 0) {
      p += Block16::kBytes;
      continue;
    }
    p += LowestBit(other);
    if (!IsSpace(*p)) return p;
    p = *p == '\t' ? SkipTabs(p, pEnd) : p + 1;
  }
  while (p != pEnd && IsSpace(*p)) {
    ++p;
  }
  return p;
}

// The first '"' or '\' at or behind p, or the end.
template <typename Char>
inline Char* FindQuoteOrBackslash(Char* p, Char* pEnd) {
  return FindInBlocks(p, pEnd, [](Block16 block) { return block.QuoteOrBackslash(); });
}

// The first '"', '\\' or NUL at or behind p, or the end.
inline const char* FindTextStop(const char* p, const char* pEnd) {
  return FindInBlocks(p, pEnd, [](Block16 block) { return block.QuoteBackslashOrNul(); });
}

constexpr int kLongestLiteral = 5;

// Bytes of the literal at p, "true", "false" or "null"; 0 when there is none. REQUIRES: as many
// bytes as the longest has at p.
inline unsigned LiteralLength(const char* p) {
  const auto nWord = ReadWord<std::uint32_t>(p);
  if (nWord == ReadWord<std::uint32_t>("null") || nWord == ReadWord<std::uint32_t>("true")) {
    return 4;
  }
  return nWord == ReadWord<std::uint32_t>("fals") && p[4] == 'e' ? 5 : 0;
}

// ScanNumber() near the end of the text.
template <typename Char>
[[gnu::noinline]] Char* ScanLastNumber(Char* p, Char* pEnd, bool& bReal) {
  for (; p < pEnd - 1 && IsRealByte(*p); ++p) {
    bReal = bReal || kNumberBytes[*p] == NumberByte::kReal;
  }
  return p < pEnd ? p : pEnd - 1;
}

// The end of the number token at p: the first byte outside "+-0123456789.eE". The last byte of the
// text is never part of a token. `bReal` tells whether one of ".eE" was passed. Digits come in runs
// with few marks between them, so it is the runs that are skipped. REQUIRES: a digit or a sign at
// p.
template <typename Char>
QXRECORDSET_HOT Char* ScanNumber(Char* p, Char* pEnd, bool& bReal) {
  assert(IsRealByte(*p));
  bool bSeen = false;
  ++p;
  while (pEnd - p > Block16::kBytes) {
    for (std::uint32_t other = Block16::Load(p).NonDigits(); other != 0; other &= other - 1) {
      Char* const pOther = p + LowestBit(other);
      const NumberByte kind = kNumberBytes[*pOther];
      if (kind == NumberByte::kNone) {
        bReal = bSeen;
        return pOther;
      }
      bSeen |= kind == NumberByte::kReal;
    }
    p += Block16::kBytes;
  }
  bReal = bSeen;
  return ScanLastNumber(p, pEnd, bReal);
}

// Reads string content from p, where a '\' is, to the closing quote, and writes the
// unescaped bytes to pWrite, which lies in the same text at or before p, or in other memory with as
// much room as is left of the content. Moves pWrite behind what was written and returns the closing
// quote, or null when the text ends first. Nothing beyond the written bytes is touched, so text
// that is rewritten in place keeps its unread bytes in any case.
const char* Unescape(const char* p, const char* pEnd, char*& pWrite);

// The closing quote of the string content that begins at p, or null when the text ends first.
const char* FindStringEnd(const char* p, const char* pEnd);

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_SCAN_H

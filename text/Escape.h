// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The one string escaping of the library, as the writer and the tree serializer use it. Most text
// needs no escape: it is checked in blocks while it is copied, and escaped from its beginning when
// a byte is found that a JSON string cannot hold.

#ifndef QXRECORDSET_TEXT_ESCAPE_H
#define QXRECORDSET_TEXT_ESCAPE_H

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "text/Block.h"
#include "text/Bytes.h"

namespace JSON {

// What follows the backslash, by byte: 0 for a byte that stands for itself, 'u' for one that is
// written as \u00XX. NUL counts as such a byte, so that a search stops there.
constexpr std::array<char, 256> MakeEscapeTable() {
  std::array<char, 256> table{};
  for (std::size_t c = 0; c < 0x20; ++c) {
    table[c] = 'u';
  }
  table['"'] = '"';
  table['\\'] = '\\';
  table['\b'] = 'b';
  table['\t'] = 't';
  table['\n'] = 'n';
  table['\f'] = 'f';
  table['\r'] = 'r';
  return table;
}
inline constexpr std::array<char, 256> kEscape = MakeEscapeTable();

inline char EscapeOf(char c) { return kEscape[static_cast<unsigned char>(c)]; }

// Whether `text` can stand in a JSON string as it is. With bCopy it is also copied to `out`, if
// it can or not. Reads and writes nothing but these bytes: where the length is no multiple of
// a step, the last step overlaps the one before.
template <bool bCopy>
QXRECORDSET_HOT bool ScanPlain(std::string_view text, [[maybe_unused]] char* out) {
  constexpr std::size_t kBlock = Block16::kBytes;
  const char* const p = text.data();
  const std::size_t nLength = text.size();
  if (nLength >= kBlock) {
    const std::size_t nLast = nLength - kBlock;
    for (std::size_t nAt = 0; nAt < nLast; nAt += kBlock) {
      const Block16 block = Block16::Load(p + nAt);
      if constexpr (bCopy) block.Store(out + nAt);
      if (block.NeedsEscape() != 0) return false;
    }
    const Block16 block = Block16::Load(p + nLast);
    if constexpr (bCopy) block.Store(out + nLast);
    return block.NeedsEscape() == 0;
  }
  if (nLength >= kBlock / 2) {
    const std::size_t nLast = nLength - kBlock / 2;
    const Block16 block = Block16::LoadHalves(p, p + nLast);
    if constexpr (bCopy) block.StoreHalves(out, out + nLast);
    return block.NeedsEscape() == 0;
  }
  if (nLength >= kBlock / 4) {
    const std::size_t nLast = nLength - kBlock / 4;
    const Block16 block = Block16::LoadQuarters(p, p + nLast);
    if constexpr (bCopy) block.StoreQuarters(out, out + nLast);
    return block.NeedsEscape() == 0;
  }
  if (nLength == 0) return true;
  const char first = p[0], middle = p[nLength / 2], last = p[nLength - 1];
  if constexpr (bCopy) {
    out[0] = first;
    out[nLength / 2] = middle;
    out[nLength - 1] = last;
  }
  return (EscapeOf(first) | EscapeOf(middle) | EscapeOf(last)) == 0;
}

inline bool IsPlain(std::string_view text) { return ScanPlain<false>(text, nullptr); }
QXRECORDSET_HOT bool CopyPlain(std::string_view text, char* out) {
  return ScanPlain<true>(text, out);
}

// Room that EscapeBytes needs for `length` bytes: each may become \u00XX, and the last block stored
// may reach beyond the text.
constexpr std::size_t EscapedRoom(std::size_t length) { return 6 * length + Block16::kBytes; }

// Writes `text` with escapes to `out` and returns the end of what was written. REQUIRES: no NUL in
// the text, and EscapedRoom(text.size()) bytes at `out`.
char* EscapeBytes(std::string_view text, char* out);

// Like EscapeString, but for a text of known length: up to its end or its first NUL.
void AppendEscaped(std::string& output, std::string_view text);

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_ESCAPE_H

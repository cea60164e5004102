// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Escaping of string contents, for text that has bytes to escape.

#include "text/Escape.h"

#include <cassert>
#include <cstdint>

#include "text/TextRoom.h"

namespace JSON {
namespace {

// Text is escaped in pieces of this many bytes, so that the room for the worst case stays small
// enough for the stack.
constexpr std::size_t kPieceBytes = 64;

// Writes two or six bytes. REQUIRES: `c` has an escape.
char* WriteEscape(char c, char* out) {
  static constexpr char kHexDigits[] = "0123456789abcdef";
  const char escape = EscapeOf(c);
  assert(escape != 0);
  *out++ = '\\';
  *out++ = escape;
  if (escape != 'u') return out;
  const auto value = static_cast<unsigned char>(c);
  *out++ = '0';
  *out++ = '0';
  *out++ = kHexDigits[value >> 4];
  *out++ = kHexDigits[value & 0x0F];
  return out;
}

}  // namespace

// A byte read becomes six bytes at most, so a block may always be stored: EscapedRoom() is as many
// and a block.
char* EscapeBytes(std::string_view text, char* out) {
  assert(text.find('\0') == std::string_view::npos);
  const char* p = text.data();
  const char* const end = p + text.size();
  while (end - p >= Block16::kBytes) {
    const Block16 block = Block16::Load(p);
    block.Store(out);
    const std::uint32_t mask = block.NeedsEscape();
    const unsigned nPlain = mask == 0 ? Block16::kBytes : LowestBit(mask);
    p += nPlain;
    out += nPlain;
    if (mask != 0) out = WriteEscape(*p++, out);
  }
  for (; p != end; ++p) {
    if (EscapeOf(*p) == 0) {
      *out++ = *p;
    } else {
      out = WriteEscape(*p, out);
    }
  }
  return out;
}

void AppendEscaped(std::string& output, std::string_view text) {
  if (IsPlain(text)) {
    MakeCapacity(output, output.size(), text.size());
    output.append(text);
    return;
  }
  text = UpToNul(text);
  char piece[EscapedRoom(kPieceBytes)];
  while (!text.empty()) {
    const std::string_view source = text.substr(0, kPieceBytes);
    const auto nEscaped = static_cast<std::size_t>(EscapeBytes(source, piece) - piece);
    MakeCapacity(output, output.size(), nEscaped);
    output.append(piece, nEscaped);
    text.remove_prefix(source.size());
  }
}

}  // namespace JSON

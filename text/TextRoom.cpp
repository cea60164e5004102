// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Room behind a growing text: how much is made at a time.

#include "text/TextRoom.h"

#include <algorithm>
#include <new>

#include "memory/HugePages.h"
#include "memory/Spare.h"
#include "text/Escape.h"

namespace JSON {
namespace {

// Room is made in steps of this many bytes as long as the string's capacity lasts. The string fills
// new room with zeros; in steps this small they are still in the nearest cache when the text
// overwrites them.
constexpr std::size_t kRoomStep = 4096;

// Capacity is quadrupled up to this size in bytes and doubled beyond. Memory that is not yet
// written to costs next to nothing, copying the text and touching new pages for it costs more than
// writing it; but a large text must not use up an address space of 32 bits.
constexpr std::size_t kLargeText = std::size_t{16} << 20;

// A text is escaped in pieces of this many bytes, so that room for the worst case is made for a
// piece at a time.
constexpr std::size_t kEscapePiece = 256;

}  // namespace

// The new capacity is that of a new string: one that has a text asks for twice as much at least.
void MakeCapacity(std::string& buffer, std::size_t nText, std::size_t nBytes) {
  const std::size_t nMost = buffer.max_size();
  if (nBytes > nMost - nText) throw std::bad_alloc();
  const std::size_t nNeeded = nText + nBytes;
  const std::size_t nCapacity = buffer.capacity();
  if (nNeeded <= nCapacity) return;
  const std::size_t nGrown = std::min(nCapacity * (nCapacity < kLargeText ? 4 : 2), nMost);
  memory::WithSpare(nNeeded, std::max(nGrown, nNeeded) - nNeeded, [&](std::size_t nRoom) {
    std::string grown;
    grown.reserve(nRoom);
    memory::PreferHugePages(grown);
    grown.assign(buffer, 0, nText);
    buffer.swap(grown);
  });
}

void MakeRoom(std::string& buffer, std::size_t nText, std::size_t nBytes) {
  MakeCapacity(buffer, nText, nBytes);
  const std::size_t nNeeded = nText + nBytes;
  buffer.resize(std::max(nNeeded, std::min(buffer.capacity(), nNeeded + kRoomStep)));
}

std::size_t WriteEscaped(std::string& buffer, std::size_t nAt, std::string_view text,
                         std::size_t nSpare) {
  text = UpToNul(text);
  do {
    const std::string_view piece = text.substr(0, kEscapePiece);
    const std::size_t nNeeded = EscapedRoom(piece.size()) + nSpare;
    if (buffer.size() - nAt < nNeeded) MakeRoom(buffer, nAt, nNeeded);
    char* const pEnd = EscapeBytes(piece, buffer.data() + nAt);
    nAt = static_cast<std::size_t>(pEnd - buffer.data());
    text.remove_prefix(piece.size());
  } while (!text.empty());
  return nAt;
}

}  // namespace JSON

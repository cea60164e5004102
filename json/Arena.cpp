// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The pool's first block, which holds the pool itself.

#include "json/Arena.h"

#include <algorithm>
#include <new>

#include "memory/KeptBlocks.h"

namespace JSON {

using memory::BumpBlocks;
using memory::KeptBlocks;

// What follows this object, up to the slack, is the blocks' own piece.
Arena::Arena(std::size_t nBytes) noexcept
    : blocks_(reinterpret_cast<char*>(this + 1), nBytes - sizeof(Arena) - BumpBlocks::kSlack),
      nBytes_(nBytes) {}

Arena* Arena::Create(std::size_t nExpected) {
  const std::size_t nBytes = KeptBlocks::SizeWithin(
      std::clamp(RoundUp(nExpected), BumpBlocks::kSmallestBlock, BumpBlocks::kLargestBlock));
  return new (KeptBlocks::Take(nBytes)) Arena(nBytes);
}

void Arena::Destroy(Arena* pArena) noexcept {
  const std::size_t nBytes = pArena->nBytes_;
  pArena->~Arena();
  KeptBlocks::Give(pArena, nBytes);
}

}  // namespace JSON

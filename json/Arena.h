// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The memory pool of one message. Containers, their elements and their names are taken from it by
// moving a pointer, and all of them are released at once: a parse costs a handful of allocations
// whatever the document holds. Nothing in the pool is destroyed one by one; what its tree owns
// outside of the pool is released before (json/TreeRelease.h).
//
// Blocks are kept when the pool is rewound, so a message that parses again and again stops
// allocating altogether. What is kept is bounded:
//   1. Rewind() keeps the blocks that the last content used and releases all others.
//   2. A new block is allocated only when no kept block is large enough for the request, and then
//      the kept ones that are not in use are released first.
//   3. A block is larger than the request only up to half of all blocks in use, up to a fixed size,
//      or up to the next standard size of memory/KeptBlocks.h.
// The rest of a block that is left for the next one is smaller than the request that did not fit.
// So the pool holds at most four times what was taken since Rewind() and four times what was taken
// before it, plus the first block.

#ifndef QXRECORDSET_JSON_ARENA_H
#define QXRECORDSET_JSON_ARENA_H

#include <cstddef>
#include <cstdint>

#include "memory/Poison.h"

namespace JSON {

class alignas(8) Arena {
 public:
  // Everything taken from the pool is aligned for pointers and 64-bit numbers.
  static constexpr std::size_t kAlignment = 8;

  // A pool whose first block suits a tree of about `nExpected` bytes. The pool itself lies at the
  // start of that block: a small document costs one allocation.
  static Arena* Create(std::size_t nExpected);
  static void Destroy(Arena* pArena) noexcept;

  // `nBytes` of memory that stays in place until Rewind() or Destroy(). The first kSmallestBlock /
  // 2 bytes behind a Rewind() lie at the same address each time.
  void* Allocate(std::size_t nBytes) {
    nBytes = RoundUp(nBytes);
    if (nBytes > static_cast<std::size_t>(pLimit_ - pNext_)) {
      return AllocateElsewhere(nBytes);
    }
    char* const p = pNext_;
    pNext_ += nBytes;  // up to pLimit_ at most
    memory::Unpoison(p, nBytes);
    return p;
  }

  // Makes what Allocate() gave last larger or smaller without moving it; false when it was not the
  // last, or when its block has no room.
  bool Resize(const void* p, std::size_t nOld, std::size_t nNew) {
    const char* const pEnd = static_cast<const char*>(p) + RoundUp(nOld);
    if (pEnd != pNext_ ||
        RoundUp(nNew) > static_cast<std::size_t>(pLimit_ - pEnd) + RoundUp(nOld)) {
      return false;
    }
    char* const pStart = pNext_ - RoundUp(nOld);
    pNext_ = pStart + RoundUp(nNew);  // from the item's start, up to pLimit_
    memory::Unpoison(pStart, RoundUp(nNew));
    if (nNew < nOld) memory::Poison(pNext_, RoundUp(nOld) - RoundUp(nNew));
    return true;
  }

  // Forgets everything that was taken.
  void Rewind() noexcept;

  // Whether nothing was taken since Create() or Rewind().
  bool IsRewound() const noexcept;

 private:
  struct alignas(8) Block {
    Block* pNext;
    std::size_t nBytes;  // this header included
  };

  Arena() = default;
  static std::size_t RoundUp(std::size_t n) { return (n + kAlignment - 1) & ~(kAlignment - 1); }
  void* AllocateElsewhere(std::size_t nBytes);
  Block* AddBlock(std::size_t nNeeded);
  std::size_t Footprint() const noexcept;
  char* FirstByte() const noexcept;
  void Enter(Block* pBlock, char* pNext) noexcept;
  void ReleaseUnused() noexcept;

  char* pNext_ = nullptr;   // next free byte of the current block
  char* pLimit_ = nullptr;  // its end
  Block* pFirst_ = nullptr;
  Block* pCurrent_ = nullptr;  // the blocks up to it are in use, those behind it are kept
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_ARENA_H

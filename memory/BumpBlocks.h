// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Memory that is handed out by moving a pointer and released all at once: what holds the trees of
// documents, and the cells and texts of tables. Pieces never move, have no header and no alignment
// gaps, so a piece costs exactly its size; a million cells cost a few dozen allocations.
//
// The piece handed out last may be made longer or shorter in place. Documents and tables are mostly
// filled from front to back, so the array or row that is being filled grows without being copied
// and gives back what it did not need.
//
//   own piece:      | piece | piece | ... free ... | slack |       held by the owner, may be absent
//   other blocks:   | Block | piece | piece | ... free ... | slack |
//
// Behind every block lie kSlack bytes that belong to no piece: a piece may be read, and the last
// one written, in steps of kSlack bytes without regard to its end. All other free memory is
// poisoned (memory/Poison.h).
//
// Blocks are kept when everything is taken back, so an owner that is filled again and again stops
// allocating altogether. What is kept is bounded:
//   1. Reset() keeps the blocks that were in use and releases all others.
//   2. A new block is allocated only when no kept block has room for the piece, and then the kept
//      ones are released first.
//   3. A block is larger than the piece it was allocated for only up to a sixth of all blocks in
//      use, up to a fixed size, or up to the next standard size of memory/KeptBlocks.h.
// The free rest of a block that is left for the next one is smaller than the piece that did not
// fit. So the blocks hold at most four times what was taken since Reset() and four times what was
// taken before it, plus the smallest block.

#ifndef QXRECORDSET_MEMORY_BUMPBLOCKS_H
#define QXRECORDSET_MEMORY_BUMPBLOCKS_H

#include <cassert>
#include <cstddef>

#include "memory/Poison.h"

namespace memory {

class BumpBlocks {
 public:
  static constexpr std::size_t kSlack = 16;

  // Blocks grow from the first to the second size; only what does not fit gets a larger one.
  static constexpr std::size_t kSmallestBlock = 1024;
  static constexpr std::size_t kLargestBlock = std::size_t{sizeof(void*) == 4 ? 256 : 1024} * 1024;

  // Pieces come from `pOwn`, nOwn bytes (and the slack) that the owner holds, before the first
  // block is allocated: a small owner needs none. `pOwn` must stay where it is.
  BumpBlocks(char* pOwn, std::size_t nOwn) noexcept;
  BumpBlocks(const BumpBlocks&) = delete;
  BumpBlocks& operator=(const BumpBlocks&) = delete;
  ~BumpBlocks();

  // A piece of `nSize` bytes, not initialised. Pieces are aligned for pointers and 64-bit numbers
  // as long as the own piece is, and the sizes of all pieces are multiples of 8.
  char* Allocate(std::size_t nSize) {
    if (nSize > Room()) return AllocateElsewhere(nSize);
    char* const p = pNext_;
    pNext_ += nSize;  // up to pLimit_ at most
    Unpoison(p, nSize + kSlack);
    return p;
  }

  // Bytes behind the last piece that are free.
  std::size_t Room() const { return static_cast<std::size_t>(pLimit_ - pNext_); }

  // Makes the piece that ends at `pEnd` longer by `nMore` bytes; false when it is not the last one
  // or the block has no room.
  bool ExtendLast(const char* pEnd, std::size_t nMore) {
    if (pEnd != pNext_ || nMore > Room()) return false;
    Unpoison(pNext_, nMore + kSlack);
    pNext_ += nMore;
    return true;
  }

  // Takes back the last `nLess` bytes of the piece that ends at `pEnd`; false, and nothing is taken
  // back, when it is not the last one. REQUIRES: the piece has that many bytes.
  bool ShrinkLast(const char* pEnd, std::size_t nLess) {
    if (pEnd != pNext_) return false;
    pNext_ -= nLess;
    Poison(pNext_ + kSlack, nLess);
    return true;
  }

  // Takes back everything. The next piece is the first one of the owner's memory again.
  void Reset() noexcept;

  // Whether nothing was taken since the last Reset(). REQUIRES: the owner holds a piece.
  bool IsReset() const noexcept {
    assert(pOwn_ != nullptr);
    return pNext_ == pOwn_;
  }

  // Bytes in all blocks in use, without the owner's.
  std::size_t Footprint() const { return nFootprint_; }

 private:
  struct Block {
    Block* pNext;
    std::size_t nSize;  // bytes, this header and the slack included
  };
  static_assert(sizeof(Block) % 8 == 0);

  // Bytes of a block beside its pieces.
  static constexpr std::size_t kOverhead = sizeof(Block) + kSlack;

  char* AllocateElsewhere(std::size_t nSize);
  Block* TakeKept(std::size_t nSize) noexcept;
  Block* NewBlock(std::size_t nSize);
  void Enter(char* pFirst, std::size_t nBytes) noexcept;
  static void Release(Block* pBlock) noexcept;

  char* pNext_;               // the free rest of the current block,
  char* pLimit_;              // and its end
  Block* pNewest_ = nullptr;  // the blocks in use, the newest first
  Block* pKept_ = nullptr;    // blocks that Reset() kept, the oldest first
  std::size_t nFootprint_ = 0;
  char* const pOwn_;
  const std::size_t nOwn_;
};

}  // namespace memory

#endif  // QXRECORDSET_MEMORY_BUMPBLOCKS_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Memory that is handed out by moving a pointer and released all at once: what holds the cells, and
// what holds their texts. Pieces never move, have no header and no alignment gaps, so a piece costs
// exactly its size; a million cells cost a few hundred allocations.
//
// The piece handed out last may be made longer or shorter in place. A table is mostly filled row by
// row, so the row that is being filled grows without being copied and gives back what it did not
// need.
//
// Behind every block lie kSlack bytes that belong to no piece: a piece may be read, and the last
// one written, in steps of kSlack bytes without regard to its end.

#ifndef QXRECORDSET_RECORDSET_BUMPBLOCKS_H
#define QXRECORDSET_RECORDSET_BUMPBLOCKS_H

#include <cstddef>

namespace recordset {

class BumpBlocks {
 public:
  static constexpr std::size_t kSlack = 16;

  // Pieces come from `pOwn`, nOwn bytes (and the slack) that the owner holds, before the first
  // block is allocated: a small table needs none. `pOwn` must stay where it is.
  BumpBlocks(char* pOwn, std::size_t nOwn) noexcept
      : pNext_(pOwn), pLimit_(pOwn + nOwn), pOwn_(pOwn), nOwn_(nOwn) {}
  BumpBlocks(const BumpBlocks&) = delete;
  BumpBlocks& operator=(const BumpBlocks&) = delete;
  ~BumpBlocks();

  // A piece of `nSize` bytes, not initialised. It lies right behind the piece before it, so it is
  // aligned as long as all sizes are multiples of the alignment wanted.
  char* Allocate(std::size_t nSize) {
    if (nSize > Room()) return AllocateElsewhere(nSize);
    char* const p = pNext_;
    pNext_ += nSize;  // up to pLimit_ at most
    return p;
  }

  // Bytes behind the last piece that are free.
  std::size_t Room() const { return static_cast<std::size_t>(pLimit_ - pNext_); }

  // Makes the piece that ends at `pEnd` longer by `nMore` bytes; false when it is not the last one
  // or the block has no room.
  bool ExtendLast(const char* pEnd, std::size_t nMore) {
    if (pEnd != pNext_ || nMore > Room()) return false;
    pNext_ += nMore;
    return true;
  }

  // Takes back the last `nLess` bytes of the piece that ends at `pEnd`; false, and nothing is taken
  // back, when it is not the last one. REQUIRES: the piece has that many bytes.
  bool ShrinkLast(const char* pEnd, std::size_t nLess) {
    if (pEnd != pNext_) return false;
    pNext_ -= nLess;
    return true;
  }

  // Takes back everything. The blocks that were in use are kept for the next pieces; those that
  // were kept the time before and were not needed are released.
  void Reset() noexcept;

  // How much is done of the work that pieces are taken for, in any unit. As long as it is
  // known, a new block becomes as large as the estimate of what will be needed.
  struct Progress {
    std::size_t nDone;
    std::size_t nAll;
  };
  void Follow(const Progress* pProgress) noexcept { pProgress_ = pProgress; }

  // Bytes in all blocks in use.
  std::size_t Footprint() const { return nFootprint_; }

 private:
  struct Block {
    Block* pOlder;
    std::size_t nSize;  // bytes, this header and the slack included
  };

  // Bytes of a block beside its pieces.
  static constexpr std::size_t kOverhead = sizeof(Block) + kSlack;

  std::size_t NextBlock() const;
  char* AllocateElsewhere(std::size_t nSize);
  char* AddBlock(std::size_t nSize);
  char* Use(Block* pBlock) noexcept;
  static void Release(Block* pBlock) noexcept;

  char* pNext_;               // the free rest of the current block,
  char* pLimit_;              // and its end
  Block* pNewest_ = nullptr;  // the blocks in use
  Block* pKept_ = nullptr;    // blocks that Reset() kept, the newest first
  std::size_t nFootprint_ = 0;
  const Progress* pProgress_ = nullptr;
  char* const pOwn_;
  const std::size_t nOwn_;
};

}  // namespace recordset

#endif  // QXRECORDSET_RECORDSET_BUMPBLOCKS_H

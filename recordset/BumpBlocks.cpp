// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The blocks behind BumpBlocks: how large they are, and when they go.

#include "recordset/BumpBlocks.h"

#include <algorithm>
#include <new>
#include <utility>

#include "memory/KeptBlocks.h"

namespace recordset {
namespace {

using memory::KeptBlocks;

// The first block that is allocated. Tables that outgrow what they hold themselves have several
// rows.
constexpr std::size_t kSmallestBlock = 1024;

// Blocks grow to this size.
constexpr std::size_t kLargestBlock = std::size_t{sizeof(void*) == 4 ? 256 : 1024} * 1024;

// A new block has this part of the size of all blocks so far: what may lie unused stays within it.
// When the same part of a known amount of work is done, the rest can be estimated.
constexpr std::size_t kGrowthDivisor = 8;

// An estimate is made larger by this part: another block would cost more.
constexpr std::size_t kSpareDivisor = 64;

}  // namespace

BumpBlocks::~BumpBlocks() {
  Release(pNewest_);
  Release(pKept_);
}

// Releases a block and all older ones.
void BumpBlocks::Release(Block* pBlock) noexcept {
  while (pBlock != nullptr) {
    Block* const pOlder = pBlock->pOlder;
    KeptBlocks::Give(pBlock, pBlock->nSize);
    pBlock = pOlder;
  }
}

// The rest is estimated twice, since the beginning of the work may not be like the rest of it: the
// first time half of the estimate is taken.
std::size_t BumpBlocks::NextBlock() const {
  if (pProgress_ == nullptr || pProgress_->nDone <= pProgress_->nAll / kGrowthDivisor) {
    return nFootprint_ / kGrowthDivisor;
  }
  const std::size_t nDone = pProgress_->nDone;
  const std::size_t nToDo = pProgress_->nAll - nDone;
  const double rest =
      static_cast<double>(nFootprint_) * static_cast<double>(nToDo) / static_cast<double>(nDone);
  const auto nRest = static_cast<std::size_t>(std::min(rest, 2.0 * kLargestBlock));
  return nToDo > nDone ? nRest / 2 : nRest + nRest / kSpareDivisor;
}

// A piece that is larger than a block gets one of its own, and the current block stays in use.
char* BumpBlocks::AllocateElsewhere(std::size_t nSize) {
  char* p = nullptr;
  if (pKept_ != nullptr && nSize <= pKept_->nSize - kOverhead) {
    p = Use(std::exchange(pKept_, pKept_->pOlder));
  } else {
    const std::size_t nNext = std::clamp(NextBlock(), kSmallestBlock, kLargestBlock);
    const std::size_t nBlock = KeptBlocks::SizeWithin(nNext) - kOverhead;
    if (nSize > nBlock) return AddBlock(nSize);
    p = AddBlock(nBlock);
  }
  pNext_ = p + nSize;
  pLimit_ = p + pNewest_->nSize - kOverhead;
  return p;
}

// Adds a block with `nSize` bytes of room and returns their start.
char* BumpBlocks::AddBlock(std::size_t nSize) {
  const std::size_t nBytes = nSize + kOverhead;
  if (nBytes < nSize) throw std::bad_alloc();
  Block* const pBlock = static_cast<Block*>(KeptBlocks::Take(nBytes));
  pBlock->nSize = nBytes;
  return Use(pBlock);
}

// A block's size is that of its header, its room, whose start is the result, and its slack.
char* BumpBlocks::Use(Block* pBlock) noexcept {
  pBlock->pOlder = pNewest_;
  pNewest_ = pBlock;
  nFootprint_ += pBlock->nSize;
  return reinterpret_cast<char*>(pBlock + 1);
}

void BumpBlocks::Reset() noexcept {
  Release(pKept_);
  pKept_ = pNewest_;
  pNewest_ = nullptr;
  nFootprint_ = 0;
  pNext_ = pOwn_;
  pLimit_ = pOwn_ + nOwn_;
}

}  // namespace recordset

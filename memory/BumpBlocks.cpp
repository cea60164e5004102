// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The blocks behind BumpBlocks: how large they are, and when they go.

#include "memory/BumpBlocks.h"

#include <algorithm>
#include <new>
#include <utility>

#include "memory/KeptBlocks.h"
#include "memory/Spare.h"

namespace memory {
namespace {

// A new block has this part of the size of all blocks so far: what may lie unused stays within it.
constexpr std::size_t kGrowthDivisor = 6;

}  // namespace

BumpBlocks::BumpBlocks(char* pOwn, std::size_t nOwn) noexcept
    : pNext_(pOwn), pLimit_(pOwn + nOwn), pOwn_(pOwn), nOwn_(nOwn) {
  if (pOwn != nullptr) Poison(pOwn, nOwn + kSlack);
}

BumpBlocks::~BumpBlocks() {
  Release(pNewest_);
  Release(pKept_);
  if (pOwn_ != nullptr) Unpoison(pOwn_, nOwn_ + kSlack);
}

// Releases a list of blocks.
void BumpBlocks::Release(Block* pBlock) noexcept {
  while (pBlock != nullptr) {
    Block* const pNext = pBlock->pNext;
    Unpoison(pBlock, pBlock->nSize);
    KeptBlocks::Give(pBlock, pBlock->nSize);
    pBlock = pNext;
  }
}

// From here on pieces come from the nBytes at pFirst, which the slack follows.
void BumpBlocks::Enter(char* pFirst, std::size_t nBytes) noexcept {
  pNext_ = pFirst;
  pLimit_ = pFirst + nBytes;
  if (pFirst != nullptr) Poison(pFirst, nBytes + kSlack);
}

// The piece lies alone in its block when the current block has more room than that block's rest.
char* BumpBlocks::AllocateElsewhere(std::size_t nSize) {
  Block* pBlock = TakeKept(nSize);
  if (pBlock == nullptr) pBlock = NewBlock(nSize);
  pBlock->pNext = std::exchange(pNewest_, pBlock);
  nFootprint_ += pBlock->nSize;
  char* const p = reinterpret_cast<char*>(pBlock + 1);
  const std::size_t nRoom = pBlock->nSize - kOverhead;
  if (nRoom - nSize > Room()) {
    Enter(p, nRoom);
    return Allocate(nSize);
  }
  Unpoison(p, nSize + kSlack);
  return p;
}

// Removes the first kept block with that much room, or gives null.
BumpBlocks::Block* BumpBlocks::TakeKept(std::size_t nSize) noexcept {
  Block** ppBlock = &pKept_;
  while (*ppBlock != nullptr && (*ppBlock)->nSize - kOverhead < nSize) {
    ppBlock = &(*ppBlock)->pNext;
  }
  return *ppBlock != nullptr ? std::exchange(*ppBlock, (*ppBlock)->pNext) : nullptr;
}

// A new block with room for nSize bytes or more.
BumpBlocks::Block* BumpBlocks::NewBlock(std::size_t nSize) {
  const std::size_t nNeeded = nSize + kOverhead;
  if (nNeeded < nSize) throw std::bad_alloc();
  Release(std::exchange(pKept_, nullptr));
  const std::size_t nUsual = KeptBlocks::SizeWithin(
      std::clamp((nFootprint_ + nOwn_) / kGrowthDivisor, kSmallestBlock, kLargestBlock));
  const std::size_t nWanted = nNeeded <= nUsual ? nUsual : KeptBlocks::SizeFor(nNeeded);
  Block* pBlock = nullptr;
  WithSpare(nNeeded, nWanted - nNeeded, [&pBlock](std::size_t nBytes) {
    pBlock = static_cast<Block*>(KeptBlocks::Take(nBytes));
    pBlock->nSize = nBytes;
  });
  return pBlock;
}

// The blocks are used again in the order in which they were allocated, the smaller ones first.
void BumpBlocks::Reset() noexcept {
  Release(std::exchange(pKept_, nullptr));
  while (pNewest_ != nullptr) {
    Poison(pNewest_ + 1, pNewest_->nSize - sizeof(Block));
    Block* const pOlder = std::exchange(pNewest_->pNext, pKept_);
    pKept_ = std::exchange(pNewest_, pOlder);
  }
  nFootprint_ = 0;
  Enter(pOwn_, nOwn_);
}

}  // namespace memory

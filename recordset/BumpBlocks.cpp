// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The blocks behind BumpBlocks: how large they are, and when they go.

#include "recordset/BumpBlocks.h"

#include <algorithm>
#include <new>

namespace recordset {
namespace {

// The first block that is allocated. Tables that outgrow what they hold themselves have several
// rows.
constexpr std::size_t kSmallestBlock = 1024;

// Blocks grow to this size, the allocator's own header of up to 16 bytes included. On 32 bits glibc
// takes pieces of 512 kB and more from the system one by one and gives them back at every release,
// so that their pages have to be filled with zeros again and again.
constexpr std::size_t kLargestBlock = (sizeof(void*) == 4 ? 384 * 1024 : 1024 * 1024) - 16;

// A new block has this part of the size of all blocks so far: what may lie unused stays within it.
constexpr std::size_t kGrowthDivisor = 8;

}  // namespace

BumpBlocks::~BumpBlocks() {
  for (Block* pBlock = pNewest_; pBlock != nullptr;) {
    Block* const pOlder = pBlock->pOlder;
    ::operator delete(pBlock);
    pBlock = pOlder;
  }
}

// A piece that is larger than a block gets one of its own, and the current block stays in use.
char* BumpBlocks::AllocateElsewhere(std::size_t nSize) {
  const std::size_t nBlock =
      std::clamp(nFootprint_ / kGrowthDivisor, kSmallestBlock, kLargestBlock) - kOverhead;
  if (nSize > nBlock) return AddBlock(nSize);
  char* const p = AddBlock(nBlock);
  pNext_ = p + nSize;
  pLimit_ = p + nBlock;
  return p;
}

// Adds a block with `nSize` bytes of room and returns their start.
char* BumpBlocks::AddBlock(std::size_t nSize) {
  const std::size_t nBytes = nSize + kOverhead;
  if (nBytes < nSize) throw std::bad_alloc();
  Block* const pBlock = static_cast<Block*>(::operator new(nBytes));
  pBlock->pOlder = pNewest_;
  pBlock->nSize = nBytes;
  pNewest_ = pBlock;
  nFootprint_ += nBytes;
  return reinterpret_cast<char*>(pBlock + 1);  // nSize bytes, then the slack
}

void BumpBlocks::Reset() noexcept {
  if (pNewest_ == nullptr) {
    pNext_ = pOwn_;
    pLimit_ = pOwn_ + nOwn_;
    return;
  }
  while (pNewest_->pOlder != nullptr) {
    Block* const pOlder = pNewest_->pOlder;
    pNewest_->pOlder = pOlder->pOlder;
    ::operator delete(pOlder);
  }
  nFootprint_ = pNewest_->nSize;
  // A block's size is that of its header, its room and its slack.
  pNext_ = reinterpret_cast<char*>(pNewest_ + 1);
  pLimit_ = reinterpret_cast<char*>(pNewest_) + pNewest_->nSize - kSlack;
}

}  // namespace recordset

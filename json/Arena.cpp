// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Blocks of the memory pool: how large they are, which one comes next, and when they go.
//
//   first block:   | Block | Arena | memory ... |
//   later blocks:  | Block | memory ... |

#include "json/Arena.h"

#include <algorithm>
#include <new>
#include <utility>

#include "memory/KeptBlocks.h"

namespace JSON {
namespace {

using memory::KeptBlocks;

// The first block holds at least a small document.
constexpr std::size_t kSmallestBlock = 1024;

// Blocks grow up to this size; only what does not fit gets a larger one.
constexpr std::size_t kLargestBlock = std::size_t{sizeof(void*) == 4 ? 256 : 1024} * 1024;

}  // namespace

Arena* Arena::Create(std::size_t nExpected) {
  static_assert(sizeof(Block) % kAlignment == 0 && sizeof(Arena) % kAlignment == 0,
                "memory behind the headers is aligned");
  const std::size_t nBytes =
      KeptBlocks::SizeWithin(std::clamp(RoundUp(nExpected), kSmallestBlock, kLargestBlock));
  Block* const pBlock = static_cast<Block*>(KeptBlocks::Take(nBytes));
  pBlock->pNext = nullptr;
  pBlock->nBytes = nBytes;
  Arena* const pArena = new (pBlock + 1) Arena;
  pArena->pFirst_ = pBlock;
  pArena->Enter(pBlock, pArena->FirstByte());
  return pArena;
}

void Arena::Destroy(Arena* pArena) noexcept {
  pArena->pCurrent_ = pArena->pFirst_;
  pArena->ReleaseUnused();
  Block* const pFirst = pArena->pFirst_;
  memory::Unpoison(pFirst, pFirst->nBytes);
  KeptBlocks::Give(pFirst, pFirst->nBytes);
}

void Arena::Rewind() noexcept {
  ReleaseUnused();
  for (Block* pBlock = pFirst_->pNext; pBlock != nullptr; pBlock = pBlock->pNext) {
    memory::Poison(pBlock + 1, pBlock->nBytes - sizeof(Block));
  }
  Enter(pFirst_, FirstByte());
}

bool Arena::IsRewound() const noexcept { return pNext_ == FirstByte(); }

// Where the first block's memory begins.
char* Arena::FirstByte() const noexcept {
  return reinterpret_cast<char*>(pFirst_ + 1) + sizeof(Arena);
}

// From here on memory comes from pNext on, in that block.
void Arena::Enter(Block* pBlock, char* pNext) noexcept {
  pCurrent_ = pBlock;
  pNext_ = pNext;
  pLimit_ = reinterpret_cast<char*>(pBlock) + pBlock->nBytes;  // its end
  memory::Poison(pNext_, static_cast<std::size_t>(pLimit_ - pNext_));
}

// Releases the blocks behind the current one.
void Arena::ReleaseUnused() noexcept {
  Block* pBlock = std::exchange(pCurrent_->pNext, nullptr);
  while (pBlock != nullptr) {
    Block* const pNext = pBlock->pNext;
    memory::Unpoison(pBlock, pBlock->nBytes);
    KeptBlocks::Give(pBlock, pBlock->nBytes);
    pBlock = pNext;
  }
}

// Bytes in all blocks.
std::size_t Arena::Footprint() const noexcept {
  std::size_t nBytes = 0;
  for (const Block* pBlock = pFirst_; pBlock != nullptr; pBlock = pBlock->pNext) {
    nBytes += pBlock->nBytes;
  }
  return nBytes;
}

// The first kept block that is large enough comes next; only when there is none does the pool grow.
void* Arena::AllocateElsewhere(std::size_t nBytes) {
  Block** ppLink = &pCurrent_->pNext;
  while (*ppLink != nullptr && (*ppLink)->nBytes - sizeof(Block) < nBytes) {
    ppLink = &(*ppLink)->pNext;
  }
  Block* pBlock = *ppLink;
  if (pBlock != nullptr) {
    *ppLink = pBlock->pNext;
  } else {
    if (nBytes > SIZE_MAX - sizeof(Block)) {
      throw std::bad_alloc();
    }
    ReleaseUnused();
    pBlock = AddBlock(nBytes + sizeof(Block));
  }
  pBlock->pNext = pCurrent_->pNext;
  pCurrent_->pNext = pBlock;
  char* const p = reinterpret_cast<char*>(pBlock + 1);
  Enter(pBlock, p + nBytes);
  memory::Unpoison(p, nBytes);
  return p;
}

// A new block of `nNeeded` bytes or more, header included.
Arena::Block* Arena::AddBlock(std::size_t nNeeded) {
  const std::size_t nUsual =
      KeptBlocks::SizeWithin(std::clamp(Footprint() / 2, kSmallestBlock, kLargestBlock));
  std::size_t nBytes = nNeeded <= nUsual ? nUsual : KeptBlocks::SizeFor(nNeeded);
  Block* pBlock = nullptr;
  try {
    pBlock = static_cast<Block*>(KeptBlocks::Take(nBytes));
  } catch (const std::bad_alloc&) {
    nBytes = nNeeded;
    pBlock = static_cast<Block*>(KeptBlocks::Take(nBytes));
  }
  pBlock->nBytes = nBytes;
  return pBlock;
}

}  // namespace JSON

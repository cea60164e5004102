// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Blocks of the memory pool: how large they are, and which one comes next.
//
//   first block:   | Block | Arena | memory ... |
//   later blocks:  | Block | memory ... |

#include "json/Arena.h"

#include <algorithm>
#include <new>

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
  pArena->Enter(pBlock, sizeof(Block) + sizeof(Arena));
  return pArena;
}

void Arena::Destroy(Arena* pArena) noexcept {
  Block* pBlock = pArena->pFirst_;
  while (pBlock != nullptr) {
    Block* const pNext = pBlock->pNext;
    KeptBlocks::Give(pBlock, pBlock->nBytes);
    pBlock = pNext;
  }
}

void Arena::Rewind(std::size_t nKept) noexcept {
  Enter(pFirst_, sizeof(Block) + sizeof(Arena) + RoundUp(nKept));
  bOwnsHeap = false;
}

void Arena::Enter(Block* pBlock, std::size_t nUsed) noexcept {
  pCurrent_ = pBlock;
  pNext_ = reinterpret_cast<char*>(pBlock) + nUsed;  // nUsed <= nBytes: headers and what was taken
  pLimit_ = reinterpret_cast<char*>(pBlock) + pBlock->nBytes;
}

// Bytes in all blocks.
std::size_t Arena::Footprint() const noexcept {
  std::size_t nBytes = 0;
  for (const Block* pBlock = pFirst_; pBlock != nullptr; pBlock = pBlock->pNext) {
    nBytes += pBlock->nBytes;
  }
  return nBytes;
}

// The blocks behind the current one are free. The first that is large enough comes next; only when
// there is none does the pool grow.
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
    const std::size_t nUsual = std::clamp(Footprint() / 2, kSmallestBlock, kLargestBlock);
    const std::size_t nNeeded = nBytes + sizeof(Block);
    const std::size_t nBlock = nNeeded <= KeptBlocks::SizeWithin(nUsual)
                                   ? KeptBlocks::SizeWithin(nUsual)
                                   : KeptBlocks::SizeFor(nNeeded);
    pBlock = static_cast<Block*>(KeptBlocks::Take(nBlock));
    pBlock->nBytes = nBlock;
  }
  pBlock->pNext = pCurrent_->pNext;
  pCurrent_->pNext = pBlock;
  Enter(pBlock, sizeof(Block) + nBytes);
  return pBlock + 1;
}

}  // namespace JSON

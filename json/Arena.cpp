// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Blocks of the memory pool: how large they are, and which one comes next.
//
//   first block:   | Block | Arena | memory ... |
//   later blocks:  | Block | memory ... |

#include "json/Arena.h"

#include <algorithm>
#include <new>

namespace JSON {
namespace {

// The first block holds at least a small document.
constexpr std::size_t kSmallestBlock = 1024;

// Blocks double up to this size. On 32 bits the C library returns blocks of 512 kB and more to the
// system at every release and gets them back page by page; below that they stay with the process.
constexpr std::size_t kLargestBlock = sizeof(void*) == 4 ? 448 * 1024 : 4096 * 1024;

}  // namespace

Arena* Arena::Create(std::size_t nExpected) {
  static_assert(sizeof(Block) % kAlignment == 0 && sizeof(Arena) % kAlignment == 0,
                "memory behind the headers is aligned");
  const std::size_t nBytes = std::clamp(RoundUp(nExpected), kSmallestBlock, kLargestBlock);
  Block* const pBlock = static_cast<Block*>(::operator new(nBytes));
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
    ::operator delete(pBlock);
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
    const std::size_t nUsual = std::min(pCurrent_->nBytes * 2, kLargestBlock);
    const std::size_t nBlock = std::max(nUsual, nBytes + sizeof(Block));
    pBlock = static_cast<Block*>(::operator new(nBlock));
    pBlock->nBytes = nBlock;
  }
  pBlock->pNext = pCurrent_->pNext;
  pCurrent_->pNext = pBlock;
  Enter(pBlock, sizeof(Block) + nBytes);
  return pBlock + 1;
}

}  // namespace JSON

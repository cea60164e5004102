// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The memory pool of one message. Containers, their elements and their names are taken from it by
// moving a pointer, and all of them are released at once: a parse costs a handful of allocations
// whatever the document holds. Blocks are kept when the pool is rewound, so a message that parses
// again and again stops allocating altogether.
//
// Nothing in the pool is destroyed one by one. A pool whose tree has come to own memory outside of
// it (a private text, a container made by an update) says so in bOwnsHeap; then the tree is walked
// before the pool is rewound.

#ifndef QXRECORDSET_JSON_ARENA_H
#define QXRECORDSET_JSON_ARENA_H

#include <cstddef>
#include <cstdint>

namespace JSON {

class alignas(8) Arena {
 public:
  // Everything taken from the pool is aligned for pointers and 64-bit numbers.
  static constexpr std::size_t kAlignment = 8;

  // A pool whose first block suits a tree of about `nExpected` bytes. The pool itself lies at the
  // start of that block: a small document costs one allocation.
  static Arena* Create(std::size_t nExpected);
  static void Destroy(Arena* pArena) noexcept;

  // `nBytes` of memory that stays in place until Rewind() or Destroy().
  void* Allocate(std::size_t nBytes) {
    nBytes = RoundUp(nBytes);
    if (nBytes > static_cast<std::size_t>(pLimit_ - pNext_)) {
      return AllocateElsewhere(nBytes);
    }
    char* p = pNext_;
    pNext_ += nBytes;  // up to pLimit_ at most
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
    pNext_ = pNext_ - RoundUp(nOld) + RoundUp(nNew);  // from the item's start, up to pLimit_
    return true;
  }

  // Forgets everything but the first `nKept` bytes that were taken, and keeps the blocks. REQUIRES:
  // nKept is 0, or the size of the first allocation and that one came from the first block.
  void Rewind(std::size_t nKept) noexcept;

  // The tree in this pool may own memory outside of it.
  bool bOwnsHeap = false;

 private:
  struct alignas(8) Block {
    Block* pNext;
    std::size_t nBytes;  // this header included
  };

  Arena() = default;
  static std::size_t RoundUp(std::size_t n) { return (n + kAlignment - 1) & ~(kAlignment - 1); }
  void* AllocateElsewhere(std::size_t nBytes);
  std::size_t Footprint() const noexcept;
  void Enter(Block* pBlock, std::size_t nUsed) noexcept;

  char* pNext_ = nullptr;   // next free byte of the current block
  char* pLimit_ = nullptr;  // its end
  Block* pFirst_ = nullptr;
  Block* pCurrent_ = nullptr;
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_ARENA_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The memory pool of one message. Containers, their elements and their names are taken from it, and
// all of them are released at once: a parse costs a handful of allocations whatever the document
// holds. Nothing in the pool is destroyed one by one; what its tree owns outside of the pool is
// released before (json/TreeRelease.h).
//
//   first block:   | Arena | memory ... |          one allocation for a small document
//   later blocks:  memory/BumpBlocks.h says how large they are and how much is kept

#ifndef QXRECORDSET_JSON_ARENA_H
#define QXRECORDSET_JSON_ARENA_H

#include <cstddef>

#include "memory/BumpBlocks.h"

namespace JSON {

class alignas(8) Arena {
 public:
  // Everything taken from the pool is aligned for pointers and 64-bit numbers.
  static constexpr std::size_t kAlignment = 8;

  // A pool whose first block suits a tree of about `nExpected` bytes.
  static Arena* Create(std::size_t nExpected);
  static void Destroy(Arena* pArena) noexcept;

  // `nBytes` of memory that stays in place until Rewind() or Destroy(). The first
  // memory::BumpBlocks::kSmallestBlock / 2 bytes behind a Rewind() lie at the same address each
  // time.
  void* Allocate(std::size_t nBytes) { return blocks_.Allocate(RoundUp(nBytes)); }

  // Makes what Allocate() gave last larger or smaller without moving it; false when it was not the
  // last, or when its block has no room.
  bool Resize(const void* p, std::size_t nOld, std::size_t nNew) {
    nOld = RoundUp(nOld);
    nNew = RoundUp(nNew);
    const char* const pEnd = static_cast<const char*>(p) + nOld;
    return nNew < nOld ? blocks_.ShrinkLast(pEnd, nOld - nNew)
                       : blocks_.ExtendLast(pEnd, nNew - nOld);
  }

  // Forgets everything that was taken. Memory is kept; see memory/BumpBlocks.h.
  void Rewind() noexcept { blocks_.Reset(); }

  // Whether nothing was taken since Create() or Rewind().
  bool IsRewound() const noexcept { return blocks_.IsReset(); }

 private:
  explicit Arena(std::size_t nBytes) noexcept;
  ~Arena() = default;
  static std::size_t RoundUp(std::size_t n) { return (n + kAlignment - 1) & ~(kAlignment - 1); }

  memory::BumpBlocks blocks_;
  const std::size_t nBytes_;  // of the first block, this object included
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_ARENA_H

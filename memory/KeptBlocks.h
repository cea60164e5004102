// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Large blocks of memory that outlive the objects they were taken for. The C library gives what is
// released at the end of its heap, and all really large pieces, back to the system, and gets them
// again as pages that have to be faulted in and cleared one by one. A host that makes a document or
// a record set for each text that comes in would spend more time on that than on reading the text.
// So the library keeps a bounded number of blocks for the next object that needs one, on any
// thread.
//
// Only blocks of the standard sizes are kept: powers of two from kSmallest to kLargest bytes.
// Everything else comes from, and goes back to, operator new and delete. Safe for use from several
// threads at once, and no thread waits: while one thread is here, the blocks of another come from
// and go to the allocator as well.

#ifndef QXRECORDSET_MEMORY_KEPTBLOCKS_H
#define QXRECORDSET_MEMORY_KEPTBLOCKS_H

#include <cstddef>

namespace memory {

class KeptBlocks {
 public:
  static constexpr std::size_t kSmallest = std::size_t{32} * 1024;
  static constexpr std::size_t kLargest = std::size_t{sizeof(void*) == 4 ? 2048 : 8192} * 1024;

  // Bytes in all blocks that are kept at a time. An address space of 32 bits has less to spare.
  static constexpr std::size_t kMostBytes = std::size_t{sizeof(void*) == 4 ? 16 : 32} * 1024 * 1024;

  // The size of a block for nBytes or more: the next standard size, or nBytes where there is none.
  static std::size_t SizeFor(std::size_t nBytes) noexcept;

  // The same for nBytes or fewer.
  static std::size_t SizeWithin(std::size_t nBytes) noexcept;

  // A block of exactly nBytes, not initialised, aligned like one of operator new. When memory runs
  // out, the kept blocks are released and it is tried again; then std::bad_alloc.
  static void* Take(std::size_t nBytes);

  // Takes back a block that Take() gave for the same nBytes.
  static void Give(void* pBlock, std::size_t nBytes) noexcept;

  // Releases all blocks that are kept.
  static void Release() noexcept;
};

}  // namespace memory

#endif  // QXRECORDSET_MEMORY_KEPTBLOCKS_H

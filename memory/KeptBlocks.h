// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Large memory that outlives the objects it was taken for: blocks, and the buffers of texts. The C
// library gives what is released at the end of its heap, and all really large pieces, back to the
// system, and gets them again as pages that have to be faulted in and cleared one by one. A host
// that makes a document or a record set for each text that comes in would spend more time on that
// than on reading the text. So the library keeps a bounded amount for the next object that needs
// it, on any thread.
//
// Only blocks of the standard sizes are kept: powers of two from kSmallest to kLargest bytes.
// Everything else comes from, and goes back to, operator new and delete. Nothing is kept under the
// tools of memory/Checkers.h.
//
// Safe for use from several threads at once, and no thread waits: while one thread is here, what
// another needs comes from and goes to the allocator as well.

#ifndef QXRECORDSET_MEMORY_KEPTBLOCKS_H
#define QXRECORDSET_MEMORY_KEPTBLOCKS_H

#include <cstddef>
#include <string>

namespace memory {

class KeptBlocks {
 public:
  static constexpr std::size_t kSmallest = std::size_t{32} * 1024;
  static constexpr std::size_t kLargest = std::size_t{sizeof(void*) == 4 ? 2048 : 8192} * 1024;

  // Bytes in all that is kept at a time.
  static constexpr std::size_t kMostBytes = std::size_t{32} * 1024 * 1024;

  // The size of a block for nBytes or more: the next standard size, or nBytes where there is none.
  static std::size_t SizeFor(std::size_t nBytes) noexcept;

  // The same for nBytes or fewer.
  static std::size_t SizeWithin(std::size_t nBytes) noexcept;

  // A block of exactly nBytes, not initialised, aligned like one of operator new. When memory runs
  // out, the kept blocks are released and it is tried again; then std::bad_alloc.
  static void* Take(std::size_t nBytes);

  // Takes back a block that Take() gave for the same nBytes.
  static void Give(void* pBlock, std::size_t nBytes) noexcept;

  // Gives a text a buffer for nBytes or more, up to four times as many, when one is kept, with what
  // it held before. A kept buffer that does not suit is released. A large text (HugePages.h) gets a
  // new buffer then, unless memory runs out.
  static void TakeText(std::string& text, std::size_t nBytes) noexcept;

  // Takes the buffer of a text that is not needed any more. One is kept, the latest.
  static void GiveText(std::string& text) noexcept;

  // Releases all that is kept, the objects of memory/KeptObjects.h included. When another thread is
  // here at the time, that thread does it before it leaves.
  static void Release() noexcept;
};

}  // namespace memory

#endif  // QXRECORDSET_MEMORY_KEPTBLOCKS_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A few emptied objects that the next one of their kind is made from. What a small table costs is
// mostly being made and released; one that was used before has its memory and its columns at hand.
//
// There are kPlaces places, and a thread uses the one that its stack lies at, so that threads that
// make and release objects all the time seldom touch the memory of another one. Which place that is
// matters for speed alone. Safe for use from several threads at once, and no thread waits. Nothing
// is kept under the tools of memory/Checkers.h.
//
// All objects are of one class, which their user knows.

#ifndef QXRECORDSET_MEMORY_KEPTOBJECTS_H
#define QXRECORDSET_MEMORY_KEPTOBJECTS_H

#include <cstddef>

namespace memory {

class KeptObjects {
 public:
  using Destroy = void (*)(void* pObject) noexcept;

  static constexpr std::size_t kPlaces = 8;

  // A kept object, which belongs to the caller now, or null.
  static void* Take() noexcept;

  // Keeps an object; false, and it still belongs to the caller, when there is no place for it.
  // `destroy` releases it, and is the same function in all calls.
  static bool Keep(void* pObject, Destroy destroy) noexcept;

  // Releases all that is kept.
  static void Release() noexcept;

  // The same; from now on nothing is kept.
  static void Close() noexcept;
};

}  // namespace memory

#endif  // QXRECORDSET_MEMORY_KEPTOBJECTS_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Memory that the library holds without content: the free part of a pool's blocks. Builds with the
// address sanitizer report each access to it; other builds with assertions fill it with a pattern,
// so that what is read from it by mistake is wrong at once; release builds do nothing.

#ifndef QXRECORDSET_MEMORY_POISON_H
#define QXRECORDSET_MEMORY_POISON_H

#include <cstddef>
#include <cstring>

#include "memory/Checkers.h"

#if QXRECORDSET_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#endif

namespace memory {

// No one may read or write the bytes until Unpoison().
inline void Poison([[maybe_unused]] void* p, [[maybe_unused]] std::size_t nBytes) noexcept {
#if QXRECORDSET_ADDRESS_SANITIZER
  __asan_poison_memory_region(p, nBytes);
#elif !defined(NDEBUG)
  constexpr int kPattern = 0xDD;
  std::memset(p, kPattern, nBytes);
#endif
}

// The bytes have content again, or are about to be released.
inline void Unpoison([[maybe_unused]] void* p, [[maybe_unused]] std::size_t nBytes) noexcept {
#if QXRECORDSET_ADDRESS_SANITIZER
  __asan_unpoison_memory_region(p, nBytes);
#endif
}

}  // namespace memory

#endif  // QXRECORDSET_MEMORY_POISON_H

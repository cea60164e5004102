// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Growing by more than what is needed. A container that grows geometrically asks for spare room, so
// that it is seldom copied. Near the end of the memory the spare room is what cannot be had: then
// less of it is asked for, and in the end none.

#ifndef QXRECORDSET_MEMORY_SPARE_H
#define QXRECORDSET_MEMORY_SPARE_H

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <new>

namespace memory {

// Calls make(n) with n from nNeeded + nSpare down to nNeeded, until it does not throw
// std::bad_alloc. The last attempt's exception is passed on. REQUIRES: the sum does not overflow,
// and a call of make() that throws changes nothing.
template <typename Make>
void WithSpare(std::size_t nNeeded, std::size_t nSpare, Make make) {
  assert(nSpare <= SIZE_MAX - nNeeded);
  for (;; nSpare /= 2) {
    try {
      make(nNeeded + nSpare);
      return;
    } catch (const std::bad_alloc&) {
      if (nSpare == 0) throw;
    }
  }
}

}  // namespace memory

#endif  // QXRECORDSET_MEMORY_SPARE_H

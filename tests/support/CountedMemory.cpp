// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The replaced operators new and delete.

#include "tests/support/CountedMemory.h"

#include <malloc.h>

#include <cstdint>
#include <cstdlib>
#include <new>
#include <utility>

#include "memory/KeptBlocks.h"

namespace {

std::size_t nLive = 0;            // bytes
std::size_t nAllocations = 0;     // that succeeded
long nAllowed = -1;               // allocations that may still succeed; negative: all
std::size_t nLargest = SIZE_MAX;  // bytes of an allocation that may succeed
bool bFailed = false;

void* Allocate(std::size_t nBytes) {
  if (nAllowed == 0 || nBytes > nLargest) {
    bFailed = true;
    return nullptr;
  }
  void* const p = std::malloc(nBytes);
  if (p == nullptr) return nullptr;
  nLive += malloc_usable_size(p);
  ++nAllocations;
  if (nAllowed > 0) --nAllowed;
  return p;
}

void Release(void* p) noexcept {
  nLive -= malloc_usable_size(p);
  std::free(p);
}

}  // namespace

void* operator new(std::size_t nBytes) {
  void* const p = Allocate(nBytes);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}
void* operator new(std::size_t nBytes, const std::nothrow_t&) noexcept { return Allocate(nBytes); }
void* operator new[](std::size_t nBytes) { return operator new(nBytes); }
void* operator new[](std::size_t nBytes, const std::nothrow_t&) noexcept {
  return Allocate(nBytes);
}
void operator delete(void* p) noexcept { Release(p); }
void operator delete(void* p, std::size_t) noexcept { Release(p); }
void operator delete[](void* p) noexcept { Release(p); }
void operator delete[](void* p, std::size_t) noexcept { Release(p); }

std::size_t CountedMemory::Live() {
  memory::KeptBlocks::Release();
  return nLive;
}
std::size_t CountedMemory::Allocations() { return nAllocations; }
void CountedMemory::FailAfter(long nMore) { nAllowed = nMore; }
void CountedMemory::FailAbove(std::size_t nBytes) { nLargest = nBytes; }
bool CountedMemory::StopFailing() {
  nAllowed = -1;
  nLargest = SIZE_MAX;
  return std::exchange(bFailed, false);
}

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The replaced operator new. For test programs of one thread.

#include "tests/support/FailingAllocation.h"

#include <cstdlib>
#include <new>

namespace {

constexpr int kNever = -1;
int nUntilFailure = kNever;  // allocations that still succeed
std::size_t nAllocations = 0;
std::size_t nReleases = 0;

void Release(void* p) noexcept {
  nReleases += p != nullptr ? 1 : 0;
  std::free(p);
}

}  // namespace

Support::FailingAllocation::FailingAllocation(int nBefore) { nUntilFailure = nBefore; }

Support::FailingAllocation::~FailingAllocation() { nUntilFailure = kNever; }

std::size_t Support::CountAllocations() { return nAllocations; }
std::size_t Support::LiveAllocations() { return nAllocations - nReleases; }

void* operator new(std::size_t nBytes) {
  if (nUntilFailure == 0) {
    nUntilFailure = kNever;
    throw std::bad_alloc();
  }
  ++nAllocations;
  if (nUntilFailure > 0) --nUntilFailure;
  if (void* const p = std::malloc(nBytes != 0 ? nBytes : 1)) return p;
  throw std::bad_alloc();
}

// std::stable_sort takes its buffer here; it has to come from the same place as all that is freed
// below.
void* operator new(std::size_t nBytes, const std::nothrow_t&) noexcept {
  try {
    return operator new(nBytes);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

// The forms for arrays would come here by themselves, but not past the address sanitizer's own.
void* operator new[](std::size_t nBytes) { return operator new(nBytes); }
void* operator new[](std::size_t nBytes, const std::nothrow_t& nothrow) noexcept {
  return operator new(nBytes, nothrow);
}

void operator delete(void* p) noexcept { Release(p); }
void operator delete(void* p, std::size_t) noexcept { Release(p); }
void operator delete[](void* p) noexcept { Release(p); }
void operator delete[](void* p, std::size_t) noexcept { Release(p); }

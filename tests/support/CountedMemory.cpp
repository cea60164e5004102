// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The replaced operators new and delete. A header in front of each block says how it was allocated;
// the address sanitizer treats it as memory of nobody.

#include "tests/support/CountedMemory.h"

#include <malloc.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "memory/KeptBlocks.h"

#if defined(__has_feature)
#define SUPPORT_ASAN __has_feature(address_sanitizer)
#elif defined(__SANITIZE_ADDRESS__)
#define SUPPORT_ASAN 1
#else
#define SUPPORT_ASAN 0
#endif

#if SUPPORT_ASAN
#include <sanitizer/asan_interface.h>
#include <sanitizer/common_interface_defs.h>
#else
#define ASAN_POISON_MEMORY_REGION(p, n)
#define ASAN_UNPOISON_MEMORY_REGION(p, n)
#endif

namespace {

std::size_t nLive = 0;            // bytes
std::size_t nAllocations = 0;     // that succeeded
long nAllowed = -1;               // allocations that may still succeed; negative: all
std::size_t nLargest = SIZE_MAX;  // bytes of an allocation that may succeed
bool bFailed = false;
bool bFill = false;
int nAsides = 0;  // that live

enum class Form : std::uint32_t { kOne = 0x4E455731, kArray = 0x4E455732, kNone = 0xDEADDEAD };

struct alignas(16) Header {
  Form form;
  bool bAside;
};

std::size_t Bytes(Header* pHeader) { return malloc_usable_size(pHeader) - sizeof(Header); }

void* Allocate(std::size_t nBytes, Form form) {
  if (nAllowed == 0 || nBytes > nLargest) {
    bFailed = true;
    return nullptr;
  }
  void* const p = nBytes < SIZE_MAX / 2 ? std::malloc(sizeof(Header) + nBytes) : nullptr;
  if (p == nullptr) return nullptr;
  if (bFill) std::memset(p, 0xA5, sizeof(Header) + nBytes);
  auto* const pHeader = new (p) Header{form, nAsides > 0};
  if (!pHeader->bAside) nLive += Bytes(pHeader);
  ++nAllocations;
  if (nAllowed > 0) --nAllowed;
  void* const pBlock = pHeader + 1;
  ASAN_POISON_MEMORY_REGION(pHeader, sizeof(Header));
  return pBlock;
}

void* AllocateOrThrow(std::size_t nBytes, Form form) {
  void* const p = Allocate(nBytes, form);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}

// Looks at the header, which is nobody's memory, also after the release.
__attribute__((no_sanitize("address"))) bool Has(const Header* pHeader, Form form) {
  const volatile Form* const pForm = &pHeader->form;
  return *pForm == form;
}

void Release(void* pBlock, Form form) noexcept {
  if (pBlock == nullptr) return;
  Header* const pHeader = static_cast<Header*>(pBlock) - 1;
  if (!Has(pHeader, form)) {
    std::fprintf(stderr, "%s\n",
                 Has(pHeader, Form::kNone) ? "memory is released twice"
                                           : "memory is released that was not allocated so");
#if SUPPORT_ASAN
    __sanitizer_print_stack_trace();
#endif
    std::abort();
  }
  ASAN_UNPOISON_MEMORY_REGION(pHeader, sizeof(Header));
  const std::size_t nBytes = Bytes(pHeader);
  if (!pHeader->bAside) nLive -= nBytes;
  if (bFill) std::memset(pBlock, 0xDD, nBytes);
  pHeader->form = Form::kNone;
  // The allocator's own notes overwrite the header of a small block, but not with a valid form.
  std::free(pHeader);
}

}  // namespace

void* operator new(std::size_t n) { return AllocateOrThrow(n, Form::kOne); }
void* operator new[](std::size_t n) { return AllocateOrThrow(n, Form::kArray); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept {
  return Allocate(n, Form::kOne);
}
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept {
  return Allocate(n, Form::kArray);
}
void operator delete(void* p) noexcept { Release(p, Form::kOne); }
void operator delete(void* p, std::size_t) noexcept { Release(p, Form::kOne); }
void operator delete[](void* p) noexcept { Release(p, Form::kArray); }
void operator delete[](void* p, std::size_t) noexcept { Release(p, Form::kArray); }

std::size_t CountedMemory::Live() {
  memory::KeptBlocks::Release();
  return nLive;
}
CountedMemory::Aside::Aside() { ++nAsides; }
CountedMemory::Aside::~Aside() { --nAsides; }
void CountedMemory::FillWithPatterns() { bFill = true; }
std::size_t CountedMemory::Allocations() { return nAllocations; }
void CountedMemory::FailAfter(long nMore) { nAllowed = nMore; }
void CountedMemory::FailAbove(std::size_t nBytes) { nLargest = nBytes; }
bool CountedMemory::StopFailing() {
  nAllowed = -1;
  nLargest = SIZE_MAX;
  return std::exchange(bFailed, false);
}

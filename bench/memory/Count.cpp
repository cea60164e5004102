// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The counting allocation functions. glibc lets a program define them and offers its own under a
// second name. The program has one thread, so nothing is locked.

#include "bench/memory/Count.h"

#include <malloc.h>

#include <algorithm>
#include <cerrno>

extern "C" {
void* __libc_malloc(std::size_t nBytes);
void* __libc_calloc(std::size_t nItems, std::size_t nBytes);
void* __libc_realloc(void* pBlock, std::size_t nBytes);
void* __libc_memalign(std::size_t nAlignment, std::size_t nBytes);
void __libc_free(void* pBlock);
}

namespace bench::memory {
namespace {

Count count;

// A block's usable bytes and the word in front of it that holds its size.
std::size_t BlockBytes(void* pBlock) { return malloc_usable_size(pBlock) + sizeof(std::size_t); }

void* Taken(void* pBlock) {
  if (pBlock != nullptr) {
    ++count.nCalls;
    count.nHeld += BlockBytes(pBlock);
    count.nPeak = std::max(count.nPeak, count.nHeld);
  }
  return pBlock;
}

void Given(void* pBlock) {
  if (pBlock != nullptr) {
    count.nHeld -= BlockBytes(pBlock);
  }
}

}  // namespace

const Count& Current() { return count; }

void ResetPeak() { count.nPeak = count.nHeld; }

}  // namespace bench::memory

using bench::memory::Given;
using bench::memory::Taken;

extern "C" {

void* malloc(std::size_t nBytes) { return Taken(__libc_malloc(nBytes)); }

void* calloc(std::size_t nItems, std::size_t nBytes) {
  return Taken(__libc_calloc(nItems, nBytes));
}

void* realloc(void* pBlock, std::size_t nBytes) {
  Given(pBlock);
  return Taken(__libc_realloc(pBlock, nBytes));
}

void* memalign(std::size_t nAlignment, std::size_t nBytes) {
  return Taken(__libc_memalign(nAlignment, nBytes));
}

void* aligned_alloc(std::size_t nAlignment, std::size_t nBytes) {
  return memalign(nAlignment, nBytes);
}

int posix_memalign(void** ppBlock, std::size_t nAlignment, std::size_t nBytes) {
  *ppBlock = memalign(nAlignment, nBytes);
  return *ppBlock == nullptr ? ENOMEM : 0;
}

void free(void* pBlock) {
  Given(pBlock);
  __libc_free(pBlock);
}

}  // extern "C"

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The kept blocks: a list for each standard size.

#include "memory/KeptBlocks.h"

#include <atomic>
#include <new>
#include <utility>

#include "memory/Poison.h"

namespace memory {
namespace {

// What a kept block holds in its first bytes.
struct Link {
  Link* pNext;
};

constexpr int ListOf(std::size_t nBytes) {
  int nList = 0;
  for (std::size_t nSize = KeptBlocks::kSmallest; nSize < nBytes; nSize *= 2) {
    ++nList;
  }
  return nList;
}
constexpr int kLists = ListOf(KeptBlocks::kLargest) + 1;

constexpr bool IsStandard(std::size_t nBytes) {
  return nBytes >= KeptBlocks::kSmallest && nBytes <= KeptBlocks::kLargest &&
         (nBytes & (nBytes - 1)) == 0;
}

// Is constant to begin with and needs no destruction, so that objects of static storage may use it
// before and after anything else.
struct Store {
  std::atomic_flag bBusy = ATOMIC_FLAG_INIT;
  Link* apFirst[kLists] = {};
  std::size_t nBytes = 0;  // in all blocks that are kept
  bool bClosed = false;    // the library is being unloaded
};
Store store;

// The right to use the store, unless another thread has it. No thread waits for it, so a process
// that was forked while a thread had it runs without kept blocks.
class Access {
 public:
  Access() : bGranted_(!store.bBusy.test_and_set(std::memory_order_acquire)) {}
  ~Access() {
    if (bGranted_) store.bBusy.clear(std::memory_order_release);
  }
  Access(const Access&) = delete;
  Access& operator=(const Access&) = delete;
  explicit operator bool() const { return bGranted_; }

 private:
  const bool bGranted_;
};

Link* TakeKept(std::size_t nBytes) noexcept {
  const Access access;
  if (!access) return nullptr;
  Link*& pFirst = store.apFirst[ListOf(nBytes)];
  if (pFirst == nullptr) return nullptr;
  store.nBytes -= nBytes;
  return std::exchange(pFirst, pFirst->pNext);
}

bool Keep(void* pBlock, std::size_t nBytes) noexcept {
  const Access access;
  if (!access || store.bClosed || nBytes > KeptBlocks::kMostBytes - store.nBytes) return false;
  Link*& pFirst = store.apFirst[ListOf(nBytes)];
  pFirst = new (pBlock) Link{pFirst};
  store.nBytes += nBytes;
  return true;
}

// All lists in one.
Link* TakeAll(bool bClose) noexcept {
  const Access access;
  if (!access) return nullptr;
  Link* pAll = nullptr;
  for (Link*& pFirst : store.apFirst) {
    while (pFirst != nullptr) {
      Link* const pBlock = std::exchange(pFirst, pFirst->pNext);
      pBlock->pNext = std::exchange(pAll, pBlock);
    }
  }
  store.nBytes = 0;
  store.bClosed = bClose;
  return pAll;
}

void ReleaseAll(bool bClose) noexcept {
  Link* pBlock = TakeAll(bClose);
  while (pBlock != nullptr) {
    ::operator delete(std::exchange(pBlock, pBlock->pNext));
  }
}

// When the library is unloaded, no code is left to release the blocks. What objects of static
// storage give back later is released at once.
[[gnu::destructor]] void Close() { ReleaseAll(true); }

}  // namespace

std::size_t KeptBlocks::SizeFor(std::size_t nBytes) noexcept {
  if (nBytes <= kSmallest / 2 || nBytes > kLargest) return nBytes;
  return kSmallest << ListOf(nBytes);
}

std::size_t KeptBlocks::SizeWithin(std::size_t nBytes) noexcept {
  if (nBytes < kSmallest || nBytes > kLargest) return nBytes;
  const std::size_t nSize = SizeFor(nBytes);
  return nSize == nBytes ? nSize : nSize / 2;
}

void* KeptBlocks::Take(std::size_t nBytes) {
  if (!IsStandard(nBytes)) return ::operator new(nBytes);
  if (Link* const pKept = TakeKept(nBytes)) return pKept;
  void* const pBlock = ::operator new(nBytes, std::nothrow);
  if (pBlock != nullptr) return pBlock;
  Release();
  return ::operator new(nBytes);
}

void KeptBlocks::Give(void* pBlock, std::size_t nBytes) noexcept {
  if (kSanitized || !IsStandard(nBytes) || !Keep(pBlock, nBytes)) ::operator delete(pBlock);
}

void KeptBlocks::Release() noexcept { ReleaseAll(false); }

}  // namespace memory

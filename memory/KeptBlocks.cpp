// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The store of what is kept: a list of blocks for each standard size, and one text.

#include "memory/KeptBlocks.h"

#include <atomic>
#include <new>
#include <utility>

#include "memory/Checkers.h"
#include "memory/HugePages.h"
#include "memory/KeptObjects.h"

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

// A kept buffer is used for texts of this part of its size and longer ones.
constexpr std::size_t kMostRoom = 4;

struct Content {
  Link* apFirst[kLists] = {};
  std::string* pText = nullptr;
  std::size_t nBytes = 0;  // in all that is kept
};

// Is constant to begin with and needs no destruction, so that objects of static storage may use it
// before and after anything else.
struct Store {
  // 1 while a thread works with the content. A word: to exchange a byte, GCC for RISC-V calls a
  // library of its own.
  std::atomic<unsigned> nBusy{0};
  std::atomic<bool> bReleaseAsked{false};  // the content is to be released
  bool bClosed = false;                    // the library is being unloaded
  Content content;
};
Store store;

// ---- Releasing ----------------------------------------------------------------------------------

void Delete(const Content& content) noexcept {
  for (Link* pBlock : content.apFirst) {
    while (pBlock != nullptr) {
      ::operator delete(std::exchange(pBlock, pBlock->pNext));
    }
  }
  delete content.pText;
}

// Whoever asks for a release sets the flag and then tries to get the store; whoever leaves the
// store clears nBusy and then looks at the flag. One of the two sees what the other did.
void ReleaseIfAsked() noexcept {
  while (store.bReleaseAsked) {
    if (store.nBusy.exchange(1) != 0) return;  // the thread that is there comes by here
    store.bReleaseAsked = false;
    const Content content = std::exchange(store.content, Content());
    store.nBusy = 0;
    Delete(content);
  }
}

// The right to use the store, unless another thread has it. No thread waits for it, so a process
// that was forked while a thread had it runs without what is kept.
class Access {
 public:
  Access() : bGranted_(store.nBusy.exchange(1) == 0) {}
  ~Access() {
    if (!bGranted_) return;
    store.nBusy = 0;
    ReleaseIfAsked();
  }
  Access(const Access&) = delete;
  Access& operator=(const Access&) = delete;
  explicit operator bool() const { return bGranted_; }

 private:
  const bool bGranted_;
};

// When the library is unloaded, no code is left to release the content. What objects of static
// storage give back later is released at once.
[[gnu::destructor]] void Close() {
  KeptObjects::Close();
  store.bClosed = true;
  KeptBlocks::Release();
}

// ---- Keeping ------------------------------------------------------------------------------------

Link* TakeKept(std::size_t nBytes) noexcept {
  const Access access;
  if (!access) return nullptr;
  Link*& pFirst = store.content.apFirst[ListOf(nBytes)];
  if (pFirst == nullptr) return nullptr;
  store.content.nBytes -= nBytes;
  return std::exchange(pFirst, pFirst->pNext);
}

bool Keep(void* pBlock, std::size_t nBytes) noexcept {
  const Access access;
  if (!access || store.bClosed || nBytes > KeptBlocks::kMostBytes - store.content.nBytes) {
    return false;
  }
  Link*& pFirst = store.content.apFirst[ListOf(nBytes)];
  pFirst = new (pBlock) Link{pFirst};
  store.content.nBytes += nBytes;
  return true;
}

// Puts another text, or none, in the place of the kept one, which is the result. When that cannot
// be done, the result is the text itself.
std::string* ExchangeText(std::string* pText) noexcept {
  const Access access;
  if (!access || store.bClosed) return pText;
  Content& content = store.content;
  const std::size_t nNew = pText != nullptr ? pText->capacity() : 0;
  const std::size_t nOld = content.pText != nullptr ? content.pText->capacity() : 0;
  if (nNew > KeptBlocks::kMostBytes - (content.nBytes - nOld)) return pText;
  content.nBytes += nNew - nOld;
  return std::exchange(content.pText, pText);
}

// A new buffer of a large text. Without memory for it there is none, as if there were none kept.
void MakeHuge(std::string& text, std::size_t nBytes) noexcept {
  try {
    std::string made;
    made.reserve(nBytes);
    PreferHugePages(made);
    text.swap(made);
  } catch (...) {
    return;
  }
}

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
  const bool bMayKeep = !kSanitized && IsStandard(nBytes) && !UnderMemcheck();
  if (!bMayKeep || !Keep(pBlock, nBytes)) ::operator delete(pBlock);
}

void KeptBlocks::TakeText(std::string& text, std::size_t nBytes) noexcept {
  if (nBytes < kSmallest) return;
  std::string* const pKept = ExchangeText(nullptr);
  if (pKept != nullptr) {
    const std::size_t nRoom = pKept->capacity();
    if (nRoom >= nBytes && nRoom / kMostRoom <= nBytes) text.swap(*pKept);
    delete pKept;
  }
  if (nBytes >= kFewestHugeBytes && text.capacity() < nBytes) MakeHuge(text, nBytes);
}

void KeptBlocks::GiveText(std::string& text) noexcept {
  const std::size_t nRoom = text.capacity();
  if (kSanitized || nRoom < kSmallest || nRoom > kMostBytes || UnderMemcheck()) return;
  auto* const pText = new (std::nothrow) std::string(std::move(text));
  if (pText == nullptr) return;
  delete ExchangeText(pText);
}

// The objects have blocks.
void KeptBlocks::Release() noexcept {
  KeptObjects::Release();
  store.bReleaseAsked = true;
  ReleaseIfAsked();
}

}  // namespace memory

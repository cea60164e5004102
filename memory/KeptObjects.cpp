// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The places of the kept objects.

#include "memory/KeptObjects.h"

#include <atomic>
#include <cstdint>

#include "memory/Checkers.h"

namespace memory {
namespace {

// Stacks of threads lie side by side, most of them this far apart.
constexpr std::uintptr_t kStackBytes = std::uintptr_t{8} << 20;

constexpr std::size_t kCacheLine = 64;

// Each place has a cache line to itself. All of it is constant to begin with and needs no
// destruction, so that objects of static storage may use it before and after anything else.
struct alignas(kCacheLine) Place {
  std::atomic<void*> pObject{nullptr};
};
Place aPlaces[KeptObjects::kPlaces];
std::atomic<KeptObjects::Destroy> destroyObject{nullptr};
std::atomic<bool> bClosed{false};

std::atomic<void*>& Here() noexcept {
  const char cOnStack = 0;
  const auto nAddress = reinterpret_cast<std::uintptr_t>(&cOnStack);
  return aPlaces[nAddress / kStackBytes % KeptObjects::kPlaces].pObject;
}

}  // namespace

void* KeptObjects::Take() noexcept {
  std::atomic<void*>& pHere = Here();
  return pHere.load(std::memory_order_relaxed) != nullptr ? pHere.exchange(nullptr) : nullptr;
}

bool KeptObjects::Keep(void* pObject, Destroy destroy) noexcept {
  if (kSanitized || bClosed.load(std::memory_order_relaxed) || UnderMemcheck()) return false;
  destroyObject.store(destroy, std::memory_order_relaxed);
  void* pNone = nullptr;
  return Here().compare_exchange_strong(pNone, pObject);
}

void KeptObjects::Release() noexcept {
  for (Place& place : aPlaces) {
    if (void* const pObject = place.pObject.exchange(nullptr)) destroyObject.load()(pObject);
  }
}

void KeptObjects::Close() noexcept {
  bClosed = true;
  Release();
}

}  // namespace memory

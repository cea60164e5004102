// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Growth of the storage behind a sequence.

#include "json/Items.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "json/JSONValue.h"
#include "memory/Spare.h"

namespace JSON {
namespace {

// A sequence that starts to fill gets room for this many items.
constexpr std::size_t kFirstCapacity = 4;

// Ordinals are ints, so nothing grows beyond this.
constexpr std::size_t kMostItems = INT_MAX;

}  // namespace

// Moves `items` to storage for `nCapacity` of them. The items are moved as bytes: none of them
// holds a pointer to itself, and none is destroyed one by one.
template <typename T>
void Items::Grow(Sequence<T>& items, Arena* pArena, std::size_t nCapacity) {
  // Where bytes have 64-bit counts, the second says nothing new.
  // NOLINTNEXTLINE(misc-redundant-expression)
  if (nCapacity > kMostItems || nCapacity > SIZE_MAX / sizeof(T)) {
    throw std::bad_alloc();
  }
  const std::size_t nBytes = nCapacity * sizeof(T);
  const bool bPool = pArena != nullptr;
  if (bPool && items.eHome == Home::kPool &&
      pArena->Resize(items.pItems, items.nCapacity * sizeof(T), nBytes)) {
    items.nCapacity = static_cast<std::uint32_t>(nCapacity);
    return;
  }
  T* const pItems = static_cast<T*>(bPool ? pArena->Allocate(nBytes) : ::operator new(nBytes));
  if (items.nSize != 0) {
    // NOLINTNEXTLINE(bugprone-undefined-memory-manipulation): as said above
    std::memcpy(static_cast<void*>(pItems), static_cast<const void*>(items.pItems),
                items.nSize * sizeof(T));
  }
  if (items.eHome == Home::kHeap) ::operator delete(items.pItems);
  items.pItems = pItems;
  items.nCapacity = static_cast<std::uint32_t>(nCapacity);
  items.eHome = bPool ? Home::kPool : Home::kHeap;
  items.bHandedOut = items.bHandedOut || !bPool;
}

// Twice the room there was, or what is needed when that is more; less when memory runs out.
template <typename T>
void Items::GrowAhead(Sequence<T>& items, Arena* pArena, std::size_t nCount) {
  const std::size_t nDouble = std::min(std::size_t{items.nSize} * 2, kMostItems);
  const std::size_t nAhead = std::max({nCount, nDouble, kFirstCapacity});
  memory::WithSpare(nCount, nAhead - nCount,
                    [&](std::size_t nCapacity) { Grow(items, pArena, nCapacity); });
}

template <typename T>
void Items::TrimRoom(Sequence<T>& items, Arena* pArena) noexcept {
  if (pArena != nullptr && items.nSize != 0 &&
      pArena->Resize(items.pItems, items.nCapacity * sizeof(T), items.nSize * sizeof(T))) {
    items.nCapacity = items.nSize;
  }
}

template <typename T>
void Sequence<T>::Detach() {
  Items::Grow(*this, nullptr, nSize);
}

template void Sequence<UnsafeJSONValue>::Detach();
template void Sequence<ObjectValue::NameMap>::Detach();
template void Sequence<ArrayValue::OrdinalMap>::Detach();

template void Items::Grow(Sequence<UnsafeJSONValue>&, Arena*, std::size_t);
template void Items::Grow(Sequence<ObjectValue::NameMap>&, Arena*, std::size_t);
template void Items::Grow(Sequence<ArrayValue::OrdinalMap>&, Arena*, std::size_t);
template void Items::GrowAhead(Sequence<UnsafeJSONValue>&, Arena*, std::size_t);
template void Items::GrowAhead(Sequence<ObjectValue::NameMap>&, Arena*, std::size_t);
template void Items::GrowAhead(Sequence<ArrayValue::OrdinalMap>&, Arena*, std::size_t);
template void Items::TrimRoom(Sequence<UnsafeJSONValue>&, Arena*) noexcept;

}  // namespace JSON

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Growth and release of the storage behind a tree.

#include "json/Storage.h"

#include <algorithm>
#include <type_traits>

namespace JSON {
namespace {

// A container that starts to fill gets room for this many items.
constexpr std::size_t kFirstCapacity = 4;

// Ordinals are ints, so nothing grows beyond this.
constexpr std::size_t kMostItems = INT_MAX;

}  // namespace

// Moves `items` to storage for `nCapacity` of them. The items are moved as bytes: none of them
// holds a pointer to itself, and none is destroyed one by one.
template <typename T>
void Storage::Grow(Sequence<T>& items, std::size_t nCapacity, Arena* pArena) {
  // Where bytes have 64-bit counts, the second says nothing new.
  // NOLINTNEXTLINE(misc-redundant-expression)
  if (nCapacity > kMostItems || nCapacity > (SIZE_MAX - kHeader) / sizeof(T)) {
    throw std::bad_alloc();
  }
  const std::size_t nBytes = nCapacity * sizeof(T);
  char* pRoom = nullptr;
  if (pArena == nullptr) {
    pRoom = static_cast<char*>(::operator new(kHeader + nBytes));
  } else if (items.nCapacity != 0 &&
             pArena->Resize(items.pItems, items.nCapacity * sizeof(T), nBytes)) {
    items.nCapacity = static_cast<std::uint32_t>(nCapacity) & 0x7FFFFFFFu;
    return;
  } else {
    pRoom = static_cast<char*>(pArena->Allocate(kHeader + nBytes));
  }
  // The room is kHeader + nBytes long, and kHeader keeps the alignment.
  new (pRoom) Arena*(pArena);
  T* const pItems = reinterpret_cast<T*>(pRoom + kHeader);
  if (items.nSize != 0) {
    // NOLINTNEXTLINE(bugprone-undefined-memory-manipulation): as said above
    std::memcpy(static_cast<void*>(pItems), static_cast<const void*>(items.pItems),
                items.nSize * sizeof(T));
  }
  const std::uint32_t nSize = items.nSize;
  FreeItems(items);
  items.pItems = pItems;
  items.nSize = nSize;
  items.nCapacity = static_cast<std::uint32_t>(nCapacity) & 0x7FFFFFFFu;
  items.bOnHeap = pArena == nullptr ? 1 : 0;
}

template <typename T>
void Storage::GrowForOne(Sequence<T>& items, Arena* pArena) {
  const std::size_t nSize = items.nSize;
  if (nSize >= kMostItems) {
    throw std::bad_alloc();
  }
  Grow(items, std::min(std::max(nSize * 2, kFirstCapacity), kMostItems), pArena);
}

// Borrowed storage lies in a pool, which from now on may own heap memory: the copy made here, and
// whatever the caller is about to put into it.
template <typename T>
void Sequence<T>::Detach() {
  Arena* const pArena = Storage::ArenaBefore(pItems);
  Storage::Grow(*this, nSize, nullptr);
  Storage::NoteHeapIn(pArena);
}

template void Sequence<UnsafeJSONValue>::Detach();
template void Sequence<ObjectValue::NameMap>::Detach();
template void Sequence<ArrayValue::OrdinalMap>::Detach();

template void Storage::Grow(Sequence<UnsafeJSONValue>&, std::size_t, Arena*);
template void Storage::Grow(Sequence<ObjectValue::NameMap>&, std::size_t, Arena*);
template void Storage::Grow(Sequence<ArrayValue::OrdinalMap>&, std::size_t, Arena*);
template void Storage::GrowForOne(Sequence<UnsafeJSONValue>&, Arena*);
template void Storage::GrowForOne(Sequence<ObjectValue::NameMap>&, Arena*);

void Storage::Release(CompositeValue* pComposite) noexcept {
  if (pComposite == nullptr) {
    return;
  }
  pComposite->Clear();
  if (!pComposite->bInArena) {
    delete pComposite;
  }
}

void Storage::TrimRoom(ArrayValue& array) noexcept {
  Sequence<UnsafeJSONValue>& values = array.vValues;
  if (array.pArena == nullptr || values.nSize == 0) {
    return;
  }
  if (array.pArena->Resize(values.pItems, values.nCapacity * sizeof(UnsafeJSONValue),
                           values.nSize * sizeof(UnsafeJSONValue))) {
    values.nCapacity = values.nSize & 0x7FFFFFFFu;
  }
}

Arena* Storage::ArenaOfElement(const JSONValue& value) noexcept {
  const UnsafeJSONValue* pElement = static_cast<const UnsafeJSONValue*>(&value);
  while (pElement->nWayBack != kFront) {
    pElement -= std::size_t{1} << (pElement->nWayBack - 1);  // an element before it, item 0 at last
  }
  return ArenaBefore(pElement);
}

}  // namespace JSON

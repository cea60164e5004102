// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Growth of the storage behind a sequence.

#include "json/Items.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "json/JSONValue.h"
#include "memory/KeptBlocks.h"
#include "memory/Spare.h"

namespace JSON {
namespace {

// A sequence that starts to fill gets room for this many items.
constexpr std::size_t kFirstCapacity = 4;

// Room for this many more, at least, is made for items that move to the heap.
constexpr std::size_t kFirstSpare = 6;

// Ordinals are ints, so nothing grows beyond this.
constexpr std::size_t kMostItems = INT_MAX;

// The items are moved as bytes: none of them holds a pointer to itself, and none is destroyed one
// by one.
template <typename T>
void MoveItems(T* pTo, const T* pFrom, std::size_t nCount) {
  if (nCount == 0) return;
  // NOLINTNEXTLINE(bugprone-undefined-memory-manipulation): as said above
  std::memcpy(static_cast<void*>(pTo), static_cast<const void*>(pFrom), nCount * sizeof(T));
}

// The block for so many items, which is one that is kept when it is released, if it is large.
template <typename T>
std::size_t BlockSize(std::size_t nCapacity) {
  return memory::KeptBlocks::SizeFor(HeapBlock<T>::kBytesBefore + nCapacity * sizeof(T));
}

}  // namespace

template <typename T>
void Items::ReleaseBlock(Sequence<T>& items) noexcept {
  HeapBlock<T>::Close(items.pItems);
  memory::KeptBlocks::Give(reinterpret_cast<char*>(items.pItems) - HeapBlock<T>::kBytesBefore,
                           BlockSize<T>(items.nCapacity));
}

// The block's size follows from the capacity again, since less than an item is left of it.
template <typename T>
void Items::GrowOnHeap(Sequence<T>& items, std::size_t nCapacity) {
  const std::size_t nBytes = BlockSize<T>(nCapacity);
  char* const pBlock = static_cast<char*>(memory::KeptBlocks::Take(nBytes));
  HeapBlock<T>::Open(pBlock);
  T* const pItems = reinterpret_cast<T*>(pBlock + HeapBlock<T>::kBytesBefore);
  MoveItems(pItems, items.pItems, items.nSize);
  if (items.eHome == Home::kHeap) {
    HeapBlock<T>::PassOn(items.pItems, pItems);
    ReleaseBlock(items);
  }
  items.pItems = pItems;
  items.nCapacity = static_cast<std::uint32_t>((nBytes - HeapBlock<T>::kBytesBefore) / sizeof(T));
  items.eHome = Home::kHeap;
}

// Moves `items` to storage for `nCapacity` of them, or more.
template <typename T>
void Items::Grow(Sequence<T>& items, Arena* pArena, std::size_t nCapacity) {
  // Where bytes have 64-bit counts, the second says nothing new.
  // NOLINTNEXTLINE(misc-redundant-expression)
  if (nCapacity > kMostItems || nCapacity > SIZE_MAX / sizeof(T)) {
    throw std::bad_alloc();
  }
  if (pArena == nullptr) {
    GrowOnHeap(items, nCapacity);
    return;
  }
  const std::size_t nBytes = nCapacity * sizeof(T);
  if (items.eHome != Home::kPool ||
      !pArena->Resize(items.pItems, items.nCapacity * sizeof(T), nBytes)) {
    T* const pItems = static_cast<T*>(pArena->Allocate(nBytes));
    MoveItems(pItems, items.pItems, items.nSize);
    items.pItems = pItems;
    items.eHome = Home::kPool;
  }
  items.nCapacity = static_cast<std::uint32_t>(nCapacity);
}

// Twice the room there was, or what is needed when that is more; less when memory runs out. Items
// that were parsed and move to the heap mostly get one or two more, and no more after that.
template <typename T>
void Items::GrowAhead(Sequence<T>& items, Arena* pArena, std::size_t nCount) {
  const bool bMoves = pArena == nullptr && items.eHome != Home::kHeap;
  const std::size_t nSpare =
      bMoves ? std::max(std::size_t{items.nSize} / 2, kFirstSpare) : std::size_t{items.nSize};
  const std::size_t nMore = std::min(items.nSize + nSpare, kMostItems);
  const std::size_t nAhead = std::max({nCount, nMore, kFirstCapacity});
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
template void Items::ReleaseBlock(Sequence<UnsafeJSONValue>&) noexcept;
template void Items::ReleaseBlock(Sequence<ObjectValue::NameMap>&) noexcept;
template void Items::ReleaseBlock(Sequence<ArrayValue::OrdinalMap>&) noexcept;
template void Items::GrowAhead(Sequence<UnsafeJSONValue>&, Arena*, std::size_t);
template void Items::GrowAhead(Sequence<ObjectValue::NameMap>&, Arena*, std::size_t);
template void Items::GrowAhead(Sequence<ArrayValue::OrdinalMap>&, Arena*, std::size_t);
template void Items::TrimRoom(Sequence<UnsafeJSONValue>&, Arena*) noexcept;

}  // namespace JSON

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The library's side of a Sequence: growth, sharing and release of its storage. Storage has one of
// four homes:
//
//   kNone ----> kPool      the message reads or copies: items lie in its pool, and grow there
//   kPool ----> kShared    names that siblings use as well
//   kNone ----> kHeap      a container without a pool
//   kPool, kShared -----> kHeap    whatever changes later: it is copied and grows on the heap
//   each of them -------> kNone    released
//
// A message fills its pool only while it parses or receives a copy. What grows later grows on the
// heap: the pool holds nothing that updates could waste again and again.
//
// Invariants, kept by the functions here:
//   1. kNone:   there are no items and no capacity.
//   2. kShared: the capacity is 0, so whatever adds an item makes a copy first.
//   3. kHeap:   the items count as handed out, so their release is never skipped. Whether somebody
//               looked at them is only of interest to the finder of names (json/NameFinder.h),
//               which a heap block of names leads to.

#ifndef QXRECORDSET_JSON_ITEMS_H
#define QXRECORDSET_JSON_ITEMS_H

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

#include "json/Arena.h"
#include "json/JSONValue.h"
#include "json/Sequence.h"
#include "text/Block.h"

namespace JSON {

// A block of items on the heap: before the items stands what belongs to all of them.
template <typename T>
struct HeapBlock {
  static constexpr std::size_t kBytesBefore = 0;
  static void Open(void* /*pBlock*/) noexcept {}
  static void PassOn(T* /*pFrom*/, T* /*pTo*/) noexcept {}
  static void Close(T* /*pItems*/) noexcept {}
};

// Names have a finder, which is released with them.
template <>
struct HeapBlock<ObjectValue::NameMap> {
  using NameMap = ObjectValue::NameMap;
  static constexpr std::size_t kBytesBefore = sizeof(void*);
  static_assert(alignof(NameMap) <= kBytesBefore);

  static NameFinder*& Finder(NameMap* pNames) noexcept {
    return reinterpret_cast<NameFinder**>(pNames)[-1];
  }
  static void Open(void* pBlock) noexcept { *static_cast<NameFinder**>(pBlock) = nullptr; }
  static void PassOn(NameMap* pFrom, NameMap* pTo) noexcept {
    std::swap(Finder(pFrom), Finder(pTo));
  }
  static void Close(NameMap* pNames) noexcept;
};

class Items {
 public:
  // ---- Reading; none of these hands the items out -----------------------------------------------

  template <typename T>
  static T* Data(const Sequence<T>& items) noexcept {
    return items.pItems;
  }
  template <typename T>
  static std::uint32_t Count(const Sequence<T>& items) noexcept {
    return items.nSize;
  }
  template <typename T>
  static bool AreShared(const Sequence<T>& items) noexcept {
    return items.eHome == Home::kShared;
  }
  template <typename T>
  static bool AreOnHeap(const Sequence<T>& items) noexcept {
    return items.eHome == Home::kHeap;
  }
  template <typename T>
  static bool AreHandedOut(const Sequence<T>& items) noexcept {
    return items.bHandedOut || items.eHome == Home::kHeap;
  }

  // Whether nobody had access to the items since Borrow().
  template <typename T>
  static bool AreBorrowed(const Sequence<T>& items) noexcept {
    return !items.bHandedOut && items.eHome == Home::kHeap;
  }

  // ---- Changing ---------------------------------------------------------------------------------

  // The items, for a caller that may make them own heap memory.
  template <typename T>
  static T* HandOut(const Sequence<T>& items) noexcept {
    items.bHandedOut = true;
    return items.pItems;
  }

  // The same as storage that this sequence alone may change.
  template <typename T>
  static T* Own(Sequence<T>& items) {
    if (items.eHome == Home::kShared) items.Detach();
    return items.pItems;
  }

  // Moves the items to the heap, if they are not there.
  template <typename T>
  static void MoveToHeap(Sequence<T>& items) {
    if (items.eHome != Home::kHeap) items.Detach();
  }

  // Forgets that items on the heap were handed out, to see whether they will be.
  template <typename T>
  static void Borrow(const Sequence<T>& items) noexcept {
    assert(items.eHome == Home::kHeap);
    items.bHandedOut = false;
  }

  // Room for `nCount` items in all, in the pool or, when there is none, on the heap. The second one
  // makes more than that, so that items added one by one are moved a bounded number of times each.
  template <typename T>
  static void Reserve(Sequence<T>& items, Arena* pArena, std::size_t nCount) {
    if (nCount > items.nCapacity) Grow(items, pArena, nCount);
  }
  template <typename T>
  QXRECORDSET_HOT static void ReserveAhead(Sequence<T>& items, Arena* pArena, std::size_t nCount) {
    if (nCount > items.nCapacity) GrowAhead(items, pArena, nCount);
  }

  // One more item, made from the arguments.
  template <typename T, typename... Arguments>
  static T& Append(Sequence<T>& items, Arena* pArena, Arguments&&... arguments) {
    ReserveAhead(items, pArena, items.nSize + std::size_t{1});
    return AppendInRoom(items, std::forward<Arguments>(arguments)...);
  }

  // The same where there is room. REQUIRES: the capacity is more than the items use.
  template <typename T, typename... Arguments>
  QXRECORDSET_HOT static T& AppendInRoom(Sequence<T>& items, Arguments&&... arguments) {
    assert(items.nSize < items.nCapacity);
    return Make(items.pItems + items.nSize++, std::forward<Arguments>(arguments)...);
  }

  // The same for several: each is made where it is going to lie, and then all of them are counted.
  // REQUIRES: there is room for them.
  template <typename T, typename... Arguments>
  QXRECORDSET_HOT static T& Make(T* pItem, Arguments&&... arguments) {
    return *new (pItem) T(std::forward<Arguments>(arguments)...);
  }
  template <typename T>
  QXRECORDSET_HOT static void TakeIn(Sequence<T>& items, std::size_t nCount) noexcept {
    assert(nCount <= items.nCapacity - std::size_t{items.nSize});
    items.nSize += static_cast<std::uint32_t>(nCount);
  }

  // Removes items from the end; the room stays. REQUIRES: there are as many.
  template <typename T>
  static void Truncate(Sequence<T>& items, std::size_t nCount) noexcept {
    assert(nCount <= items.nSize);
    items.nSize = static_cast<std::uint32_t>(nCount);
  }

  // Gives back the room beyond the items when it lies at the end of the pool.
  template <typename T>
  static void Trim(Sequence<T>& items, Arena* pArena) noexcept {
    if (items.nCapacity != items.nSize && items.eHome == Home::kPool) TrimRoom(items, pArena);
  }

  // From now on the items, which lie in the pool, may be shared.
  template <typename T>
  static void Lend(Sequence<T>& items) noexcept {
    assert(items.eHome == Home::kPool && !items.bHandedOut);
    items.eHome = Home::kShared;
    items.nCapacity = 0;
  }

  // Uses items that a sibling in the same pool lent. REQUIRES: there is no storage.
  template <typename T>
  static void Share(Sequence<T>& items, T* pItems, std::size_t nCount) noexcept {
    assert(items.eHome == Home::kNone);
    items.pItems = pItems;
    items.nSize = static_cast<std::uint32_t>(nCount);
    items.eHome = Home::kShared;
  }

  // Gives up the storage. What the items own is the caller's business.
  template <typename T>
  static void Free(Sequence<T>& items) noexcept {
    if (items.eHome == Home::kHeap) ReleaseBlock(items);
    items.pItems = nullptr;
    items.nSize = 0;
    items.nCapacity = 0;
    items.eHome = Home::kNone;
    items.bHandedOut = false;
  }

 private:
  template <typename T>
  friend class Sequence;

  template <typename T>
  static void Grow(Sequence<T>& items, Arena* pArena, std::size_t nCapacity);
  template <typename T>
  static void GrowOnHeap(Sequence<T>& items, std::size_t nCapacity);
  template <typename T>
  static void ReleaseBlock(Sequence<T>& items) noexcept;
  template <typename T>
  static void GrowAhead(Sequence<T>& items, Arena* pArena, std::size_t nCount);
  template <typename T>
  static void TrimRoom(Sequence<T>& items, Arena* pArena) noexcept;
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_ITEMS_H

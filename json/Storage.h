// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Where a tree lies in memory, and who releases it: the library's side of Sequence, of the
// containers and of the way back in a JSONValue.
//
// A container that the parser makes for a message lies in the message's pool (json/Arena.h) with
// its elements; one made otherwise lies on the heap. Arrays in the pool carry the pool's address in
// the word before their first item:
//
//   | Arena* | item 0 | item 1 | ... |
//
// An element finds item 0 (JSONValue::nWayBack) and with it the pool: that is how a pool learns
// that its tree has come to own heap memory, without a pointer in every element. The member names
// of a container in the pool are borrowed storage: sibling objects may share them, so they are
// copied to the heap before anybody changes them.

#ifndef QXRECORDSET_JSON_STORAGE_H
#define QXRECORDSET_JSON_STORAGE_H

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

#include "json/Arena.h"
#include "json/JSONValue.h"
#include "text/Block.h"

namespace JSON {

class Storage {
 public:
  using NameMap = ObjectValue::NameMap;

  // ---- Containers -------------------------------------------------------------------------------

  // A new empty container with room for `nReserve` elements. In the pool this is one step, and the
  // elements lie right behind their container; without a pool it is made with new.
  template <typename Container>
  static Container* Make(Arena* pArena, std::uint32_t nReserve) {
    if (pArena == nullptr) {
      return new Container(static_cast<int>(nReserve));
    }
    constexpr std::size_t nContainer =
        (sizeof(Container) + Arena::kAlignment - 1) / Arena::kAlignment * Arena::kAlignment;
    const std::size_t nRoom = nReserve != 0 ? kHeader + nReserve * sizeof(UnsafeJSONValue) : 0;
    char* const p = static_cast<char*>(pArena->Allocate(nContainer + nRoom));
    UnsafeJSONValue* pItems = nullptr;
    if (nReserve != 0) {
      // The room that was just taken, behind the container; all its parts keep the alignment.
      new (p + nContainer) Arena*(pArena);
      pItems = reinterpret_cast<UnsafeJSONValue*>(p + nContainer + kHeader);
    }
    return new (p) Container(pArena, true, pItems, nReserve);
  }

  // Releases a container and everything it owns.
  static void Release(CompositeValue* pComposite) noexcept;

  static bool InArena(const CompositeValue& composite) { return composite.bInArena; }
  static Arena* ArenaOf(const ArrayValue& array) { return array.pArena; }

  // An empty container in a rewound pool has lost its storage.
  static void Forget(ArrayValue& array) noexcept {
    Forget(array.vValues);
    FreeItems(array.vOrdinalMap);
  }
  static void Forget(ObjectValue& object) noexcept {
    Forget(object.avValues);
    FreeItems(object.vNameMap);
  }

  // ---- Elements ---------------------------------------------------------------------------------

  // Room for `nCount` elements in all, and one more element, built from the arguments.
  static void Reserve(ArrayValue& array, std::size_t nCount) {
    if (nCount > array.vValues.nCapacity) {
      Grow(array.vValues, nCount, array.pArena);
    }
  }
  static UnsafeJSONValue& Append(ArrayValue& array, Type type, const char* pText, int nLength,
                                 int nNameIndex, CompositeValue* pComposite) {
    Sequence<UnsafeJSONValue>& values = array.vValues;
    if (values.nSize == values.nCapacity) {
      GrowForOne(values, array.pArena);
    }
    const std::uint32_t nOrdinal = values.nSize++;
    return *new (values.pItems + nOrdinal)
        UnsafeJSONValue(type, pText, nLength, nNameIndex, pComposite, WayBack(nOrdinal));
  }

  // Gives back the room beyond the elements when it lies at the end of the pool.
  static void Trim(ArrayValue& array) noexcept {
    if (array.vValues.nCapacity != array.vValues.nSize) {
      TrimRoom(array);
    }
  }

  // Removes all items; the room stays.
  template <typename T>
  static void Truncate(Sequence<T>& items) noexcept {
    items.nSize = 0;
  }

  // ---- Names and the string index ---------------------------------------------------------------

  static void AppendName(ObjectValue& object, const NameMap& name) {
    ReserveNameForOne(object);
    Sequence<NameMap>& names = object.vNameMap;
    new (names.pItems + names.nSize++) NameMap(name);
  }
  static void ReserveNameForOne(ObjectValue& object) {
    if (object.vNameMap.nSize >= object.vNameMap.nCapacity) {
      GrowForOne(object.vNameMap, object.avValues.pArena);
    }
  }
  static void ReserveNames(ObjectValue& object, std::size_t nCount) {
    if (nCount > object.vNameMap.nCapacity) {
      Grow(object.vNameMap, nCount, object.avValues.pArena);
    }
  }

  // `nCount` names in place of those there are, for the caller to fill.
  static NameMap* NewNames(ObjectValue& object, std::size_t nCount) {
    ReserveNames(object, nCount);
    object.vNameMap.nSize = static_cast<std::uint32_t>(nCount);
    for (std::size_t i = 0; i < nCount; ++i) {
      new (object.vNameMap.pItems + i) NameMap;
    }
    return object.vNameMap.pItems;
  }

  // The names as they lie in memory, for readers and for the library's own index work.
  static NameMap* Names(const ObjectValue& object) { return object.vNameMap.pItems; }
  static std::size_t NameCount(const ObjectValue& object) { return object.vNameMap.nSize; }
  static std::uint32_t Count(const ArrayValue& array) { return array.vValues.nSize; }
  static std::uint32_t Count(const ObjectValue& object) { return object.avValues.vValues.nSize; }
  static UnsafeJSONValue* Values(const ArrayValue& array) { return array.vValues.pItems; }
  static bool BorrowsNames(const ObjectValue& object) {
    return object.vNameMap.nCapacity < object.vNameMap.nSize;
  }

  // Makes `object` use `nCount` names that lie in its pool, as borrowed storage.
  static void BorrowNames(const ObjectValue& object, NameMap* pNames, std::size_t nCount) noexcept {
    FreeItems(object.vNameMap);
    object.vNameMap.pItems = pNames;
    object.vNameMap.nSize = static_cast<std::uint32_t>(nCount);
    object.vNameMap.nCapacity = 0;
    object.vNameMap.bOnHeap = 0;
  }

  // From now on names that lie in the pool may be shared, and are changed in a copy only.
  static void LendNames(const ObjectValue& object) noexcept {
    if (object.bInArena && object.vNameMap.bOnHeap == 0) {
      object.vNameMap.nCapacity = 0;
    }
  }

  // Names that the object alone may change.
  static NameMap* OwnNames(const ObjectValue& object) { return object.vNameMap.Own(); }

  // Removes all names. Their room stays, unless it is on the heap and the object in a pool: then
  // nobody would release it.
  static void RemoveNames(ObjectValue& object) noexcept {
    if (object.bInArena) {
      FreeItems(object.vNameMap);
    }
    Truncate(object.vNameMap);
  }

  // Releases the names' storage; the entries' own texts are the caller's business.
  static void FreeNames(ObjectValue& object) noexcept { FreeItems(object.vNameMap); }
  static void CutNames(const ObjectValue& object, std::size_t nCount) noexcept {
    object.vNameMap.nSize = static_cast<std::uint32_t>(nCount);
  }

  // REQUIRES: room for the entry.
  static void AppendEntry(const ArrayValue& array, const ArrayValue::OrdinalMap& entry) {
    Sequence<ArrayValue::OrdinalMap>& entries = array.vOrdinalMap;
    new (entries.pItems + entries.nSize++) ArrayValue::OrdinalMap(entry);
  }
  static void ReserveEntries(const ArrayValue& array, std::size_t nCount) {
    if (nCount > array.vOrdinalMap.nCapacity) {
      Grow(array.vOrdinalMap, nCount, array.pArena);
    }
  }

  // Releases the storage of all of a container's sequences.
  static void FreeAll(ArrayValue& array) noexcept {
    FreeItems(array.vValues);
    FreeItems(array.vOrdinalMap);
  }

  // ---- Heap memory owned from within a pool -----------------------------------------------------

  static void NoteHeapIn(Arena* pArena) noexcept {
    if (pArena != nullptr) {
      pArena->bOwnsHeap = true;
    }
  }
  // The value, wherever it lies, is about to own heap memory.
  static void NoteHeapAt(const JSONValue& value) noexcept {
    if (value.nWayBack != 0) {
      NoteHeapIn(ArenaOfElement(value));
    }
  }

  // A private copy of a text (null for null), as values and names own it: released with delete[].
  static char* CopyText(const char* pText, std::size_t nLength) {
    char* const pCopy = new char[nLength + 1];
    std::memcpy(pCopy, pText, nLength);
    pCopy[nLength] = '\0';
    return pCopy;
  }

 private:
  template <typename T>
  friend class Sequence;

  // The way from an element to item 0 goes in steps: to the ordinal without its lowest one bit, and
  // so on. An element keeps the number of that bit, plus one; item 0 keeps kFront.
  static constexpr std::uint8_t kFront = 32;
  static std::uint8_t WayBack(std::uint32_t nOrdinal) {
    return static_cast<std::uint8_t>(1 + LowestBit(nOrdinal | 1u << (kFront - 1)));
  }
  static void TrimRoom(ArrayValue& array) noexcept;
  static Arena* ArenaOfElement(const JSONValue& value) noexcept;

  // The word that Grow() puts before items in a pool.
  static constexpr std::size_t kHeader = Arena::kAlignment;
  static Arena* ArenaBefore(const void* pItems) noexcept {
    return *reinterpret_cast<Arena* const*>(static_cast<const char*>(pItems) - kHeader);
  }

  template <typename T>
  static void Grow(Sequence<T>& items, std::size_t nCapacity, Arena* pArena);
  template <typename T>
  static void GrowForOne(Sequence<T>& items, Arena* pArena);

  template <typename T>
  static void Forget(Sequence<T>& items) noexcept {
    items.pItems = nullptr;
    items.nSize = 0;
    items.nCapacity = 0;
    items.bOnHeap = 0;
  }
  template <typename T>
  static void FreeItems(Sequence<T>& items) noexcept {
    if (items.bOnHeap != 0) {
      // Grow() allocated the items with kHeader bytes in front.
      ::operator delete(reinterpret_cast<char*>(items.pItems) - kHeader);
    }
    Forget(items);
  }
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_STORAGE_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Searching names that are not sorted; their hash table has open addressing.

#include "json/NameFinder.h"

#include <cassert>
#include <cstring>
#include <new>

#include "json/NameOrder.h"
#include "text/ShortBytes.h"

namespace JSON {

void HeapBlock<ObjectValue::NameMap>::Close(NameMap* pNames) noexcept { delete Finder(pNames); }

namespace {

using NameMap = ObjectValue::NameMap;

// Most names hold no NUL, and names of the same length are then equal when their bytes are.
bool IsPlain(const char* name, int nLength) noexcept {
  return nLength == 0 || std::memchr(name, '\0', static_cast<std::size_t>(nLength)) == nullptr;
}

// The first in document order of the names from pName on.
int LookThrough(const NameMap* pName, const NameMap* pEnd, const char* name, int nLength,
                bool bPlain) noexcept {
  const auto nBytes = static_cast<std::size_t>(nLength);
  const NameMap* pFound = nullptr;
  for (; pName != pEnd; ++pName) {
    if (pName->nLength != nLength) continue;
    const bool bSame = bPlain ? SameBytes(pName->pName, name, nBytes)
                              : CompareNames(pName->pName, nLength, name, nLength) == 0;
    if (bSame && (pFound == nullptr || pName->nOrdinal < pFound->nOrdinal)) pFound = pName;
  }
  return pFound != nullptr ? pFound->nOrdinal : -1;
}

}  // namespace

// ---- States -------------------------------------------------------------------------------------

// Whether the state is that one, and nobody had access to the names meanwhile.
bool NameFinder::Is(const ObjectValue& object, std::uint32_t nState) noexcept {
  return object.bSorted.eState == nState && Items::AreBorrowed(object.vNameMap);
}

bool NameFinder::HasFewNew(const ObjectValue& object) noexcept {
  return Is(object, Order::kGrown) && CountNew(object) <= kFewNames;
}

int NameFinder::Find(const ObjectValue& object, const char* name, int nLength) {
  if (HasFewNew(object)) return FindGrown(object, name, nLength, IsPlain(name, nLength));
  const Sequence<NameMap>& names = object.vNameMap;
  try {
    NameFinder& finder = Current(object);
    const std::uint32_t nHash = finder.HashOf(name, nLength);
    Slot& slot = finder.SlotFor(Items::Data(names), nHash, name, nLength);
    if (slot.nPlace != 0) return Items::Data(names)[slot.nPlace - 1].nOrdinal;
    finder.nMissed_ = nHash;
    finder.pFree_ = &slot;
    return -1;
  } catch (const std::bad_alloc&) {
    const NameMap* const pNames = Items::Data(names);
    return LookThrough(pNames, pNames + Items::Count(names), name, nLength, IsPlain(name, nLength));
  }
}

int NameFinder::FindOrMiss(const ObjectValue& object, const char* name, int nLength) {
  const bool bFew = Items::Count(object.vNameMap) <= kFewNames;
  if (bFew && HasFewNew(object)) {
    const int nFound = FindGrown(object, name, nLength, true);
    if (nFound >= 0) object.Sort();
    return nFound;
  }
  return bFew || object.bSorted ? object.ObjectValue::OrdinalOf(name, nLength)
                                : Find(object, name, nLength);
}

int NameFinder::FindGrown(const ObjectValue& object, const char* name, int nLength,
                          bool bPlain) noexcept {
  const NameMap* const pNames = Items::Data(object.vNameMap);
  const NameMap* const pEnd = pNames + Items::Count(object.vNameMap);
  const NameMap* const pNew = pNames + object.bSorted.nOrdered;
  const NameMap* const pFound = FindSorted(pNames, pNew, name, nLength);
  return pFound != nullptr ? pFound->nOrdinal : LookThrough(pNew, pEnd, name, nLength, bPlain);
}

void NameFinder::NoteAppended(ObjectValue& object) noexcept {
  const std::uint32_t nCount = Items::Count(object.vNameMap);
  Order& order = object.bSorted;
  if (Is(object, Order::kSorted)) {
    order.eState = Order::kGrown;
    order.nOrdered = (nCount - 1) & kMostOrdered;
  } else if (Is(object, Order::kHashed)) {
    NameFinder* const pFinder = HeapBlock<NameMap>::Finder(Items::Data(object.vNameMap));
    if (pFinder != nullptr) pFinder->AddMissed(nCount);
  } else if (order) {
    order = false;
  }
  // A name that the object owns has to be found when it is released.
  if (!Items::AreOnHeap(object.vNameMap)) Items::HandOut(object.vNameMap);
}

void NameFinder::Forget(const ObjectValue& object) noexcept {
  Drop(object);
  object.bSorted = static_cast<bool>(object.bSorted);
}

std::uint32_t NameFinder::CountNew(const ObjectValue& object) noexcept {
  const std::uint32_t nCount = Items::Count(object.vNameMap);
  return Is(object, Order::kGrown) ? nCount - object.bSorted.nOrdered : nCount;
}

// ---- The table ----------------------------------------------------------------------------------

void NameFinder::Drop(const ObjectValue& object) noexcept {
  if (!Items::AreOnHeap(object.vNameMap)) return;
  NameFinder*& pFinder = HeapBlock<NameMap>::Finder(Items::Data(object.vNameMap));
  delete pFinder;
  pFinder = nullptr;
}

// The finder of all names, with room for another one.
NameFinder& NameFinder::Current(const ObjectValue& object) {
  Sequence<NameMap>& names = object.vNameMap;
  if (!Is(object, Order::kHashed)) {
    Items::MoveToHeap(names);
    Items::Borrow(names);
    Drop(object);
    object.bSorted.eState = Order::kHashed;
  }
  NameFinder*& pFinder = HeapBlock<NameMap>::Finder(Items::Data(names));
  if (pFinder == nullptr) pFinder = new NameFinder;
  pFinder->pFree_ = nullptr;
  pFinder->MakeRoom();
  while (pFinder->nNames_ < Items::Count(names)) {
    pFinder->Add(Items::Data(names));
    pFinder->MakeRoom();
  }
  return *pFinder;
}

// Bytes behind a NUL do not count, but make a name another one.
std::uint32_t NameFinder::HashOf(const char* name, int nLength) const noexcept {
  const auto nBytes = static_cast<std::size_t>(nLength);
  return hash_(name, nBytes != 0 ? strnlen(name, nBytes) : 0, nBytes);
}

// The slot that holds the name, or the free one where it belongs.
NameFinder::Slot& NameFinder::SlotFor(const NameMap* pNames, std::uint32_t nHash, const char* name,
                                      int nLength) noexcept {
  const std::size_t nMask = vSlots_.size() - 1;
  std::size_t nSlot = nHash & nMask;
  for (;; nSlot = (nSlot + 1) & nMask) {
    Slot& slot = vSlots_[nSlot];
    if (slot.nPlace == 0) return slot;
    const NameMap& entry = pNames[slot.nPlace - 1];
    if (slot.nHash == nHash && CompareNames(entry.pName, entry.nLength, name, nLength) == 0) {
      return slot;
    }
  }
}

// Enters the next name. REQUIRES: room for it.
void NameFinder::Add(const NameMap* pNames) noexcept {
  assert(vSlots_.size() > 2 * (std::size_t{nNames_} + 1));
  const NameMap& entry = pNames[nNames_++];
  const std::uint32_t nHash = HashOf(entry.pName, entry.nLength);
  Slot& slot = SlotFor(pNames, nHash, entry.pName, entry.nLength);
  if (slot.nPlace == 0 || entry.nOrdinal < pNames[slot.nPlace - 1].nOrdinal) {
    slot = {nHash, nNames_};
  }
}

// The last name of nCount is the one that was not found last, unless that was for lack of memory.
void NameFinder::AddMissed(std::uint32_t nCount) noexcept {
  if (pFree_ == nullptr) return;
  assert(nNames_ + 1 == nCount);
  *pFree_ = {nMissed_, nCount};
  pFree_ = nullptr;
  nNames_ = nCount;
}

// Makes the table larger when another name would leave less than half of its slots free.
void NameFinder::MakeRoom() {
  constexpr std::size_t kFirstSlots = 64;
  if (vSlots_.size() > 2 * (std::size_t{nNames_} + 1)) return;
  std::vector<Slot> vOld(vSlots_.empty() ? kFirstSlots : 2 * vSlots_.size());
  vOld.swap(vSlots_);
  const std::size_t nMask = vSlots_.size() - 1;
  for (const Slot& old : vOld) {
    if (old.nPlace == 0) continue;
    std::size_t nSlot = old.nHash & nMask;
    while (vSlots_[nSlot].nPlace != 0) {
      nSlot = (nSlot + 1) & nMask;
    }
    vSlots_[nSlot] = old;
  }
}

}  // namespace JSON

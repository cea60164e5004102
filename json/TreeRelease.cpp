// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The walk takes elements off the end of their array, so an array's last element says how far it
// came. When that element holds a container, the walk enters it, and the element's pComposite leads
// back: it holds the container one level further out until the inner one is done.
//
//   outer  <----+          +--- (current's holder) inner
//   ... | last -+--- ... --+    ... | last
//
// A host's own kinds are released by their own Clear() and destructor.

#include "json/TreeRelease.h"

#include <cassert>
#include <new>
#include <vector>

#include "json/Items.h"
#include "json/Storage.h"

namespace JSON {
namespace {

// Builds with assertions enter what was never handed out, too, to check that it owns nothing.
#ifdef NDEBUG
constexpr bool kEnterAll = false;
#else
constexpr bool kEnterAll = true;
#endif

using Kind = Storage::Kind;

// A host's containers within a host's containers, met while one of them is released, wait until it
// is done, so that their number does not become the depth of the calls. When there is no memory to
// wait in, they are released at once.
void ReleaseForeign(CompositeValue* pComposite) noexcept {
  thread_local std::vector<CompositeValue*>* pWaiting = nullptr;
  if (pWaiting != nullptr) {
    try {
      pWaiting->push_back(pComposite);
      return;
    } catch (const std::bad_alloc&) {
      pComposite->Clear();
      delete pComposite;
      return;
    }
  }
  std::vector<CompositeValue*> waiting;
  pWaiting = &waiting;
  for (CompositeValue* pNext = pComposite; pNext != nullptr;) {
    pNext->Clear();
    delete pNext;
    pNext = waiting.empty() ? nullptr : waiting.back();
    if (pNext != nullptr) waiting.pop_back();
  }
  pWaiting = nullptr;
}

// Whether anything below the container can own heap memory; see Storage.h.
bool MayOwnHeap(CompositeValue& container) noexcept {
  if (!Storage::InPool(container) || Items::AreHandedOut(Storage::ElementsOf(container).vValues)) {
    return true;
  }
  return Storage::KindOf(container) == Kind::kObject &&
         Items::AreHandedOut(static_cast<ObjectValue&>(container).vNameMap);
}

// Takes elements off the end as long as they own nothing. This is what the release of most handed
// out elements comes to, and it reads every one of them, so it does nothing else.
void DropScalars(Sequence<UnsafeJSONValue>& values) noexcept {
  const UnsafeJSONValue* const pValues = Items::Data(values);
  std::uint32_t nLeft = Items::Count(values);
  while (nLeft != 0 && !pValues[nLeft - 1].bOwnsText && pValues[nLeft - 1].pComposite == nullptr) {
    --nLeft;
  }
  Items::Truncate(values, nLeft);
}

// Whether nothing of the container is left to release, once its last scalars are taken off.
bool IsDone(CompositeValue& container) noexcept {
  if (!MayOwnHeap(container) && !kEnterAll) return true;
  if (!Storage::InPool(container)) return false;
  ArrayValue& elements = Storage::ElementsOf(container);
  DropScalars(elements.vValues);
  if (Items::Count(elements.vValues) != 0 || Items::AreOnHeap(elements.vValues) ||
      Items::AreOnHeap(elements.vOrdinalMap)) {
    return false;
  }
  return Storage::KindOf(container) == Kind::kArray ||
         !Items::AreHandedOut(static_cast<ObjectValue&>(container).vNameMap);
}

// Takes elements off the end up to one that holds a container to enter, which is the result; null
// when there are none left.
CompositeValue* DropLeaves(Sequence<UnsafeJSONValue>& values) noexcept {
  UnsafeJSONValue* const pValues = Items::Data(values);
  for (DropScalars(values); Items::Count(values) != 0; DropScalars(values)) {
    UnsafeJSONValue& last = pValues[Items::Count(values) - 1];
    CompositeValue* const pInner = last.pComposite;
    assert(Items::AreHandedOut(values) ||
           (!last.bOwnsText && Storage::InPool(*pInner) && !MayOwnHeap(*pInner)));
    if (pInner != nullptr) {
      if (Storage::KindOf(*pInner) == Kind::kForeign) {
        ReleaseForeign(pInner);
      } else if (!IsDone(*pInner)) {
        return pInner;
      }
    }
    if (last.bOwnsText) delete[] last.pText;
    Items::Truncate(values, Items::Count(values) - 1);
  }
  return nullptr;
}

// Of a container without elements nothing is left: on the heap it is destroyed, in a pool it gives
// up what it has on the heap.
void Dispose(CompositeValue& container) noexcept {
  if (!Storage::InPool(container)) {
    delete &container;
    return;
  }
  ArrayValue& elements = Storage::ElementsOf(container);
  Items::Free(elements.vValues);
  Items::Free(elements.vOrdinalMap);
  if (Storage::KindOf(container) == Kind::kObject) {
    ObjectValue& object = static_cast<ObjectValue&>(container);
    ReleaseNames(object);
    Items::Free(object.vNameMap);
  }
}

}  // namespace

void ReleaseElements(ArrayValue& array) noexcept {
  if (!kEnterAll && !Items::AreHandedOut(array.vValues)) {
    Items::Truncate(array.vValues, 0);
    return;
  }
  CompositeValue* pCurrent = &array;
  CompositeValue* pHolder =
      nullptr;  // of the current container; null: none, or outside of the walk
  for (;;) {
    Sequence<UnsafeJSONValue>& values = Storage::ElementsOf(*pCurrent).vValues;
    if (CompositeValue* const pInner = DropLeaves(values)) {
      Items::Data(values)[Items::Count(values) - 1].pComposite = pHolder;
      pHolder = pCurrent;
      pCurrent = pInner;
      continue;
    }
    if (pCurrent == &array) return;
    Dispose(*pCurrent);
    pCurrent = pHolder;
    const Sequence<UnsafeJSONValue>& outer = Storage::ElementsOf(*pCurrent).vValues;
    UnsafeJSONValue& element = Items::Data(outer)[Items::Count(outer) - 1];
    pHolder = element.pComposite;
    element.pComposite = nullptr;  // the next step takes the element off
  }
}

void ReleaseNames(ObjectValue& object) noexcept {
  Sequence<ObjectValue::NameMap>& names = object.vNameMap;
  if (Items::AreShared(names)) {
    Items::Free(names);  // the entries belong to all who share them, and own nothing
    return;
  }
  if (kEnterAll || Items::AreHandedOut(names)) {
    const ObjectValue::NameMap* const pNames = Items::Data(names);
    for (std::uint32_t i = 0; i < Items::Count(names); ++i) {
      assert(Items::AreHandedOut(names) || !pNames[i].bOwnsName);
      if (pNames[i].bOwnsName) delete[] pNames[i].pName;
    }
  }
  Items::Truncate(names, 0);
}

void Release(CompositeValue* pComposite) noexcept {
  if (pComposite == nullptr) return;
  if (Storage::KindOf(*pComposite) == Kind::kForeign) {
    ReleaseForeign(pComposite);
  } else if (kEnterAll || MayOwnHeap(*pComposite)) {
    ReleaseElements(Storage::ElementsOf(*pComposite));
    Dispose(*pComposite);
  }
}

}  // namespace JSON

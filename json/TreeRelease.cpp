// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Elements are dropped from the end of their array, so the last element is the one to release next.
// When it holds a container, that container is released first; meanwhile the element's pComposite
// holds the container one level further out.
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
#include "json/NameFinder.h"
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

// A host's container that is found while another one is released is put into a list and released
// after it, so that their number does not become the depth of the calls. When there is no memory
// for the list, it is released at once.
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

// Drops elements from the end as long as they own nothing. It reads every element, and most own
// nothing, so it does nothing else.
void DropScalars(Sequence<UnsafeJSONValue>& values) noexcept {
  const UnsafeJSONValue* const pValues = Items::Data(values);
  std::uint32_t nLeft = Items::Count(values);
  while (nLeft != 0 && !pValues[nLeft - 1].bOwnsText && pValues[nLeft - 1].pComposite == nullptr) {
    --nLeft;
  }
  Items::Truncate(values, nLeft);
}

// Whether nothing of the container is left to release once its last scalars are dropped.
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

// Drops elements from the end up to one that holds a container to release first, which is the
// result; null when no element is left.
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
  NameFinder::Forget(object);
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

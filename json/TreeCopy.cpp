// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Copying a tree, container by container, each one whole before the next element of its parent.

#include "json/TreeCopy.h"

#include <algorithm>
#include <memory>
#include <string_view>

#include "json/Items.h"
#include "json/ScalarText.h"
#include "json/Storage.h"
#include "json/TreeRelease.h"

namespace JSON {
namespace {

// A container that is copied to the heap gets room for this many items, at least.
constexpr std::uint32_t kHeapReserve = 4;

void GiveText(JSONValue& value, std::string_view text) {
  value.pText = NewText(text);
  value.nLength = static_cast<int>(text.size());
  value.bOwnsText = true;
}

// The distance of two buffers, which are unrelated, is one of addresses.
std::uintptr_t Address(const void* p) { return reinterpret_cast<std::uintptr_t>(p); }

}  // namespace

TreeCopy::TreeCopy(std::ptrdiff_t nDelta)
    : nFrom_(0),
      nFromSize_(UINTPTR_MAX),
      nDelta_(static_cast<std::uintptr_t>(nDelta)),
      pPool_(nullptr) {}

TreeCopy::TreeCopy(const char* pFrom, const char* pFromEnd, const char* pTo, Arena* pPool)
    : nFrom_(Address(pFrom)),
      nFromSize_(Address(pFromEnd) - Address(pFrom)),
      nDelta_(Address(pTo) - Address(pFrom)),
      pPool_(pPool) {}

// Whether a copy of the text, or no text, is a pointer that moved.
QXRECORDSET_HOT bool TreeCopy::MovesAlong(const char* pText) const {
  return pText == nullptr || Address(pText) - nFrom_ < nFromSize_;
}

QXRECORDSET_HOT const char* TreeCopy::Moved(const char* pText) const {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): as said above
  return pText == nullptr ? nullptr : reinterpret_cast<const char*>(Address(pText) + nDelta_);
}

// ---- Elements -----------------------------------------------------------------------------------

void TreeCopy::Append(const ArrayValue& source, ArrayValue& target) {
  Enter(source, target);
  try {
    Run();
  } catch (...) {
    // The copy is going to be released, and it is not known what the levels already own.
    for (; !levels_.IsEmpty(); levels_.Pop()) {
      Items::HandOut(levels_.Innermost().pTarget->vValues);
    }
    throw;
  }
}

void TreeCopy::Append(const ObjectValue& source, ObjectValue& target) {
  CopyNames(source, target);
  Append(source.avValues, target.avValues);
}

// A container of scalars alone, which most are, is done here and never becomes a level: false. What
// lies on the heap is in its owner's hands.
QXRECORDSET_HOT bool TreeCopy::Enter(const ArrayValue& source, ArrayValue& target) {
  const std::uint32_t nCount = Items::Count(source.vValues);
  Items::Reserve(target.vValues, pPool_, std::size_t{Items::Count(target.vValues)} + nCount);
  if (pPool_ == nullptr) Items::HandOut(target.vValues);
  const UnsafeJSONValue* const pFirst = Items::Data(source.vValues);
  const UnsafeJSONValue* const pEnd = pFirst + nCount;
  const UnsafeJSONValue* const pNext = CopyPlain(pFirst, pEnd, target);
  if (pNext == pEnd) return false;
  levels_.Push({pNext, pEnd, &target});
  return true;
}

void TreeCopy::Run() {
  while (!levels_.IsEmpty()) {
    Level& level = levels_.Innermost();
    ArrayValue& target = *level.pTarget;
    if (CopyElements(level, target)) continue;
    levels_.Pop();
    // What may own heap memory must be found from above; see Storage.h.
    if (!levels_.IsEmpty() && Items::AreHandedOut(target.vValues)) {
      Items::HandOut(levels_.Innermost().pTarget->vValues);
    }
  }
}

// Copies elements up to the end, or up to a container that is the innermost level then: true.
bool TreeCopy::CopyElements(Level& level, ArrayValue& target) {
  const UnsafeJSONValue* const pEnd = level.pEnd;
  for (const UnsafeJSONValue* p = level.pNext;; ++p) {
    p = CopyPlain(p, pEnd, target);
    if (p == pEnd) return false;
    level.pNext = p + 1;
    UnsafeJSONValue& copy =
        Items::AppendInRoom(target.vValues, p->eType, nullptr, 0, p->nNameIndex, nullptr);
    if (Usually(!p->bOwnsText && MovesAlong(p->pText))) {
      copy.pText = Moved(p->pText);
      copy.nLength = p->nLength;
    } else {
      Items::HandOut(target.vValues);
      CopyText(*p, copy);
    }
    if (p->pComposite != nullptr && CopyContainer(*p->pComposite, target, copy)) return true;
  }
}

// Copies elements up to the first one for which more is to be done than to move its text, and
// returns that one, or the end. REQUIRES: room for all of them.
QXRECORDSET_HOT const UnsafeJSONValue* TreeCopy::CopyPlain(const UnsafeJSONValue* p,
                                                           const UnsafeJSONValue* pEnd,
                                                           ArrayValue& target) const {
  UnsafeJSONValue* const pTarget = Items::Data(target.vValues) + Items::Count(target.vValues);
  UnsafeJSONValue* pNew = pTarget;
  while (p != pEnd && p->pComposite == nullptr && !p->bOwnsText && MovesAlong(p->pText)) {
    Items::Make(pNew++, p->eType, Moved(p->pText), p->nLength, p->nNameIndex, nullptr);
    ++p;
  }
  Items::TakeIn(target.vValues, static_cast<std::size_t>(pNew - pTarget));
  return p;
}

// A text that has to be a private one. A container keeps only its own.
void TreeCopy::CopyText(const UnsafeJSONValue& source, UnsafeJSONValue& copy) {
  if (source.bOwnsText) {
    copy.InternalUpdateValue(source.pText);
  } else if (source.pComposite == nullptr) {
    GiveText(copy, ScalarText(source));
  }
}

// Whether there is a level for it. The copy is there before its elements are, so that it has an
// owner whatever happens on the way.
QXRECORDSET_HOT bool TreeCopy::CopyContainer(const CompositeValue& source, ArrayValue& holder,
                                             UnsafeJSONValue& copy) {
  const Storage::Kind kind = Storage::KindOf(source);
  if (kind == Storage::Kind::kForeign) {
    copy.pComposite = source.Clone(static_cast<std::ptrdiff_t>(nDelta_));
    Items::HandOut(holder.vValues);
    return false;
  }
  const ArrayValue& elements = Storage::ElementsOf(source);
  const std::uint32_t nCount = Items::Count(elements.vValues);
  const std::uint32_t nRoom = pPool_ != nullptr ? nCount : std::max(nCount, kHeapReserve);
  if (kind == Storage::Kind::kArray) {
    ArrayValue* const pArray = Storage::Make<ArrayValue>(pPool_, nRoom);
    copy.pComposite = pArray;
    return Enter(elements, *pArray);
  }
  ObjectValue* const pObject = Storage::Make<ObjectValue>(pPool_, nRoom);
  copy.pComposite = pObject;
  CopyNames(static_cast<const ObjectValue&>(source), *pObject);
  if (Items::AreHandedOut(pObject->vNameMap)) Items::HandOut(holder.vValues);
  return Enter(elements, pObject->avValues);
}

// ---- Names --------------------------------------------------------------------------------------

void TreeCopy::CopyNames(const ObjectValue& source, ObjectValue& target) {
  const std::uint32_t nCount = Items::Count(source.vNameMap);
  const ObjectValue::NameMap* pNames = Items::Data(source.vNameMap);
  // Names that are not sorted yet will change.
  const bool bShareable = pPool_ != nullptr && source.bSorted && nCount != 0 &&
                          Items::AreShared(source.vNameMap) && Items::Count(target.vNameMap) == 0;
  target.bSorted = source.bSorted;
  SharedNames& shared = aShared_[Address(pNames) / alignof(ObjectValue::NameMap) % kShared];
  if (bShareable && pNames == shared.pSource) {
    Items::Share(target.vNameMap, shared.pCopy, nCount);
    return;
  }
  Items::Reserve(target.vNameMap, pPool_, std::size_t{Items::Count(target.vNameMap)} + nCount);
  if (pPool_ == nullptr) Items::HandOut(target.vNameMap);
  pNames = Items::Data(source.vNameMap);
  bool bOwns = false;
  for (std::uint32_t i = 0; i < nCount; ++i) {
    bOwns = CopyName(pNames[i], target) || bOwns;
  }
  if (bShareable && !bOwns) {
    shared = {pNames, Items::Data(target.vNameMap)};
    Items::Lend(target.vNameMap);
  }
}

// Whether the copy owns the name. REQUIRES: room for it.
bool TreeCopy::CopyName(const ObjectValue::NameMap& source, ObjectValue& target) {
  ObjectValue::NameMap name = source;
  const bool bOwns = name.bOwnsName || !MovesAlong(name.pName);
  if (bOwns) {
    Items::HandOut(target.vNameMap);
    if (name.pName != nullptr) {
      name.pName = NewText({name.pName, static_cast<std::size_t>(name.nLength)});
    }
    name.bOwnsName = true;
  } else {
    name.pName = Moved(name.pName);
  }
  Items::AppendInRoom(target.vNameMap, name);
  return bOwns;
}

// ---- The containers' own copies -----------------------------------------------------------------

namespace {

template <typename Container>
Container* CloneOnHeap(const Container& source, std::ptrdiff_t nDelta) {
  const int nCount = source.Size();
  auto pClone = std::make_unique<Container>(std::max(nCount, static_cast<int>(kHeapReserve)));
  TreeCopy(nDelta).Append(source, *pClone);
  return pClone.release();
}

}  // namespace

ArrayValue* ArrayValue::Clone(std::ptrdiff_t nDelta) const { return CloneOnHeap(*this, nDelta); }
ObjectValue* ObjectValue::Clone(std::ptrdiff_t nDelta) const { return CloneOnHeap(*this, nDelta); }
void ArrayValue::CopyTo(ArrayValue& target, std::ptrdiff_t nDelta) const {
  TreeCopy(nDelta).Append(*this, target);
}
void ObjectValue::CopyTo(ObjectValue& target, std::ptrdiff_t nDelta) const {
  TreeCopy(nDelta).Append(*this, target);
}

}  // namespace JSON

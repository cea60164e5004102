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
std::uintptr_t Address(const char* p) { return reinterpret_cast<std::uintptr_t>(p); }

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

bool TreeCopy::MovesAlong(const char* pText) const { return Address(pText) - nFrom_ < nFromSize_; }

const char* TreeCopy::Moved(const char* pText) const {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): as said above
  return reinterpret_cast<const char*>(Address(pText) + nDelta_);
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

// What lies on the heap is in its owner's hands.
void TreeCopy::Enter(const ArrayValue& source, ArrayValue& target) {
  const std::uint32_t nCount = Items::Count(source.vValues);
  Items::Reserve(target.vValues, pPool_, std::size_t{Items::Count(target.vValues)} + nCount);
  if (pPool_ == nullptr) Items::HandOut(target.vValues);
  const UnsafeJSONValue* const pFirst = Items::Data(source.vValues);
  levels_.Push({pFirst, pFirst + nCount, &target});
}

void TreeCopy::Run() {
  while (!levels_.IsEmpty()) {
    if (CopyElements(levels_.Innermost())) continue;
    const ArrayValue& done = *levels_.Innermost().pTarget;
    levels_.Pop();
    // What may own heap memory must be found from above; see Storage.h.
    if (!levels_.IsEmpty() && Items::AreHandedOut(done.vValues)) {
      Items::HandOut(levels_.Innermost().pTarget->vValues);
    }
  }
}

// Copies elements up to the end, or up to a container, which is then the innermost level: true.
bool TreeCopy::CopyElements(Level& level) {
  ArrayValue& target = *level.pTarget;
  for (const UnsafeJSONValue* p = level.pNext; p != level.pEnd; ++p) {
    const bool bMoves = !p->bOwnsText && (p->pText == nullptr || MovesAlong(p->pText));
    UnsafeJSONValue& copy = Storage::Append(
        target, pPool_, p->eType, bMoves && p->pText != nullptr ? Moved(p->pText) : nullptr,
        bMoves ? p->nLength : 0, p->nNameIndex, nullptr);
    if (!bMoves) {
      Items::HandOut(target.vValues);
      if (p->bOwnsText) {
        copy.InternalUpdateValue(p->pText);
      } else if (p->pComposite == nullptr) {
        GiveText(copy, ScalarText(*p));
      }
    }
    if (p->pComposite != nullptr) {
      level.pNext = p + 1;
      CopyContainer(*p->pComposite, target, copy);
      return true;
    }
  }
  return false;
}

// The copy is there before its elements are, so that it has an owner whatever happens on the way.
void TreeCopy::CopyContainer(const CompositeValue& source, ArrayValue& holder,
                             UnsafeJSONValue& copy) {
  const Storage::Kind kind = Storage::KindOf(source);
  if (kind == Storage::Kind::kForeign) {
    copy.pComposite = source.Clone(static_cast<std::ptrdiff_t>(nDelta_));
    Items::HandOut(holder.vValues);
    return;
  }
  const ArrayValue& elements = Storage::ElementsOf(source);
  const std::uint32_t nCount = Items::Count(elements.vValues);
  const std::uint32_t nRoom = pPool_ != nullptr ? nCount : std::max(nCount, kHeapReserve);
  if (kind == Storage::Kind::kArray) {
    ArrayValue* const pArray = Storage::Make<ArrayValue>(pPool_, nRoom);
    copy.pComposite = pArray;
    Enter(elements, *pArray);
  } else {
    ObjectValue* const pObject = Storage::Make<ObjectValue>(pPool_, nRoom);
    copy.pComposite = pObject;
    CopyNames(static_cast<const ObjectValue&>(source), *pObject);
    if (Items::AreHandedOut(pObject->vNameMap)) Items::HandOut(holder.vValues);
    Enter(elements, pObject->avValues);
  }
}

// ---- Names --------------------------------------------------------------------------------------

void TreeCopy::CopyNames(const ObjectValue& source, ObjectValue& target) {
  const std::uint32_t nCount = Items::Count(source.vNameMap);
  const ObjectValue::NameMap* pNames = Items::Data(source.vNameMap);
  // Names that are not sorted yet will change.
  const bool bShareable = pPool_ != nullptr && source.bSorted && nCount != 0 &&
                          Items::AreShared(source.vNameMap) && Items::Count(target.vNameMap) == 0;
  target.bSorted = source.bSorted;
  if (bShareable && pNames == pSharedSource_) {
    Items::Share(target.vNameMap, pSharedCopy_, nCount);
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
    pSharedSource_ = pNames;
    pSharedCopy_ = Items::Data(target.vNameMap);
    Items::Lend(target.vNameMap);
  }
}

// Whether the copy owns the name. REQUIRES: room for it.
bool TreeCopy::CopyName(const ObjectValue::NameMap& source, ObjectValue& target) {
  ObjectValue::NameMap name = source;
  const bool bOwns = name.bOwnsName || (name.pName != nullptr && !MovesAlong(name.pName));
  if (bOwns) {
    Items::HandOut(target.vNameMap);
    if (name.pName != nullptr) {
      name.pName = NewText({name.pName, static_cast<std::size_t>(name.nLength)});
    }
    name.bOwnsName = true;
  } else if (name.pName != nullptr) {
    name.pName = Moved(name.pName);
  }
  Items::Append(target.vNameMap, nullptr, name);
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

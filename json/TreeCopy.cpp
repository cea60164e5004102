// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Copying a tree, container by container. Every step leaves a target that can be released, so that
// exhausted memory in the middle loses nothing.

#include "json/TreeCopy.h"

#include <algorithm>
#include <typeinfo>

#include "json/Storage.h"

namespace JSON {
namespace {

// The containers of a copy have room for what is known to come, and for this many items at least.
constexpr std::uint32_t kCloneReserve = 4;

}  // namespace

// The distance is between two buffers, so it is applied to addresses, not inside one array.
// NOLINTBEGIN(performance-no-int-to-ptr)
const char* TreeCopy::Moved(const char* pText) const {
  if (pText == nullptr) {
    return nullptr;
  }
  return reinterpret_cast<const char*>(reinterpret_cast<std::uintptr_t>(pText) +
                                       static_cast<std::uintptr_t>(nDelta_));
}
// NOLINTEND(performance-no-int-to-ptr)

CompositeValue* TreeCopy::Clone(const CompositeValue& source) {
  if (typeid(source) == typeid(ObjectValue)) {
    return CloneAs(static_cast<const ObjectValue&>(source));
  }
  if (typeid(source) == typeid(ArrayValue)) {
    return CloneAs(static_cast<const ArrayValue&>(source));
  }
  return source.Clone(nDelta_);  // a host's own kind of container
}

template <typename Container>
Container* TreeCopy::CloneAs(const Container& source) {
  const std::uint32_t nCount = Storage::Count(source);
  Container* const pCopy = Storage::Make<Container>(pArena_, std::max(nCount, kCloneReserve));
  try {
    Append(source, *pCopy);
  } catch (...) {
    Storage::Release(pCopy);
    throw;
  }
  return pCopy;
}

void TreeCopy::Append(const ArrayValue& source, ArrayValue& target) {
  const std::size_t nCount = source.vValues.size();
  Storage::Reserve(target, target.vValues.size() + nCount);
  const UnsafeJSONValue* const pValues = Storage::Values(source);
  for (std::size_t i = 0; i < nCount; ++i) {
    const UnsafeJSONValue& value = pValues[i];
    const bool bOwnsText = value.bOwnsText;
    UnsafeJSONValue& copy =
        Storage::Append(target, value.eType, bOwnsText ? nullptr : Moved(value.pText),
                        bOwnsText ? 0 : value.nLength, value.nNameIndex, nullptr);
    if (bOwnsText) {
      copy.InternalUpdateValue(value.pText);
    }
    if (value.pComposite != nullptr) {
      copy.pComposite = Clone(*value.pComposite);
      if (!Storage::InArena(*copy.pComposite)) {
        Storage::NoteHeapAt(copy);
      }
    }
  }
}

void TreeCopy::Append(const ObjectValue& source, ObjectValue& target) {
  Append(source.avValues, target.avValues);
  AppendNames(source, target);
  target.bSorted = source.bSorted;
}

void TreeCopy::AppendNames(const ObjectValue& source, ObjectValue& target) {
  const std::size_t nCount = Storage::NameCount(source);
  const ObjectValue::NameMap* pNames = Storage::Names(source);
  const bool bShareable =
      Storage::BorrowsNames(source) && Storage::InArena(target) && target.vNameMap.empty();
  if (bShareable && pNames == pSharedSource_) {
    Storage::BorrowNames(target, pSharedCopy_, nCount);
    return;
  }
  Storage::ReserveNames(target, target.vNameMap.size() + nCount);
  pNames = Storage::Names(source);
  for (std::size_t i = 0; i < nCount; ++i) {
    ObjectValue::NameMap name = pNames[i];
    if (name.bOwnsName) {
      name.bOwnsName = false;
      name.UpdateName(pNames[i].pName);
      Storage::NoteHeapIn(Storage::ArenaOf(target.avValues));
    } else {
      name.pName = Moved(name.pName);
    }
    Storage::AppendName(target, name);  // cannot fail: there is room
  }
  if (bShareable) {
    pSharedSource_ = pNames;
    pSharedCopy_ = Storage::Names(target);
    Storage::BorrowNames(target, pSharedCopy_, nCount);
  }
}

ArrayValue* ArrayValue::Clone(std::ptrdiff_t nDelta) const {
  return TreeCopy(nDelta, nullptr).CloneAs(*this);
}
ObjectValue* ObjectValue::Clone(std::ptrdiff_t nDelta) const {
  return TreeCopy(nDelta, nullptr).CloneAs(*this);
}
void ArrayValue::CopyTo(ArrayValue& target, std::ptrdiff_t nDelta) const {
  TreeCopy(nDelta, nullptr).Append(*this, target);
}
void ObjectValue::CopyTo(ObjectValue& target, std::ptrdiff_t nDelta) const {
  TreeCopy(nDelta, nullptr).Append(*this, target);
}

}  // namespace JSON

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Copying a tree, container by container. Every step leaves a target that can be released, so that
// exhausted memory in the middle loses nothing.

#include "json/TreeCopy.h"

#include "json/Storage.h"

namespace JSON {
namespace {

// The containers of a copy start with room for this many items, or for what is known to come.
constexpr int kCloneReserve = 4;

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
  if (const auto* const pObject = dynamic_cast<const ObjectValue*>(&source)) {
    return CloneAs(*pObject);
  }
  if (const auto* const pArray = dynamic_cast<const ArrayValue*>(&source)) {
    return CloneAs(*pArray);
  }
  return source.Clone(nDelta_);  // a host's own kind of container
}

template <typename Container>
CompositeValue* TreeCopy::CloneAs(const Container& source) {
  Container* const pCopy = Storage::Make<Container>(pArena_, kCloneReserve);
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
    UnsafeJSONValue& copy =
        Storage::Append(target, value.eType, nullptr, 0, value.nNameIndex, nullptr);
    if (value.bOwnsText) {
      copy.InternalUpdateValue(value.pText);
    } else {
      copy.pText = Moved(value.pText);
      copy.nLength = value.nLength;
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

CompositeValue* ArrayValue::Clone(std::ptrdiff_t nDelta) const {
  return TreeCopy(nDelta, nullptr).Clone(*this);
}
CompositeValue* ObjectValue::Clone(std::ptrdiff_t nDelta) const {
  return TreeCopy(nDelta, nullptr).Clone(*this);
}
void ArrayValue::CopyTo(ArrayValue& target, std::ptrdiff_t nDelta) const {
  TreeCopy(nDelta, nullptr).Append(*this, target);
}
void ObjectValue::CopyTo(ObjectValue& target, std::ptrdiff_t nDelta) const {
  TreeCopy(nDelta, nullptr).Append(*this, target);
}

}  // namespace JSON

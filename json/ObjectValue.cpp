// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// ObjectValue: members, names, and the lookup through the sorted name index. The sort itself is in
// NameOrder.h, the lookup among names that are not sorted in NameFinder.h, updates are in
// Update.cpp, copies in TreeCopy.cpp, release is in TreeRelease.cpp, writing in TreeSerialize.cpp.

#include <cstring>

#include "json/Items.h"
#include "json/JSONValue.h"
#include "json/NameFinder.h"
#include "json/NameOrder.h"
#include "json/TreeRelease.h"

namespace JSON {

ObjectValue::ObjectValue(int nReserve) : CompositeValue(Kind::kObject, false), avValues(nReserve) {
  Items::HandOut(vNameMap);
  if (nReserve > 0) {
    Items::Reserve(vNameMap, nullptr, static_cast<std::size_t>(nReserve));
  }
}

ObjectValue::~ObjectValue() {
  ObjectValue::Clear();
  Items::Free(vNameMap);
}

int ObjectValue::Size() const { return avValues.Size(); }

void ObjectValue::Clear() {
  avValues.Clear();
  ReleaseNames(*this);
}

void ObjectValue::AddValue(JSONValue& value) { avValues.AddValue(value); }

void ObjectValue::AddName(JSONValue& name) {
  NameMap entry;
  entry.pName = name.pText;
  entry.nLength = name.pText != nullptr ? name.nLength : 0;
  entry.nOrdinal = static_cast<int>(Items::Count(vNameMap));
  Items::Append(vNameMap, nullptr, entry);
  // The host may come to own what it adds.
  if (!Items::AreOnHeap(vNameMap)) Items::HandOut(vNameMap);
  if (bSorted) bSorted = true;  // as the host has it; but it is not any more
}

JSONValue* ObjectValue::GetByOrdinal(int ordinal) const { return avValues.GetByOrdinal(ordinal); }

JSONValue* ObjectValue::GetByName(const char* name, int length) const {
  return avValues.GetByOrdinal(OrdinalOf(name, length));
}

bool ObjectValue::MakeMap() const { return false; }

bool ObjectValue::NameMap::Less(const NameMap& a, const NameMap& b) {
  return CompareNames(a.pName, a.nLength, b.pName, b.nLength) < 0;
}

void ObjectValue::Sort() const {
  const std::uint32_t nNew = NameFinder::CountNew(*this);
  const std::uint32_t nNames = Items::Count(vNameMap);
  const std::uint32_t nValues = Items::Count(avValues.vValues);
  NameMap* const pNames = Items::Own(vNameMap);
  const UnsafeJSONValue* const pValues = Items::Data(avValues.vValues);
  SortNames(pNames, nNames, nNew);
  for (std::uint32_t i = 0; i < nNames; ++i) {
    const auto nOrdinal = static_cast<std::uint32_t>(pNames[i].nOrdinal);
    if (nOrdinal < nValues) {  // a failed parse leaves a name without a value
      pValues[nOrdinal].nNameIndex = static_cast<int>(i);
    }
  }
  NameFinder::NoteSorted(*this);
}

int ObjectValue::OrdinalOf(const char* name, int length) const {
  if (name == nullptr) {
    return 0;
  }
  const int nLength = length < 0 ? static_cast<int>(std::strlen(name)) : length;
  if (!bSorted) {
    if (Items::Count(vNameMap) > NameFinder::kFewNames) {
      return NameFinder::Find(*this, name, nLength);
    }
    Sort();
  }
  const NameMap* const pNames = Items::Data(vNameMap);
  const NameMap* const pFound = FindSorted(pNames, pNames + Items::Count(vNameMap), name, nLength);
  return pFound != nullptr ? pFound->nOrdinal : -1;
}

const char* ObjectValue::NameAt(int ordinal) const {
  const std::uint32_t nNames = Items::Count(vNameMap);
  const auto nOrdinal = static_cast<std::uint32_t>(ordinal);
  if (nOrdinal >= nNames || nOrdinal >= Items::Count(avValues.vValues)) {
    return nullptr;
  }
  if (!bSorted) {
    Sort();
  }
  // An element that was added by hand may carry an index from elsewhere.
  const auto nIndex =
      static_cast<std::uint32_t>(Items::Data(avValues.vValues)[nOrdinal].nNameIndex);
  return nIndex < nNames ? Items::Data(vNameMap)[nIndex].pName : nullptr;
}

}  // namespace JSON

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// ObjectValue: members, names, and the lookup through the sorted name index. The sort itself is in
// NameOrder.h, updates are in Update.cpp, copies in Copy.cpp, writing is in TreeSerialize.cpp.

#include <algorithm>
#include <cstring>

#include "json/JSONValue.h"
#include "json/NameOrder.h"
#include "json/Storage.h"

namespace JSON {

ObjectValue::ObjectValue(int nReserve) : CompositeValue(false), avValues(nReserve) {
  if (nReserve > 0) {
    Storage::ReserveNames(*this, static_cast<std::size_t>(nReserve));
  }
}

ObjectValue::~ObjectValue() {
  ObjectValue::Clear();
  Storage::FreeNames(*this);
}

int ObjectValue::Size() const { return avValues.Size(); }

void ObjectValue::Clear() {
  avValues.Clear();
  if (Storage::BorrowsNames(*this)) {
    Storage::FreeNames(*this);  // nothing of borrowed names is ours
    return;
  }
  NameMap* const pNames = Storage::Names(*this);
  for (std::size_t i = 0; i < vNameMap.size(); ++i) {
    if (pNames[i].bOwnsName) {
      delete[] pNames[i].pName;
    }
  }
  Storage::RemoveNames(*this);
}

void ObjectValue::AddValue(JSONValue& value) { avValues.AddValue(value); }

void ObjectValue::AddName(JSONValue& name) {
  NameMap entry;
  entry.pName = name.pText;
  entry.nLength = name.nLength;
  entry.nOrdinal = static_cast<int>(vNameMap.size());
  Storage::AppendName(*this, entry);
  Storage::NoteHeapIn(
      Storage::ArenaOf(avValues));  // whoever adds names by hand may come to own them
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
  const std::size_t nNames = vNameMap.size();
  const int nValues = Size();
  NameMap* const pNames = Storage::OwnNames(*this);
  const UnsafeJSONValue* const pValues = Storage::Values(avValues);
  SortNames(pNames, nNames);
  for (std::size_t i = 0; i < nNames; ++i) {
    if (pNames[i].nOrdinal < nValues) {  // a failed parse leaves a name without a value
      pValues[pNames[i].nOrdinal].nNameIndex = static_cast<int>(i);
    }
  }
  bSorted = true;
}

int ObjectValue::OrdinalOf(const char* name, int length) const {
  if (name == nullptr) {
    return 0;
  }
  if (!bSorted) {
    Sort();
  }
  const int nLength = length < 0 ? static_cast<int>(std::strlen(name)) : length;
  const auto compare = [name, nLength](const NameMap& entry) {
    return CompareNames(entry.pName, entry.nLength, name, nLength);
  };
  const NameMap* const pFound =
      std::lower_bound(vNameMap.cbegin(), vNameMap.cend(), 0,
                       [&compare](const NameMap& entry, int) { return compare(entry) < 0; });
  if (pFound == vNameMap.cend() || compare(*pFound) != 0) {
    return -1;
  }
  return pFound->nOrdinal;
}

const char* ObjectValue::NameAt(int ordinal) const {
  const int nNames = static_cast<int>(vNameMap.size());
  if (ordinal < 0 || ordinal >= nNames || ordinal >= Size()) {
    return nullptr;
  }
  if (!bSorted) {
    Sort();
  }
  return Storage::Names(*this)[Storage::Values(avValues)[ordinal].nNameIndex].pName;
}

}  // namespace JSON

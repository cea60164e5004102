// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// ArrayValue: elements, lookup by ordinal, and the string index. Updates are in Update.cpp, copies
// in TreeCopy.cpp, release is in TreeRelease.cpp, writing in TreeSerialize.cpp.

#include <algorithm>
#include <cstring>

#include "json/Items.h"
#include "json/JSONValue.h"
#include "json/Storage.h"
#include "json/TreeRelease.h"
#include "text/ReadDecimal.h"

namespace JSON {

// The owner of a container on the heap has access to its elements from the start.
ArrayValue::ArrayValue(int nReserve) : CompositeValue(Kind::kArray, false) {
  Items::HandOut(vValues);
  if (nReserve > 0) Items::Reserve(vValues, nullptr, static_cast<std::size_t>(nReserve));
}

ArrayValue::~ArrayValue() {
  ArrayValue::Clear();
  Items::Free(vValues);
  Items::Free(vOrdinalMap);
}

int ArrayValue::Size() const { return static_cast<int>(Items::Count(vValues)); }

void ArrayValue::Clear() {
  ReleaseElements(*this);
  Items::Truncate(vOrdinalMap, 0);
}

// A container in a pool goes with the pool, so the element gets a copy of it.
void ArrayValue::AddValue(JSONValue& value) {
  CompositeValue* pOwned = value.pComposite;
  if (pOwned != nullptr && Storage::InPool(*pOwned)) pOwned = pOwned->Clone(0);
  const bool bOwnsText = value.bOwnsText;  // `value` may be an element, which is going to move
  try {
    Storage::Append(*this, nullptr, value.eType, value.pText, value.nLength, value.nNameIndex,
                    pOwned)
        .bOwnsText = bOwnsText;
  } catch (const std::bad_alloc&) {
    if (pOwned != value.pComposite) Release(pOwned);
    throw;
  }
  Items::HandOut(vValues);
}

JSONValue* ArrayValue::GetByOrdinal(int ordinal) const {
  if (static_cast<unsigned>(ordinal) >= Items::Count(vValues)) return nullptr;
  return Items::HandOut(vValues) + ordinal;
}

int Storage::OrdinalIn(const ArrayValue& elements, const char* name) {
  if (name == nullptr) return -1;
  const int nOrdinal = ReadDecimal<int>(name);
  return nOrdinal >= 0 && nOrdinal < elements.Size() ? nOrdinal : -1;
}

JSONValue* ArrayValue::GetByName(const char* name, int /*length*/) const {
  return GetByOrdinal(Storage::OrdinalIn(*this, name));
}

// ---- The string index ---------------------------------------------------------------------------
//
// The index orders the ordinals. A lookup reads the elements' texts as they are now, not those of
// the index's entries: an element may have been given another text since.

namespace {

// An element without text counts as the empty text.
const char* TextOf(const char* pText) { return pText != nullptr ? pText : ""; }

// The text of the element of an index entry; "" for an element that is no string any more.
const char* TextAt(const Sequence<UnsafeJSONValue>& values, const ArrayValue::OrdinalMap& entry) {
  if (static_cast<unsigned>(entry.nOrdinal) >= Items::Count(values)) return "";
  const JSONValue& element = Items::Data(values)[entry.nOrdinal];
  return element.eType == jtString ? TextOf(element.pText) : "";
}

}  // namespace

bool ArrayValue::OrdinalMap::Less(const OrdinalMap& a, const OrdinalMap& b) {
  return std::strcmp(TextOf(a.pText), TextOf(b.pText)) < 0;
}

bool ArrayValue::MakeMap() const {
  const std::uint32_t nCount = Items::Count(vValues);
  const UnsafeJSONValue* const pValues = Items::HandOut(vValues);  // the index lies on the heap
  Items::Truncate(vOrdinalMap, 0);
  for (std::uint32_t i = 0; i < nCount; ++i) {
    if (pValues[i].eType != jtString) return false;
  }
  Items::Reserve(vOrdinalMap, nullptr, nCount);
  for (std::uint32_t i = 0; i < nCount; ++i) {
    const int nOrdinal = static_cast<int>(i);
    Items::Append(vOrdinalMap, nullptr, OrdinalMap{pValues[i].pText, nOrdinal});
    pValues[i].nNameIndex = nOrdinal;
  }
  // Equal texts keep their order, so that a lookup finds the first of them.
  std::stable_sort(vOrdinalMap.begin(), vOrdinalMap.end(), OrdinalMap::Less);
  return true;
}

int ArrayValue::OrdinalOf(const char* name, int length) const {
  if (name == nullptr) return 0;
  if (vOrdinalMap.empty() && !MakeMap()) return -1;
  // strncmp over `length` bytes, and the text must end there too (unless both ended before).
  const std::size_t nName =
      length < 0 ? std::strlen(name) : strnlen(name, static_cast<std::size_t>(length));
  const auto compare = [this, name, nName](const OrdinalMap& entry) {
    const char* const pText = TextAt(vValues, entry);
    const int nOrder = std::strncmp(pText, name, nName);
    return nOrder != 0 ? nOrder : (pText[nName] != '\0' ? 1 : 0);
  };
  const OrdinalMap* const pFound =
      std::lower_bound(vOrdinalMap.cbegin(), vOrdinalMap.cend(), 0,
                       [&compare](const OrdinalMap& entry, int) { return compare(entry) < 0; });
  if (pFound == vOrdinalMap.cend() || compare(*pFound) != 0) return -1;
  return pFound->nOrdinal;
}

const char* ArrayValue::NameAt(int ordinal) const {
  if (vOrdinalMap.empty() && !MakeMap()) return nullptr;
  if (static_cast<unsigned>(ordinal) >= Items::Count(vValues)) return nullptr;
  const JSONValue& element = Items::Data(vValues)[ordinal];
  return element.eType == jtString ? element.pText : nullptr;
}

}  // namespace JSON

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// ArrayValue: elements, lookup by ordinal, and the string index. Updates are in Update.cpp, copies
// in Copy.cpp, writing is in TreeSerialize.cpp.

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "json/JSONValue.h"
#include "json/Storage.h"

namespace JSON {

ArrayValue::ArrayValue(int nReserve) : CompositeValue(false) {
  if (nReserve > 0) {
    Storage::Reserve(*this, static_cast<std::size_t>(nReserve));
  }
}

ArrayValue::~ArrayValue() {
  ArrayValue::Clear();
  Storage::FreeAll(*this);
}

int ArrayValue::Size() const { return static_cast<int>(vValues.size()); }

void ArrayValue::Clear() {
  // A pool whose tree owns nothing outside of it has nothing to release element by element.
  if (pArena == nullptr || pArena->bOwnsHeap) {
    UnsafeJSONValue* const pValues = Storage::Values(*this);
    for (std::size_t i = 0; i < vValues.size(); ++i) {
      if (pValues[i].bOwnsText) {
        delete[] pValues[i].pText;
      }
      Storage::Release(pValues[i].pComposite);
    }
  }
  Storage::Truncate(vValues);
  Storage::Truncate(vOrdinalMap);
}

void ArrayValue::AddValue(JSONValue& value) {
  const bool bOwnsText = value.bOwnsText;  // `value` may be an element, which is going to move
  if (bOwnsText || value.pComposite != nullptr) {
    Storage::NoteHeapIn(pArena);
  }
  Storage::Append(*this, value.eType, value.pText, value.nLength, value.nNameIndex,
                  value.pComposite)
      .bOwnsText = bOwnsText;
}

JSONValue* ArrayValue::GetByOrdinal(int ordinal) const {
  if (ordinal < 0 || ordinal >= Size()) {
    return nullptr;
  }
  return Storage::Values(*this) + ordinal;
}

JSONValue* ArrayValue::GetByName(const char* name, int /*length*/) const {
  if (name == nullptr) {
    return nullptr;
  }
  const long lOrdinal = std::strtol(name, nullptr, 10);
  if (lOrdinal < 0 || lOrdinal >= Size()) {
    return nullptr;
  }
  return Storage::Values(*this) + lOrdinal;
}

// ---- The string index ---------------------------------------------------------------------------

namespace {

// An element without text counts as the empty text.
const char* TextOf(const char* pText) { return pText != nullptr ? pText : ""; }

}  // namespace

bool ArrayValue::OrdinalMap::Less(const OrdinalMap& a, const OrdinalMap& b) {
  return std::strcmp(TextOf(a.pText), TextOf(b.pText)) < 0;
}

bool ArrayValue::MakeMap() const {
  const std::size_t nCount = vValues.size();
  const UnsafeJSONValue* const pValues = Storage::Values(*this);
  Storage::Truncate(vOrdinalMap);
  for (std::size_t i = 0; i < nCount; ++i) {
    if (pValues[i].eType != jtString) {
      return false;
    }
  }
  Storage::ReserveEntries(*this, nCount);
  for (std::size_t i = 0; i < nCount; ++i) {
    Storage::AppendEntry(*this, {pValues[i].pText, static_cast<int>(i)});
    pValues[i].nNameIndex = static_cast<int>(i);
  }
  // Equal texts keep their order, so that a lookup finds the first of them.
  std::sort(vOrdinalMap.begin(), vOrdinalMap.end(), [](const OrdinalMap& a, const OrdinalMap& b) {
    const int nOrder = std::strcmp(TextOf(a.pText), TextOf(b.pText));
    return nOrder != 0 ? nOrder < 0 : a.nOrdinal < b.nOrdinal;
  });
  return true;
}

int ArrayValue::OrdinalOf(const char* name, int length) const {
  if (name == nullptr) {
    return 0;
  }
  if (vOrdinalMap.empty() && !MakeMap()) {
    return -1;
  }
  // strncmp over `length` bytes, and the entry must end there too (unless both ended before).
  const std::size_t nName =
      length < 0 ? std::strlen(name) : strnlen(name, static_cast<std::size_t>(length));
  const auto compare = [name, nName](const char* pText) {
    const int nOrder = std::strncmp(pText, name, nName);
    return nOrder != 0 ? nOrder : (pText[nName] != '\0' ? 1 : 0);
  };
  const OrdinalMap* const pFound = std::lower_bound(
      vOrdinalMap.cbegin(), vOrdinalMap.cend(), 0,
      [&compare](const OrdinalMap& entry, int) { return compare(TextOf(entry.pText)) < 0; });
  if (pFound == vOrdinalMap.cend() || compare(TextOf(pFound->pText)) != 0) {
    return -1;
  }
  return pFound->nOrdinal;
}

const char* ArrayValue::NameAt(int ordinal) const {
  if (vOrdinalMap.empty() && !MakeMap()) {
    return nullptr;
  }
  const JSONValue* const pElement = GetByOrdinal(ordinal);
  if (pElement == nullptr || pElement->eType != jtString) {
    return nullptr;
  }
  return pElement->pText;
}

}  // namespace JSON

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The order of the name index: shorter names first, names of one length by their bytes, equal names
// in document order. Comparing lengths first means that most comparisons never touch the bytes.

#ifndef QXRECORDSET_JSON_NAMEORDER_H
#define QXRECORDSET_JSON_NAMEORDER_H

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "json/JSONValue.h"

namespace JSON {

// Below 0, 0 or above 0 as name a stands before, with or behind name b. Bytes are compared up to a
// NUL, as strncmp does.
inline int CompareNames(const char* pA, int nLengthA, const char* pB, int nLengthB) {
  if (nLengthA != nLengthB) {
    return nLengthA < nLengthB ? -1 : 1;
  }
  return nLengthA == 0 ? 0 : std::strncmp(pA, pB, static_cast<std::size_t>(nLengthA));
}

// Sorts the names, of which all but the last nNew are sorted; n log n whatever they are.
void SortNames(ObjectValue::NameMap* pNames, std::size_t nCount, std::size_t nNew);

// The first of sorted names that is that one, or null.
inline const ObjectValue::NameMap* FindSorted(const ObjectValue::NameMap* pNames,
                                              const ObjectValue::NameMap* pEnd, const char* name,
                                              int nLength) {
  const auto compare = [name, nLength](const ObjectValue::NameMap& entry) {
    return CompareNames(entry.pName, entry.nLength, name, nLength);
  };
  const ObjectValue::NameMap* const pFound = std::lower_bound(
      pNames, pEnd, 0,
      [&compare](const ObjectValue::NameMap& entry, int) { return compare(entry) < 0; });
  return pFound != pEnd && compare(*pFound) == 0 ? pFound : nullptr;
}

}  // namespace JSON

#endif  // QXRECORDSET_JSON_NAMEORDER_H

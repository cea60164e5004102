// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The order of the name index: shorter names first, names of one length by their bytes, equal names
// in document order. Comparing lengths first means that most comparisons never touch the bytes.

#ifndef QXRECORDSET_JSON_NAMEORDER_H
#define QXRECORDSET_JSON_NAMEORDER_H

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

// Sorts the names; n log n whatever they are.
void SortNames(ObjectValue::NameMap* pNames, std::size_t nCount);

}  // namespace JSON

#endif  // QXRECORDSET_JSON_NAMEORDER_H

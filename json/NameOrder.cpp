// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Sorting names. A handful, the usual case, is sorted by insertion, where the names lie; so are a
// few new names behind sorted ones, which is what an object comes to that is built member by
// member. More than that are sorted through keys that hold what most comparisons need, so that they
// do not touch the names; and by std::sort, so that no order of names makes the work grow with
// their square.

#include "json/NameOrder.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace JSON {
namespace {

using NameMap = ObjectValue::NameMap;

// The order of the index. Equal names stand in document order, whatever order they come in: names
// may have been changed since they were sorted.
bool IsBefore(const NameMap& a, const NameMap& b) {
  const int nOrder = CompareNames(a.pName, a.nLength, b.pName, b.nLength);
  return nOrder != 0 ? nOrder < 0 : a.nOrdinal < b.nOrdinal;
}

// Up to here insertion beats the set-up of the keys.
constexpr std::size_t kMostByInsertion = 24;

void SortByInsertion(NameMap* pNames, std::size_t nCount) {
  for (std::size_t i = 1; i < nCount; ++i) {
    const NameMap name = pNames[i];
    std::size_t j = i;
    while (j > 0 && IsBefore(name, pNames[j - 1])) {
      pNames[j] = pNames[j - 1];
      --j;
    }
    pNames[j] = name;
  }
}

// As many new names behind sorted ones are put where they belong one by one.
constexpr std::size_t kMostNew = 4;

void InsertNewNames(NameMap* pNames, NameMap* pNew, NameMap* pEnd) {
  for (; pNew != pEnd; ++pNew) {
    std::rotate(std::upper_bound(pNames, pNew, *pNew, IsBefore), pNew, pNew + 1);
  }
}

// A name's length and first bytes, the first byte highest; bytes behind a NUL do not count.
struct Key {
  std::uint64_t nFirstBytes;
  int nLength;
  int nAt;  // where the name stands before sorting

  explicit Key(const NameMap& name, int nPosition)
      : nFirstBytes(0), nLength(name.nLength), nAt(nPosition) {
    constexpr int kBytes = 8;
    for (int i = 0; i < kBytes && i < nLength && name.pName[i] != '\0'; ++i) {
      nFirstBytes |= std::uint64_t{static_cast<unsigned char>(name.pName[i])}
                     << (8 * (kBytes - 1 - i));
    }
  }
};

void SortByKey(NameMap* pNames, std::size_t nCount) {
  std::vector<Key> keys;
  keys.reserve(nCount);
  for (std::size_t i = 0; i < nCount; ++i) {
    keys.emplace_back(pNames[i], static_cast<int>(i));
  }
  std::sort(keys.begin(), keys.end(), [pNames](const Key& a, const Key& b) {
    if (a.nLength != b.nLength) {
      return a.nLength < b.nLength;
    }
    if (a.nFirstBytes != b.nFirstBytes) {
      return a.nFirstBytes < b.nFirstBytes;
    }
    return IsBefore(pNames[a.nAt], pNames[b.nAt]);
  });
  std::vector<NameMap> sorted;
  sorted.reserve(nCount);
  for (const Key& key : keys) {
    sorted.push_back(pNames[key.nAt]);
  }
  std::copy(sorted.begin(), sorted.end(), pNames);
}

}  // namespace

void SortNames(NameMap* pNames, std::size_t nCount) {
  if (nCount <= kMostByInsertion) {
    SortByInsertion(pNames, nCount);
    return;
  }
  NameMap* const pEnd = pNames + nCount;
  NameMap* const pNew = std::is_sorted_until(pNames, pEnd, IsBefore);
  if (static_cast<std::size_t>(pEnd - pNew) <= kMostNew) {
    InsertNewNames(pNames, pNew, pEnd);
  } else {
    SortByKey(pNames, nCount);
  }
}

}  // namespace JSON

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Sorting names. What mostly decides between two of them are their lengths and the first bytes
// behind what all names begin with, so these are collected first, in keys that are sorted instead
// of the names. Many keys are distributed byte by byte; nothing makes the work grow with the square
// of their number.

#include "json/NameOrder.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "text/ShortBytes.h"

namespace JSON {
namespace {

using NameMap = ObjectValue::NameMap;

// The order of the index. Equal names stand in document order, whatever order they come in: names
// may have been changed since they were sorted.
bool IsBefore(const NameMap& a, const NameMap& b) {
  const int nOrder = CompareNames(a.pName, a.nLength, b.pName, b.nLength);
  return nOrder != 0 ? nOrder < 0 : a.nOrdinal < b.nOrdinal;
}

// So many new names behind sorted ones are put where they belong one by one.
constexpr std::size_t kMostNew = 2;

void InsertNewNames(NameMap* pNames, NameMap* pNew, NameMap* pEnd) {
  for (; pNew != pEnd; ++pNew) {
    std::rotate(std::upper_bound(pNames, pNew, *pNew, IsBefore), pNew, pNew + 1);
  }
}

// ---- Keys ---------------------------------------------------------------------------------------

struct Key {
  std::uint64_t nBytes;   // of the name, see BytesBehind()
  std::uint32_t nLength;  // of the name, in the order of ints
  std::uint32_t nAt;      // where the name stands before sorting

  bool operator==(const Key& other) const {
    return nBytes == other.nBytes && nLength == other.nLength;
  }
};

constexpr std::size_t kKeyBytes = sizeof(Key::nBytes);
constexpr std::uint32_t kSignBit = 0x80000000;

std::size_t Length(const NameMap& name) {
  return name.nLength > 0 ? static_cast<std::size_t>(name.nLength) : 0;
}

// How many bytes all names begin with. They end at a NUL: bytes behind one do not count.
std::size_t CommonBytes(const NameMap* pNames, std::size_t nCount) {
  const char* const pFirst = pNames[0].pName;
  std::size_t nCommon = Length(pNames[0]) != 0 ? strnlen(pFirst, Length(pNames[0])) : 0;
  for (std::size_t i = 1; i < nCount; ++i) {
    const char* const pName = pNames[i].pName;
    nCommon = std::min(nCommon, Length(pNames[i]));
    if (SameBytes(pFirst, pName, nCommon)) continue;
    const char* const pEnd = std::mismatch(pFirst, pFirst + nCommon, pName).first;
    nCommon = static_cast<std::size_t>(pEnd - pFirst);
  }
  return nCommon;
}

// Whether one of the word's bytes is a NUL. A byte borrows from the next one only if it is.
bool HasNul(std::uint64_t nWord) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  return ((nWord - kOnes) & ~nWord & (kOnes << 7)) != 0;
}

// Up to eight bytes of a name from nCommon on, the first one the highest, without those behind a
// NUL. Of a name's last bytes a whole word is read, which begins among the common ones.
std::uint64_t BytesBehind(const NameMap& name, std::size_t nCommon) {
  const std::size_t nBytes = std::min(Length(name) - nCommon, kKeyBytes);
  if (nBytes == 0) return 0;
  const char* const p = name.pName + nCommon;
  if (nCommon + nBytes >= kKeyBytes) {
    const auto nWord = ReadWord<std::uint64_t>(p + nBytes - kKeyBytes);
    const bool bSwap = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
    if (!HasNul(nWord)) {
      return (bSwap ? __builtin_bswap64(nWord) : nWord) << 8 * (kKeyBytes - nBytes);
    }
  }
  std::uint64_t n = 0;
  for (std::size_t i = 0; i < nBytes && p[i] != '\0'; ++i) {
    n |= std::uint64_t{static_cast<unsigned char>(p[i])} << 8 * (kKeyBytes - 1 - i);
  }
  return n;
}

void MakeKeys(Key* pKeys, const NameMap* pNames, std::size_t nCount) {
  const std::size_t nCommon = CommonBytes(pNames, nCount);
  for (std::uint32_t i = 0; i < nCount; ++i) {
    const auto nLength = static_cast<std::uint32_t>(pNames[i].nLength) ^ kSignBit;
    pKeys[i] = {BytesBehind(pNames[i], nCommon), nLength, i};
  }
}

// The order of keys is that of their names.
auto LessFor(const NameMap* pNames) {
  return [pNames](const Key& a, const Key& b) {
    if (a.nLength != b.nLength) return a.nLength < b.nLength;
    if (a.nBytes != b.nBytes) return a.nBytes < b.nBytes;
    return IsBefore(pNames[a.nAt], pNames[b.nAt]);
  };
}

// Moves each name to where its key stands, along the circles in which they change places.
void Follow(Key* pKeys, NameMap* pNames, std::size_t nCount) {
  for (std::uint32_t i = 0; i < nCount; ++i) {
    if (pKeys[i].nAt == i) continue;
    const NameMap first = pNames[i];
    std::uint32_t nTo = i;
    for (std::uint32_t nFrom = pKeys[i].nAt; nFrom != i; nFrom = pKeys[nTo].nAt) {
      pNames[nTo] = pNames[nFrom];
      pKeys[std::exchange(nTo, nFrom)].nAt = nTo;
    }
    pNames[nTo] = first;
    pKeys[nTo].nAt = nTo;
  }
}

// ---- Many keys ----------------------------------------------------------------------------------

// From here on distributing keys beats comparing them.
constexpr std::size_t kFewestToDistribute = 256;

// The bytes of a key, the least important first.
constexpr unsigned kDigits = sizeof(Key::nBytes) + sizeof(Key::nLength);
std::uint8_t Digit(const Key& key, unsigned nDigit) {
  return nDigit < kKeyBytes ? static_cast<std::uint8_t>(key.nBytes >> 8 * nDigit)
                            : static_cast<std::uint8_t>(key.nLength >> 8 * (nDigit - kKeyBytes));
}

// Sorts the keys by one byte of each; those that are equal in it keep their order.
void Distribute(std::vector<Key>& vKeys, std::vector<Key>& vSpare, unsigned nDigit) {
  std::size_t anNext[UINT8_MAX + 1] = {};
  for (const Key& key : vKeys) {
    ++anNext[Digit(key, nDigit)];
  }
  std::size_t nSum = 0;
  for (std::size_t& nNext : anNext) {
    nSum += std::exchange(nNext, nSum);
  }
  for (const Key& key : vKeys) {
    vSpare[anNext[Digit(key, nDigit)]++] = key;
  }
  vKeys.swap(vSpare);
}

// Sorts the keys by the bytes in which any two differ, and then those that are equal.
template <typename Less>
void SortByBytes(std::vector<Key>& vKeys, Less less) {
  std::vector<Key> vSpare(vKeys.size());
  Key differing = {0, 0, 0};
  for (const Key& key : vKeys) {
    differing.nBytes |= key.nBytes ^ vKeys[0].nBytes;
    differing.nLength |= key.nLength ^ vKeys[0].nLength;
  }
  for (unsigned nDigit = 0; nDigit < kDigits; ++nDigit) {
    if (Digit(differing, nDigit) != 0) Distribute(vKeys, vSpare, nDigit);
  }
  for (auto it = vKeys.begin(); it != vKeys.end();) {
    const auto last =
        std::find_if_not(it, vKeys.end(), [it](const Key& key) { return key == *it; });
    if (last - it > 1) std::sort(it, last, less);
    it = last;
  }
}

template <typename Less>
void SortMany(std::vector<Key>& vKeys, Less less) {
  const auto fresh = std::is_sorted_until(vKeys.begin(), vKeys.end(), less);
  if (static_cast<std::size_t>(vKeys.end() - fresh) >= kFewestToDistribute) {
    SortByBytes(vKeys, less);
  } else {
    std::sort(fresh, vKeys.end(), less);
    std::inplace_merge(vKeys.begin(), fresh, vKeys.end(), less);
  }
}

// Up to here keys need no memory.
constexpr std::size_t kFewKeys = 24;

}  // namespace

void SortNames(NameMap* pNames, std::size_t nCount, std::size_t nNew) {
  if (nCount < 2) return;
  if (nNew <= kMostNew && nNew < nCount) {
    InsertNewNames(pNames, pNames + nCount - nNew, pNames + nCount);
  } else if (nCount <= kFewKeys) {
    Key aKeys[kFewKeys];
    MakeKeys(aKeys, pNames, nCount);
    std::sort(aKeys, aKeys + nCount, LessFor(pNames));
    Follow(aKeys, pNames, nCount);
  } else {
    try {
      std::vector<Key> vKeys(nCount);
      MakeKeys(vKeys.data(), pNames, nCount);
      SortMany(vKeys, LessFor(pNames));
      Follow(vKeys.data(), pNames, nCount);
    } catch (const std::bad_alloc&) {
      std::sort(pNames, pNames + nCount, IsBefore);
    }
  }
}

}  // namespace JSON

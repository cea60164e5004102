// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Making and searching shapes: what happens when an object differs from the one before.

#include "json/Shapes.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "json/Storage.h"

namespace JSON {

bool Shape::MatchesRest(const char* p, const char* pEnd) const {
  if (pEnd - p <= nLength || p[nLength] != '"') {
    return false;
  }
  const std::size_t nRest = static_cast<std::size_t>(nLength - Block16::kBytes);
  return std::memcmp(p + Block16::kBytes, pName + Block16::kBytes, nRest) == 0;
}

Shape* Shape::Find(Shape** ppLonger, const char* p, const char* pEnd, int& nSeen) {
  nSeen = 0;
  for (Shape** ppLink = ppLonger; *ppLink != nullptr; ppLink = &(*ppLink)->pOther) {
    Shape* const pShape = *ppLink;
    if (pShape->Matches(p, pEnd)) {
      *ppLink = pShape->pOther;
      pShape->pOther = *ppLonger;
      *ppLonger = pShape;
      return pShape;
    }
    ++nSeen;
  }
  return nullptr;
}

Shape* Shape::Add(Arena& arena, Shape* pParent, Shape** ppLonger, const char* pName, int nLength) {
  Shape* const pShape = new (arena.Allocate(sizeof(Shape))) Shape;
  pShape->pParent = pParent;
  pShape->pBefore = *ppLonger;
  if (pShape->pBefore == nullptr && pParent != nullptr) {
    pShape->pBefore = pParent->pBefore;
  }
  pShape->pName = pName;
  pShape->nLength = nLength;
  pShape->nCount = pParent != nullptr ? pParent->nCount + 1 : 1;
  std::memset(pShape->aStart, 0, sizeof pShape->aStart);
  const int nBytes = std::min(nLength, Block16::kBytes);
  std::memcpy(pShape->aStart, pName, static_cast<std::size_t>(nBytes));
  if (nBytes < Block16::kBytes) {
    pShape->aStart[nBytes] = '"';
  }
  pShape->nMask = (1u << std::min(nLength + 1, Block16::kBytes)) - 1;
  pShape->pPlace = pShape->FindPlace(arena);
  pShape->pOther = *ppLonger;
  *ppLonger = pShape;
  return pShape;
}

// An object that has a member more or less than the one before is still made of the same things. So
// the values of a name that earlier objects had a little further on belong to the same place.
Place* Shape::FindPlace(Arena& arena) {
  constexpr int kLookAhead = 16;
  const Shape* pSame = pBefore;
  for (int i = 0; i < kLookAhead && pSame != nullptr; ++i, pSame = pSame->pLonger) {
    if (pSame->nLength == nLength &&
        std::memcmp(pSame->pName, pName, static_cast<std::size_t>(nLength)) == 0) {
      pBefore = pSame->pLonger;
      return pSame->pPlace;
    }
  }
  return new (arena.Allocate(sizeof(Place))) Place;
}

void Shape::CopyNames(ObjectValue& object) const {
  ObjectValue::NameMap* const pNames = Storage::NewNames(object, static_cast<std::size_t>(nCount));
  for (const Shape* pShape = this; pShape != nullptr; pShape = pShape->pParent) {
    ObjectValue::NameMap& name = pNames[pShape->nCount - 1];
    name.pName = pShape->pName;
    name.nLength = pShape->nLength;
    name.nOrdinal = pShape->nCount - 1;
  }
}

void Shape::GiveNames(Arena& arena, ObjectValue& object) {
  if (pIndex == nullptr) {
    // The first object to end here sorts its names, and lends them to all that follow.
    const std::size_t nNames = static_cast<std::size_t>(nCount);
    CopyNames(object);
    object.Sort();
    NameIndex* const pNew = new (arena.Allocate(sizeof(NameIndex))) NameIndex;
    pNew->pNames = Storage::Names(object);
    pNew->pPositions = static_cast<int*>(arena.Allocate(nNames * sizeof(int)));
    for (std::size_t i = 0; i < nNames; ++i) {
      pNew->pPositions[i] = Storage::Values(object.avValues)[i].nNameIndex;
    }
    Storage::LendNames(object);
    pIndex = Storage::BorrowsNames(object) ? pNew : nullptr;
    return;
  }
  Storage::BorrowNames(object, pIndex->pNames, static_cast<std::size_t>(nCount));
  const UnsafeJSONValue* const pValues = Storage::Values(object.avValues);
  const int* const pPositions = pIndex->pPositions;
  for (int i = 0; i < nCount; ++i) {
    pValues[i].nNameIndex = pPositions[i];
  }
  object.bSorted = true;
}

}  // namespace JSON

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Shapes when an object differs from the one before: search, new shapes, names of their own.

#include "json/Shapes.h"

#include <cstddef>
#include <new>

#include "json/Items.h"
#include "json/NameFinder.h"

namespace JSON {

Shape* Shape::Find(Shape** ppLonger, const char* p, const char* pEnd, int& nSeen) {
  nSeen = 0;
  for (Shape** ppLink = ppLonger; *ppLink != nullptr; ppLink = &(*ppLink)->pOther) {
    Shape* const pShape = *ppLink;
    if (pShape->name.Matches(p, pEnd)) {
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
  const ExpectedName name(pName, static_cast<std::size_t>(nLength));
  Shape* const pShape = new (arena.Allocate(sizeof(Shape))) Shape(pParent, name);
  pShape->pOther = *ppLonger;
  *ppLonger = pShape;
  return pShape;
}

void Shape::CopyNames(Arena& arena, ObjectValue& object) const {
  Sequence<ObjectValue::NameMap>& names = object.vNameMap;
  Items::Reserve(names, &arena, static_cast<std::size_t>(nCount));
  for (int i = 0; i < nCount; ++i) {
    Items::Append(names, &arena);
  }
  ObjectValue::NameMap* const pNames = Items::Data(names);
  for (const Shape* pShape = this; pShape != nullptr; pShape = pShape->pParent) {
    ObjectValue::NameMap& entry = pNames[pShape->nCount - 1];
    entry.pName = pShape->name.Text();
    entry.nLength = static_cast<int>(pShape->name.Length());
    entry.nOrdinal = pShape->nCount - 1;
  }
}

void Shape::GiveNames(Arena& arena, ObjectValue& object) {
  const UnsafeJSONValue* const pValues = Items::Data(object.avValues.vValues);
  if (pIndex == nullptr) {
    // The first object to end here sorts its names, and lends them to all that follow.
    const std::size_t nNames = static_cast<std::size_t>(nCount);
    CopyNames(arena, object);
    object.Sort();
    NameIndex* const pNew = new (arena.Allocate(sizeof(NameIndex))) NameIndex;
    pNew->pNames = Items::Data(object.vNameMap);
    pNew->pPositions = static_cast<int*>(arena.Allocate(nNames * sizeof(int)));
    // A complete object has as many values as names.
    for (std::size_t i = 0; i < nNames; ++i) {
      pNew->pPositions[i] = pValues[i].nNameIndex;
    }
    Items::Lend(object.vNameMap);
    pIndex = pNew;
    return;
  }
  Items::Share(object.vNameMap, pIndex->pNames, static_cast<std::size_t>(nCount));
  const int* const pPositions = pIndex->pPositions;
  // There are nCount positions, and as many values: the object is complete.
  for (int i = 0; i < nCount; ++i) {
    pValues[i].nNameIndex = pPositions[i];
  }
  NameFinder::NoteSorted(object);
}

}  // namespace JSON

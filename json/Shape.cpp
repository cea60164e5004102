// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Learning and searching shapes: what happens once per new kind of object.

#include "json/Shape.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "json/Storage.h"

namespace JSON {
namespace {

// Objects with more members are read without a shape.
constexpr int kMostMembers = 4096;

// How far ahead a name that is not the expected one is looked for.
constexpr int kLookAhead = 16;

}  // namespace

void ShapeMember::Learn(const ObjectValue::NameMap& name, int nPosition) {
  pName = name.pName;
  nLength = name.nLength;
  nNameIndex = nPosition;
  std::memset(aStart, 0, sizeof aStart);
  const int nBytes = std::min(nLength, Block16::kBytes);
  std::memcpy(aStart, pName, static_cast<std::size_t>(nBytes));
  if (nBytes < Block16::kBytes) {
    aStart[nBytes] = '"';
  }
  const int nCounted = std::min(nLength + 1, Block16::kBytes);
  nMask = (1u << nCounted) - 1;
}

bool ShapeMember::MatchesRest(const char* p, const char* pEnd) const {
  if (pEnd - p <= nLength || p[nLength] != '"') {
    return false;
  }
  const std::size_t nRest = static_cast<std::size_t>(nLength - Block16::kBytes);
  return std::memcmp(p + Block16::kBytes, pName + Block16::kBytes, nRest) == 0;
}

ShapeMember* Shape::Find(const char* pName, int nLength, int nFrom) {
  const int nTo = std::min(nCount, nFrom + kLookAhead);
  for (int i = nFrom; i < nTo; ++i) {
    ShapeMember& member = Members()[i];
    if (member.nLength == nLength &&
        std::memcmp(member.pName, pName, static_cast<std::size_t>(nLength)) == 0) {
      return &member;
    }
  }
  return nullptr;
}

Shape* Shape::Learn(Arena& arena, const ObjectValue& object, Shape* pOld, const Hint& others) {
  static_assert(sizeof(Shape) % alignof(ShapeMember) == 0, "members follow the shape");
  const int nCount = static_cast<int>(Storage::NameCount(object));
  if (nCount > kMostMembers) {
    return nullptr;
  }
  const std::size_t nBytes = sizeof(Shape) + static_cast<std::size_t>(nCount) * sizeof(ShapeMember);
  Shape* const pShape = new (arena.Allocate(nBytes)) Shape{nCount, Storage::Names(object)};
  for (int i = 0; i < nCount; ++i) {
    const ObjectValue::NameMap& name = pShape->pNames[i];
    ShapeMember* const pMember = new (pShape->Members() + name.nOrdinal) ShapeMember;
    pMember->Learn(name, i);
  }
  int nNext = 0;
  for (int i = 0; i < nCount; ++i) {
    ShapeMember& member = pShape->Members()[i];
    ShapeMember* const pSame =
        pOld != nullptr ? pOld->Find(member.pName, member.nLength, nNext) : nullptr;
    member.value = pSame != nullptr ? pSame->value : others;
    if (pSame != nullptr) {
      nNext = static_cast<int>(pSame - pOld->Members()) + 1;
    }
  }
  return pShape;
}

}  // namespace JSON

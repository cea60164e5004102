// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Shapes: what the objects of a document look like. The rows of a table repeat their member names
// in the same order, and so do most objects that stand at the same place of a document. A shape
// remembers the names of one object; the parser compares the names of the next one with it, sixteen
// bytes in one step, instead of searching their ends. When all of them agree, the sorted name index
// is the same, too, and the objects share it.
//
// Shapes live in the message's pool and last as long as one parse. They change nothing that can be
// observed: an object that differs is read as if there were no shape.

#ifndef QXRECORDSET_JSON_SHAPE_H
#define QXRECORDSET_JSON_SHAPE_H

#include <cstdint>

#include "json/Arena.h"
#include "json/Block.h"
#include "json/JSONValue.h"

namespace JSON {

struct Shape;

// What was last seen at one place of the document: among the elements of an array, or as the value
// of one member of a shape.
struct Hint {
  Shape* pShape = nullptr;      // the last object
  std::uint32_t nElements = 0;  // elements of the last array
  std::uint32_t nMisses = 0;    // objects that differed since one agreed

  // A place where objects keep differing is given a new shape less and less often.
  bool WorthLearning() const {
    constexpr std::uint32_t kAlways = 8;
    constexpr std::uint32_t kEvery = 64;
    return nMisses < kAlways || nMisses % kEvery == 0;
  }
};

struct ShapeMember {
  const char* pName;
  int nLength;
  int nNameIndex;                // the name's position in the sorted name index
  std::uint32_t nMask;           // which bytes of aStart count
  char aStart[Block16::kBytes];  // the first bytes of the name and its closing quote
  Hint value;                    // what was last seen as this member's value

  void Learn(const ObjectValue::NameMap& name, int nPosition);

  // Whether the text at p, behind an opening quote, is this name and a closing quote. False also
  // where fewer than 16 bytes are left: the caller then reads the name the plain way.
  bool Matches(const char* p, const char* pEnd) const {
    if (pEnd - p < Block16::kBytes) {
      return false;
    }
    if ((Block16::Load(p).Equals(Block16::Load(aStart)) & nMask) != nMask) {
      return false;
    }
    return nLength < Block16::kBytes || MatchesRest(p, pEnd);
  }

 private:
  bool MatchesRest(const char* p, const char* pEnd) const;
};

struct Shape {
  int nCount;
  ObjectValue::NameMap* pNames;  // the sorted name index, shared by all objects of this shape

  // The members in document order; they follow the shape in memory.
  ShapeMember* Members() { return reinterpret_cast<ShapeMember*>(this + 1); }

  // The member of that name among the next few from `nFrom` on, or null.
  ShapeMember* Find(const char* pName, int nLength, int nFrom);

  // A shape of an object whose names have just been sorted. What its members' values looked like is
  // taken over from `pOld` where the names are the same, and is `others` elsewhere. Null when the
  // object has too many members to be worth it.
  static Shape* Learn(Arena& arena, const ObjectValue& object, Shape* pOld, const Hint& others);
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_SHAPE_H

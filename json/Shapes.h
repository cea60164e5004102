// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Shapes: what the objects of a document look like. The rows of a table repeat their member names
// in the same order, and so do most objects that stand at the same place of a document.
//
// A Shape stands for the names that an object begins with: those of its parent shape and one more.
// The shapes of a Place form a tree in which every object is a way down from the top:
//
//   id - name - price               {"id":1,"name":"a","price":2}
//             \ size - price        {"id":2,"name":"b","size":9,"price":3}
//
// The parser goes down as it reads. The name it expects next is compared with the text in one step
// of sixteen bytes, instead of searching for the name's end; and objects that end at the same shape
// have the same names in the same order, so they share one sorted name index.
//
// Shapes live in the message's pool and last for one parse. They change nothing that can be
// observed.

#ifndef QXRECORDSET_JSON_SHAPES_H
#define QXRECORDSET_JSON_SHAPES_H

#include <cstdint>

#include "json/Arena.h"
#include "json/JSONValue.h"
#include "text/ExpectedName.h"

namespace JSON {

struct Shape;

// What was seen so far at one place of the document: among the elements of an array, or as the
// values of one member.
struct Place {
  Shape* pShapes = nullptr;     // the objects' first names
  std::uint32_t nElements = 0;  // elements of the last array
  std::uint32_t nMembers = 0;   // members of the last object
  // Blanks in front of the last member and of the last element that began a line.
  std::uint32_t nMemberIndent = 0;
  std::uint32_t nElementIndent = 0;
};

// The sorted names of all objects of one shape.
struct NameIndex {
  ObjectValue::NameMap* pNames;
  int* pPositions;  // for each ordinal the position of its name
};

struct Shape {
  // From here on an object is read without shapes: it is a dictionary rather than a record.
  static constexpr int kMostNames = 1024;
  // The same for the number of names that may follow the same names: they are searched one by one.
  static constexpr int kMostAlternatives = 8;

  Shape* pParent;               // one name less; null for the first name
  Shape* pLonger = nullptr;     // one name more; the one seen last comes first
  Shape* pOther = nullptr;      // another one with the same parent
  Place place;                  // the values of the last name
  NameIndex* pIndex = nullptr;  // there as soon as an object ended here
  int nCount;                   // names in all
  ExpectedName name;            // the last name

  Shape(Shape* pShorter, const ExpectedName& last)
      : pParent(pShorter), nCount(pShorter != nullptr ? pShorter->nCount + 1 : 1), name(last) {}

  // A new shape in front of those that `ppLonger` leads to.
  static Shape* Add(Arena& arena, Shape* pParent, Shape** ppLonger, const char* pName, int nLength);

  // Among the shapes behind the first of *ppLonger, the one whose name stands at p, which becomes
  // the first. Null when there is none; `nSeen` is the number of shapes there are.
  static Shape* Find(Shape** ppLonger, const char* p, const char* pEnd, int& nSeen);

  // Gives a finished object of this shape its names, and their positions to its values.
  void GiveNames(Arena& arena, ObjectValue& object);

  // Gives an object its own, unsorted names: it goes on, or ends, otherwise than shapes can tell.
  void CopyNames(Arena& arena, ObjectValue& object) const;
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_SHAPES_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Shapes: the sequences of member names of a document's objects. The rows of a table repeat their
// names in the same order, and so do most objects at the same place of a document.
//
// A Shape is a name behind the names of its parent shape. The shapes of a Place form a tree, and an
// object is a path in it that begins at the top:
//
//   id - name - price               {"id":1,"name":"a","price":2}
//             \ size - price        {"id":2,"name":"b","size":9,"price":3}
//
// The parser follows the path as it reads. The name that it expects next is compared with the text
// in one step of sixteen bytes, instead of searching for the name's end; and objects that end at
// the same shape have the same names in the same order, so they share one sorted name index.
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
  // An object with more names is read without shapes: it is a dictionary rather than a record.
  static constexpr int kMostNames = 1024;
  // The same for more names behind the same parent, since these are searched one by one: without
  // the bound, the parse of a document of dictionaries takes more than twice the instructions.
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

  // A new shape, as the first of the list *ppLonger.
  static Shape* Add(Arena& arena, Shape* pParent, Shape** ppLonger, const char* pName, int nLength);

  // The shape of the list *ppLonger whose name is at p; it becomes the first of the list, so that a
  // rare name is not expected in all rows that follow it. Null when there is none; `nSeen` is then
  // the length of the list.
  static Shape* Find(Shape** ppLonger, const char* p, const char* pEnd, int& nSeen);

  // Gives a finished object of this shape its names, and their positions to its values.
  void GiveNames(Arena& arena, ObjectValue& object);

  // Gives an object names of its own, not sorted: it has names that are no shapes, or failed.
  void CopyNames(Arena& arena, ObjectValue& object) const;
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_SHAPES_H

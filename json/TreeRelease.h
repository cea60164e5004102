// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Releasing what a tree owns, without recursion: a tree of any depth that could be built can be
// released, and no memory is needed for it.

#ifndef QXRECORDSET_JSON_TREERELEASE_H
#define QXRECORDSET_JSON_TREERELEASE_H

#include "json/JSONValue.h"

namespace JSON {

// Releases a container with everything below it. One on the heap is destroyed; one in a pool is
// left empty, owning nothing. Null is nothing.
void Release(CompositeValue* pComposite) noexcept;

// Releases what the elements own and removes them. Their storage stays.
void ReleaseElements(ArrayValue& array) noexcept;

// The same for an object's names.
void ReleaseNames(ObjectValue& object) noexcept;

}  // namespace JSON

#endif  // QXRECORDSET_JSON_TREERELEASE_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Copying a tree for another text buffer. Texts and names that lie in the source's buffer are not
// copied: their pointers move by the distance between the two buffers. Owned ones are duplicated.

#ifndef QXRECORDSET_JSON_TREECOPY_H
#define QXRECORDSET_JSON_TREECOPY_H

#include <cstddef>

#include "json/JSONValue.h"

namespace JSON {

class TreeCopy {
 public:
  // The copy's containers are taken from `pTarget`, or from the heap when it is null.
  TreeCopy(std::ptrdiff_t nDelta, Arena* pTarget) : nDelta_(nDelta), pArena_(pTarget) {}

  // A new container with copies of everything in `source`, which a host's own kind makes itself.
  CompositeValue* Clone(const CompositeValue& source);

  // The same for one of the two kinds there are, or of its subclasses: a Container it will be.
  template <typename Container>
  Container* CloneAs(const Container& source);

  // Appends copies to a container that is there already.
  void Append(const ArrayValue& source, ArrayValue& target);
  void Append(const ObjectValue& source, ObjectValue& target);

 private:
  void AppendNames(const ObjectValue& source, ObjectValue& target);

  const char* Moved(const char* pText) const;

  const std::ptrdiff_t nDelta_;
  Arena* const pArena_;

  // Sibling objects that share their names share them in the copy, too.
  const ObjectValue::NameMap* pSharedSource_ = nullptr;
  ObjectValue::NameMap* pSharedCopy_ = nullptr;
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_TREECOPY_H

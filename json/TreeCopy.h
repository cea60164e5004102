// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Copying a tree for another text buffer. Texts and names that lie in the source's buffer are not
// copied: their pointers move by the distance between the two buffers. Owned ones are duplicated.
//
// The copy of a message knows the buffer, and duplicates what lies elsewhere as well: a value that
// came from another document, or a text that a host put there. Then nothing in the copy depends on
// anything but the copy.

#ifndef QXRECORDSET_JSON_TREECOPY_H
#define QXRECORDSET_JSON_TREECOPY_H

#include <cstddef>
#include <cstdint>

#include "json/JSONValue.h"
#include "json/Levels.h"

namespace JSON {

class Arena;

class TreeCopy {
 public:
  // A copy on the heap in which every text that is not owned moves by `nDelta` bytes.
  explicit TreeCopy(std::ptrdiff_t nDelta);

  // A copy for a buffer at pTo of what belongs to the buffer from pFrom to pFromEnd, in a pool.
  TreeCopy(const char* pFrom, const char* pFromEnd, const char* pTo, Arena* pPool);

  // Appends copies of what `source` holds. Every step leaves a target that can be released.
  void Append(const ArrayValue& source, ArrayValue& target);
  void Append(const ObjectValue& source, ObjectValue& target);

 private:
  // An array of which the elements before pNext are copied.
  struct Level {
    const UnsafeJSONValue* pNext;
    const UnsafeJSONValue* pEnd;
    ArrayValue* pTarget;
  };

  bool Enter(const ArrayValue& source, ArrayValue& target);
  void Run();
  bool CopyElements(Level& level, ArrayValue& target);
  const UnsafeJSONValue* CopyPlain(const UnsafeJSONValue* p, const UnsafeJSONValue* pEnd,
                                   ArrayValue& target) const;
  static void CopyText(const UnsafeJSONValue& source, UnsafeJSONValue& copy);
  bool CopyContainer(const CompositeValue& source, ArrayValue& holder, UnsafeJSONValue& copy);
  void CopyNames(const ObjectValue& source, ObjectValue& target);
  bool CopyName(const ObjectValue::NameMap& source, ObjectValue& target);

  bool MovesAlong(const char* pText) const;
  const char* Moved(const char* pText) const;

  const std::uintptr_t nFrom_;      // where the buffer begins whose texts move along,
  const std::uintptr_t nFromSize_;  // its bytes,
  const std::uintptr_t nDelta_;     // and how far they move
  Arena* const pPool_;              // where the copy's containers come from; null: the heap
  Levels<Level> levels_;

  // Objects that share their names share them in the copy, too. The pairs seen last, each in the
  // place that its address gives: others that come to the same place only cost a copy of their own.
  struct SharedNames {
    const ObjectValue::NameMap* pSource = nullptr;
    ObjectValue::NameMap* pCopy = nullptr;
  };
  static constexpr std::size_t kShared = 31;  // a prime: the addresses have common factors
  SharedNames aShared_[kShared];
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_TREECOPY_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The lives of trees: a message that copies its text or parses in place, or a container that a host
// makes by hand. A step goes down to some value of the tree, the root included, and does something
// to it there; lives of one world copy and move values between each other.

#ifndef QXRECORDSET_TESTS_SUPPORT_LIVES_TREELIFE_H
#define QXRECORDSET_TESTS_SUPPORT_LIVES_TREELIFE_H

#include <memory>

#include "tests/support/lives/Life.h"

namespace Support {

enum class TreeKind { kCopying, kInPlace, kObject, kArray, kHostObject, kHostArray };

std::unique_ptr<Life> MakeTreeLife(World& common, TreeKind kind);

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_LIVES_TREELIFE_H

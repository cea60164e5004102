// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The model of a tree: what updates, copies and moves do to a Plain::Value.

#ifndef QXRECORDSET_TESTS_SUPPORT_LIVES_TREEMODEL_H
#define QXRECORDSET_TESTS_SUPPORT_LIVES_TREEMODEL_H

#include <cstddef>
#include <optional>
#include <string>

#include "tests/support/PlainParser.h"
#include "tests/support/Random.h"

namespace Support {

using Node = Plain::Value;
using Home = Node::Home;
using Text = std::optional<std::string>;

// What the update operations do, under an ordinal or a name; null when they store nothing.
Node* UpdateModel(Node& node, int nOrdinal, const Text& text, int eType);
Node* UpdateModel(Node& node, const Text& name, const Text& text, int eType);

// The value gets another text, or a new empty container.
void GiveText(Node& node, const Text& text, const std::string& strRest = "");
void GiveContainer(Node& node, bool bObject, Home home);
void Empty(Node& node);

// A copy whose containers lie at `home`. Where those of a host's own kind get to is not known in a
// pool.
Node CopyAt(const Node& node, Home home);

// Whether every container is known to lie on the heap.
bool AllOnHeap(const Node& node);

// Whether all members have a name and all names a member. A parse that fails may leave one more.
bool NamesMatch(const Node& node);

// Values in the tree; bytes that they may take, all in all.
std::size_t Count(const Node& node);
std::size_t NeedOf(const Node& node);

// A document of about `nSize` values: numbers, texts, rows, members or levels.
std::string SizedText(Random& random, std::size_t nSize);

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_LIVES_TREEMODEL_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The model of a tree: what updates do to a Plain::Value.

#ifndef QXRECORDSET_TESTS_SUPPORT_LIVES_TREEMODEL_H
#define QXRECORDSET_TESTS_SUPPORT_LIVES_TREEMODEL_H

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "tests/support/CountedMemory.h"
#include "tests/support/PlainParser.h"
#include "tests/support/Random.h"

namespace Support {

using CountedMemory::Aside;
using Node = Plain::Value;
using Text = std::optional<std::string>;

inline void Empty(Node& node) {
  node.vValues.clear();
  node.vNames.clear();
}

inline void GiveText(Node& node, const Text& text, const std::string& strRest = "") {
  const Aside aside;
  node.text = text;
  node.strRest = strRest;
}

inline void GiveContainer(Node& node, bool bObject) {
  Empty(node);
  node.bContainer = true;
  node.bObject = bObject;
  node.eType = bObject ? JSON::jtObject : JSON::jtArray;
}

// What the update operations do, under an ordinal or a name; null when they store nothing.
inline Node* UpdateModel(Node& node, int nOrdinal, const Text& text, int eType) {
  const Aside aside;
  if (!node.bContainer) GiveContainer(node, false);
  const auto n = static_cast<std::size_t>(nOrdinal);
  if (nOrdinal < 0 || (node.bObject && n >= node.vValues.size())) return nullptr;
  if (node.bObject) node.vNames.resize(node.vValues.size());
  Node filler;
  filler.eType = JSON::jtNull;
  if (n >= node.vValues.size()) node.vValues.resize(n + 1, filler);
  node.vValues[n] = Node();
  node.vValues[n].eType = eType;
  node.vValues[n].text = text;
  return &node.vValues[n];
}
inline Node* UpdateModel(Node& node, const Text& name, const Text& text, int eType) {
  const Aside aside;
  if (!node.bContainer) GiveContainer(node, true);
  if (!node.bObject || !name) return nullptr;
  node.vNames.resize(node.vValues.size());  // without the name of a value that failed
  const auto found = std::find(node.vNames.begin(), node.vNames.end(), *name);
  const auto nOrdinal = static_cast<int>(found - node.vNames.begin());
  if (found == node.vNames.end()) {
    node.vNames.push_back(*name);
    node.vValues.emplace_back();
  }
  return UpdateModel(node, nOrdinal, text, eType);
}

// Values in the tree.
inline std::size_t Count(const Node& node) {
  std::size_t n = 1;
  for (const Node& value : node.vValues)
    n += Count(value);
  return n;
}

// A document of about `nSize` values of one form, or levels.
inline std::string SizedText(Random& random, std::size_t nSize) {
  static constexpr std::string_view kForms[] = {"[#", "[\"t#\"", R"([{"a":#,"b":"x"})", "{\"k#\":#",
                                                "{\"k#\":\"t#\""};
  std::string strText;
  if (random.OneIn(6)) {
    const std::size_t nPairs = std::min<std::size_t>(nSize, JSON::kMaxNesting) / 2;
    for (std::size_t i = 0; i < nPairs; ++i)
      strText = "[{\"n\":" + strText + (i == 0 ? "0}]" : "}]");
    return nPairs == 0 ? "[]" : strText;
  }
  const std::string_view form = random.Of(kForms);
  for (std::size_t i = 0; i < nSize; ++i) {
    strText += i > 0 ? ',' : form[0];
    for (const char c : form.substr(1))
      strText += c == '#' ? std::to_string(i * 7919 % 100003) : std::string(1, c);
  }
  return nSize == 0 ? "{}" : strText + (form[0] == '[' ? ']' : '}');
}

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_LIVES_TREEMODEL_H

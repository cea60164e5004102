// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The model of a tree.

#include "tests/support/lives/TreeModel.h"

#include <algorithm>
#include <utility>

#include "tests/support/CountedMemory.h"

using CountedMemory::Aside;

namespace Support {
namespace {

void BecomeContainer(Node& node, bool bObject) {
  if (node.bContainer) return;
  GiveContainer(node, bObject, Home::kHeap);
  node.eType = bObject ? JSON::jtObject : JSON::jtArray;
}

}  // namespace

Node* UpdateModel(Node& node, int nOrdinal, const Text& text, int eType) {
  const Aside aside;
  BecomeContainer(node, false);
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

Node* UpdateModel(Node& node, const Text& name, const Text& text, int eType) {
  const Aside aside;
  BecomeContainer(node, true);
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

void GiveText(Node& node, const Text& text, const std::string& strRest) {
  const Aside aside;
  node.text = text;
  node.strRest = strRest;
}

void GiveContainer(Node& node, bool bObject, Home home) {
  Empty(node);
  node.bContainer = true;
  node.bObject = bObject;
  node.home = home;
}

void Empty(Node& node) {
  node.vValues.clear();
  node.vNames.clear();
}

Node CopyAt(const Node& node, Home home) {
  const Aside aside;
  Node copy = node;
  const bool bHosts = node.home == Home::kHost || node.home == Home::kAnywhere;
  copy.home = bHosts && home == Home::kPool ? Home::kAnywhere : home;
  for (Node& value : copy.vValues)
    value = CopyAt(value, copy.home);
  return copy;
}

bool AllOnHeap(const Node& node) {
  const bool bHere = !node.bContainer || node.home == Home::kHeap || node.home == Home::kHost;
  return bHere && std::all_of(node.vValues.begin(), node.vValues.end(), AllOnHeap);
}

bool NamesMatch(const Node& node) {
  return !node.bObject || node.vNames.size() == node.vValues.size();
}

std::size_t Count(const Node& node) {
  std::size_t n = 1;
  for (const Node& value : node.vValues)
    n += Count(value);
  return n;
}

std::size_t NeedOf(const Node& node) {
  std::size_t n = 100 + 2 * (node.text.value_or("").size() + node.strRest.size());
  if (node.bContainer) n += 300;
  for (const std::string& name : node.vNames)
    n += 100 + 2 * name.size();
  for (const Node& value : node.vValues)
    n += NeedOf(value);
  return n;
}

std::string SizedText(Random& random, std::size_t nSize) {
  const std::uint32_t nForm = random.Below(6);
  std::string strText;
  if (nForm == 0) {
    nSize = std::min<std::size_t>(nSize, JSON::kMaxNesting - 1);
    for (std::size_t i = 0; i < nSize; ++i)
      strText += i % 2 == 0 ? "[" : "{\"n\":";
    if (nSize % 2 == 0) strText += "0";
    for (std::size_t i = nSize; i-- > 0;)
      strText += i % 2 == 0 ? ']' : '}';
    return '[' + strText + ']';
  }
  const bool bObject = nForm > 3;
  for (std::size_t i = 0; i < nSize; ++i) {
    const std::string strNumber = std::to_string(i * 7919 % 100003);
    strText += i > 0 ? "," : "";
    if (bObject) strText += "\"k" + strNumber + "\":";
    if (nForm == 1 || nForm == 4) strText += strNumber;
    if (nForm == 2 || nForm == 5) strText += "\"t" + strNumber + "\"";
    if (nForm == 3) strText += R"({"a":)" + strNumber + R"(,"b":"x"})";
  }
  return (bObject ? '{' : '[') + strText + (bObject ? '}' : ']');
}

}  // namespace Support

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Support::UpdatePlayer plays updates, copies and parses on two messages, one that copies its text
// and one that parses in place, and does the same to a model of each in standard containers.

#ifndef QXRECORDSET_TESTS_SUPPORT_UPDATEPLAYER_H
#define QXRECORDSET_TESTS_SUPPORT_UPDATEPLAYER_H

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <list>
#include <optional>
#include <utility>
#include <vector>

#include "json/JSONMessage.h"
#include "tests/support/Author.h"
#include "tests/support/PlainParser.h"
#include "tests/support/Random.h"

namespace Support {
class UpdatePlayer {
 public:
  explicit UpdatePlayer(const Random& choices) : random(choices) {}

  // Takes one step and compares the message it was about with its model: tree, lookups and text.
  // The first difference, or "".
  std::string Step() {
    Pair& pair = random.Of(pairs);
    strFault.clear();
    Step(pair);
    return strFault.empty() ? Plain::Difference(pair.model, pair.message) : strFault;
  }

  // See Random::UsedUp.
  bool UsedUp() const { return random.UsedUp(); }

 private:
  using JSONValue = JSON::JSONValue;
  using ObjectValue = JSON::ObjectValue;

  // A value of the model, and a text of it, or none.
  using Node = Plain::Value;
  using Text = std::optional<std::string>;
  static Text Copied(const char* text) { return text == nullptr ? Text() : Text(text); }
  static int Copied(int nOrdinal) { return nOrdinal; }

  static void BecomeContainer(Node& node, bool bObject) {
    if (node.bContainer) return;
    node.bContainer = true;
    node.bObject = bObject;
    node.eType = bObject ? JSON::jtObject : JSON::jtArray;
  }

  // What the update operations do, under an ordinal or a name; null when they store nothing.
  static Node* UpdateModel(Node& node, int nOrdinal, const Text& text, int eType) {
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
  static Node* UpdateModel(Node& node, const Text& name, const Text& text, int eType) {
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

  static std::size_t Count(const Node& node) {
    std::size_t n = 1;
    for (const Node& value : node.vValues)
      n += Count(value);
    return n;
  }

  static JSONValue* InternalUpdate(JSONValue& value, int nOrdinal, const char* text,
                                   JSON::Type eType) {
    return value.InternalUpdateByOrdinal(nOrdinal, text, eType);
  }
  static JSONValue* InternalUpdate(JSONValue& value, const char* name, const char* text,
                                   JSON::Type eType) {
    return value.InternalUpdateByName(name, text, eType);
  }

  static constexpr const char* kNames[] = {"", "a", "b", "c", "aa", "0", "\xC3\xA9\n"};
  static constexpr const char* kLongNames[] = {"column_of_15_by", "column_of_16_byt",
                                               "column_of_17_byte"};
  static constexpr const char* kTexts[] = {"",        "text",       "true",         "12",
                                           "-7.5e3x", "\"\\\x01\n", "a longer text"};

  // A message and its model.
  struct Pair {
    explicit Pair(bool bInPlace) : message(bInPlace) {}
    JSON::Message message;
    Node model;
  };

  void Expect(bool bHolds, const char* what) {
    if (!bHolds) strFault = what;
  }

  void Step(Pair& pair) {
    if (Count(pair.model) > 200 || random.OneIn(25)) return Parse(pair);
    if (random.OneIn(25)) return Copy(pair);
    // Down to some value, in the message and in the model.
    JSONValue* pValue = &pair.message;
    Node* pNode = &pair.model;
    JSON::CompositeValue* pParent = nullptr;
    while (!pNode->vValues.empty() && !random.OneIn(3)) {
      const std::uint32_t n = random.Below(pNode->vValues.size());
      pParent = pValue->pComposite;
      pValue = &(*pValue)[static_cast<int>(n)];
      pNode = &pNode->vValues[n];
    }
    const bool bWasScalar = !pNode->bContainer;
    Change(*pValue, *pNode, pParent != nullptr);
    if (pParent != nullptr && bWasScalar) pParent->MakeMap();  // does not follow changes from below
  }

  void Change(JSONValue& value, Node& node, bool bElement) {
    if (node.bContainer && random.OneIn(20)) {
      node.vValues.clear();
      node.vNames.clear();
      return value.pComposite->Clear();
    }
    if (bElement && random.OneIn(20)) {
      node.text = random.Of(kTexts);
      return value.InternalUpdateValue(node.text->c_str());
    }
    if (node.bContainer && random.OneIn(12)) return AppendClone(value, node);
    if (random.OneIn(2)) {
      Update(value, node, static_cast<int>(random.Below(node.vValues.size() + 4)) - 1);
    } else if (node.bObject && !node.vNames.empty() && random.OneIn(3)) {
      const int nMember = static_cast<int>(random.Below(node.vNames.size()));
      Update(value, node, value.pComposite->NameAt(nMember));
    } else {
      const char* name = random.OneIn(3) ? random.Of(kLongNames) : random.Of(kNames);
      Update(value, node, random.OneIn(20) ? nullptr : name);
    }
  }

  // One of the update operations under `key`, a name or an ordinal.
  template <typename Key>
  void Update(JSONValue& value, Node& node, Key key) {
    // The key may be a name of this very object, and the text one from below it.
    const auto kept = Copied(key);
    const auto Compare = [&](const JSONValue& stored, const Text& text, int eType) {
      const JSONValue* pExpected = &JSONValue::None();
      if (const Node* pStored = UpdateModel(node, kept, text, eType))
        pExpected = value.GetByOrdinal(static_cast<int>(pStored - node.vValues.data()));
      Expect(&stored == pExpected, "what an update returns");
    };
    const int n = static_cast<int>(random.Below(100000)) - 50000;
    const bool b = n % 2 == 0;
    const double d = n / 7.0;
    const long l = n * 40000L;
    const char* text = random.Of(kTexts);
    switch (random.Below(9)) {
      case 0:
        return Compare(value.Set(key, n), std::to_string(n), JSON::jtInteger);
      case 1:
        return Compare(value.Set(key, l), std::to_string(l), JSON::jtInteger);
      case 2:
        return Compare(value.Set(key, b), b ? "true" : "false", JSON::jtBoolean);
      case 3: {
        char szText[32];
        std::snprintf(szText, sizeof szText, "%g", d);
        return Compare(value.Set(key, d), szText, JSON::jtDouble);
      }
      case 4:
        return Compare(value.SetNull(key), Text(), JSON::jtNull);
      case 5: {
        const JSON::Type eType = static_cast<JSON::Type>(static_cast<int>(random.Below(9)) - 1);
        if (random.OneIn(4)) text = nullptr;
        const JSONValue* pStored = InternalUpdate(value, key, text, eType);
        return Compare(pStored == nullptr ? JSONValue::None() : *pStored, Copied(text), eType);
      }
      case 6:  // a text of the tree, when it is a terminated one
        text = value.pText;
        if (!node.vValues.empty())
          text = value[static_cast<int>(random.Below(node.vValues.size()))].pText;
        [[fallthrough]];
      default: {
        const Text before = Copied(text);
        return Compare(value.Set(key, text), before, JSON::jtString);
      }
    }
  }

  // The container gets a copy of itself as its last element; an object under one of its names that
  // lies in the message's buffer.
  void AppendClone(JSONValue& value, Node& node) {
    auto* const pObject = dynamic_cast<ObjectValue*>(value.pComposite);
    JSON::UnsafeJSONValue name(JSON::jtString);
    if (pObject != nullptr) {
      if (node.vNames.empty() || node.vNames.size() != node.vValues.size()) return;
      const ObjectValue::NameMap& entry = random.Of(std::as_const(pObject->vNameMap));
      if (entry.bOwnsName) return;
      name.pText = entry.pName;
      name.nLength = entry.nLength;
    }
    JSON::UnsafeJSONValue clone(pObject != nullptr ? JSON::jtObject : JSON::jtArray);
    clone.pComposite = value.pComposite->Clone(0);
    Node copy = node;
    copy.eType = clone.eType;
    copy.text.reset();
    node.vValues.push_back(std::move(copy));
    if (pObject != nullptr) {
      node.vNames.emplace_back(name.pText, static_cast<std::size_t>(name.nLength));
      pObject->AddName(name);
    }
    value.pComposite->AddValue(clone);
    value.pComposite->MakeMap();
    if (pObject != nullptr) pObject->Sort();
  }

  void Parse(Pair& pair) {
    Author author(random.Below(1 << 16));
    std::string strText = author.Document(random.OneIn(2) ? Kind::kRows : Kind::kMixed);
    for (std::size_t n = random.Below(3); n > 0; --n)
      author.Damage(strText);
    strText.resize(std::strlen(strText.c_str()));
    const Plain::Document document = Plain::Parse(strText);
    const char* pText = strText.c_str();
    if (pair.message.bInPlace) pText = vTexts.emplace_back(strText).c_str();
    Expect(pair.message.Parse(pText) == document.bAccepted, "result of Parse");
    if (document.bRoot || !pair.message.bInPlace) pair.model = document.root;
  }

  void Copy(Pair& pair) {
    Pair& other = random.Of(pairs);  // maybe the same one
    const std::uint32_t nHow = random.Below(3);
    if (nHow == 0) other.message.CopyTo(pair.message);
    if (nHow == 1) pair.message = other.message;
    if (nHow == 2) pair.message = JSON::Message(other.message);
    pair.model = Node(other.model);
  }

  Random random;
  std::string strFault;           // what went wrong in this step
  std::list<std::string> vTexts;  // what the in-place messages were parsed over
  Pair pairs[2] = {Pair(false), Pair(true)};
};

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_UPDATEPLAYER_H

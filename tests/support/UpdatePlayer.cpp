// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The model, and the steps in the message and in the model.

#include "tests/support/UpdatePlayer.h"

#include <algorithm>
#include <cstdio>
#include <list>
#include <optional>
#include <utility>
#include <vector>

#include "json/JSONMessage.h"
#include "tests/support/PlainParser.h"

namespace {

using JSON::JSONValue;
using JSON::Message;
using JSON::ObjectValue;
using JSON::Type;

// A value of the model, and a text of it, or none.
using Node = Plain::Value;
using Text = std::optional<std::string>;
Text Copied(const char* text) { return text == nullptr ? Text() : Text(text); }
int Copied(int nOrdinal) { return nOrdinal; }

void BecomeContainer(Node& node, bool bObject) {
  if (node.bContainer) return;
  node.bContainer = true;
  node.bObject = bObject;
  node.eType = bObject ? JSON::jtObject : JSON::jtArray;
}

// What the update operations do, under an ordinal or a name; null when they store nothing.
Node* Update(Node& node, int nOrdinal, const Text& text, int eType) {
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
Node* Update(Node& node, const Text& name, const Text& text, int eType) {
  BecomeContainer(node, true);
  if (!node.bObject || !name) return nullptr;
  node.vNames.resize(node.vValues.size());  // without the name of a value that failed
  const auto found = std::find(node.vNames.begin(), node.vNames.end(), *name);
  const auto nOrdinal = static_cast<int>(found - node.vNames.begin());
  if (found == node.vNames.end()) {
    node.vNames.push_back(*name);
    node.vValues.emplace_back();
  }
  return Update(node, nOrdinal, text, eType);
}

std::size_t Count(const Node& node) {
  std::size_t n = 1;
  for (const Node& value : node.vValues)
    n += Count(value);
  return n;
}

JSONValue* InternalUpdate(JSONValue& value, int nOrdinal, const char* text, Type eType) {
  return value.InternalUpdateByOrdinal(nOrdinal, text, eType);
}
JSONValue* InternalUpdate(JSONValue& value, const char* name, const char* text, Type eType) {
  return value.InternalUpdateByName(name, text, eType);
}

constexpr const char* kNames[] = {"", "a", "b", "c", "aa", "0", "\xC3\xA9\n"};
constexpr const char* kLongNames[] = {"column_of_15_by", "column_of_16_byt", "column_of_17_byte"};
constexpr const char* kTexts[] = {"",        "text",       "true",         "12",
                                  "-7.5e3x", "\"\\\x01\n", "a longer text"};
constexpr const char* kDocuments[] = {
    "[]",
    "{}",
    "{ ",
    "12",
    "[1,,2.5,\"t\\u0065xt\\u0000!\"]",
    "[[[[]]],{\"a\":{\"b\":[0]}}]",
    R"([{"a":1,"b":"x","name":null},{"a":2,"b":"y","name":true},{"a":3,"b":"z","name":[]}])",
    R"({"rows":[{"a":1,"b":2},{"a":3,"b":4},{"a":5,"c":6},{"a":7,"b":8}],"a":"b","a":"c"})",
    R"([{"a":1,"b":2},{"a":3,"b":?)",
    R"({"a":{"b":[1,{"c":tru)",
    R"(["a","b","unfinished)"};

// A message and its model.
struct Pair {
  explicit Pair(bool bInPlace) : message(bInPlace) {}
  Message message;
  Node model;
};

}  // namespace

class Support::UpdatePlayer::Player {
 public:
  explicit Player(const Random& choices) : random(choices) {}

  std::string Step() {
    Pair& pair = random.Of(pairs);
    strFault.clear();
    Step(pair);
    if (!strFault.empty()) return strFault;
    std::string strDifference = Plain::Difference(pair.model, pair.message);
    if (strDifference.empty()) strDifference = Plain::LookupDifference(pair.model, pair.message);
    if (!strDifference.empty()) return "tree: " + strDifference;
    std::string strExpected;
    std::string strWritten;
    const bool bExpected = Plain::Write(pair.model, strExpected);
    if (pair.message.Serialize(strWritten) != bExpected) return "result of Serialize";
    if (strWritten == strExpected) return "";
    return "text: " + strWritten + " instead of " + strExpected;
  }

  bool UsedUp() const { return random.UsedUp(); }

 private:
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
    if (node.bContainer && random.OneIn(20)) return Empty(value, node);
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
      if (const Node* pStored = ::Update(node, kept, text, eType))
        pExpected = value.GetByOrdinal(static_cast<int>(pStored - node.vValues.data()));
      Expect(&stored == pExpected, "what an update returns");
    };
    const int n = static_cast<int>(random.Below(100000)) - 50000;
    switch (random.Below(9)) {
      case 0:
        return Compare(value.Set(key, n), std::to_string(n), JSON::jtInteger);
      case 1:
        return Compare(value.Set(key, n * 40000L), std::to_string(n * 40000L), JSON::jtInteger);
      case 2:
        return Compare(value.Set(key, n % 2 == 0), n % 2 == 0 ? "true" : "false", JSON::jtBoolean);
      case 3: {
        char szText[32];
        std::snprintf(szText, sizeof szText, "%g", n / 7.0);
        return Compare(value.Set(key, n / 7.0), szText, JSON::jtDouble);
      }
      case 4:
        return Compare(value.SetNull(key), Text(), JSON::jtNull);
      case 5: {
        const Type eType = static_cast<Type>(static_cast<int>(random.Below(9)) - 1);
        const char* text = random.OneIn(4) ? nullptr : random.Of(kTexts);
        const JSONValue* pStored = InternalUpdate(value, key, text, eType);
        return Compare(pStored == nullptr ? JSONValue::None() : *pStored, Copied(text), eType);
      }
      case 6: {
        const char* text = value.pText;  // a text of the tree, when it is a terminated one
        const int nSize = value.Size();
        if (nSize > 0)
          text = value[static_cast<int>(random.Below(static_cast<unsigned>(nSize)))].pText;
        if (text == nullptr) return;
        const Text before = text;
        return Compare(value.Set(key, text), before, JSON::jtString);
      }
      default: {
        const char* text = random.Of(kTexts);
        return Compare(value.Set(key, text), text, JSON::jtString);
      }
    }
  }

  void Empty(JSONValue& value, Node& node) {
    value.pComposite->Clear();
    node.vValues.clear();
    node.vNames.clear();
  }

  // The container gets a copy of itself as its last element; an object under a name that lies in
  // the message's buffer, if it has one there, and once it is rid of a name without value.
  void AppendClone(JSONValue& value, Node& node) {
    JSON::UnsafeJSONValue clone(node.bObject ? JSON::jtObject : JSON::jtArray);
    Node copy = node;
    copy.eType = clone.eType;
    copy.text = Text();
    if (auto* pObject = dynamic_cast<ObjectValue*>(value.pComposite)) {
      JSON::UnsafeJSONValue name(JSON::jtString);
      for (const ObjectValue::NameMap& entry : std::as_const(pObject->vNameMap)) {
        if (entry.bOwnsName || node.vNames.size() != node.vValues.size()) continue;
        name.pText = entry.pName;
        name.nLength = entry.nLength;
      }
      if (name.pText == nullptr) return;
      clone.pComposite = pObject->Clone(0);
      pObject->AddName(name);
      pObject->AddValue(clone);
      pObject->Sort();
      node.vNames.emplace_back(name.pText, static_cast<std::size_t>(name.nLength));
    } else {
      clone.pComposite = value.pComposite->Clone(0);
      value.pComposite->AddValue(clone);
      value.pComposite->MakeMap();
    }
    node.vValues.push_back(std::move(copy));
  }

  void Parse(Pair& pair) {
    const std::string strText = random.Of(kDocuments);
    const Plain::Document document = Plain::Parse(strText);
    const char* pText = strText.c_str();
    if (pair.message.bInPlace) pText = vTexts.emplace_back(strText).c_str();
    Expect(pair.message.Parse(pText) == document.bAccepted, "result of Parse");
    if (document.bRoot || !pair.message.bInPlace) pair.model = document.root;
  }

  void Copy(Pair& pair) {
    Pair& other = &pair == &pairs[0] ? pairs[1] : pairs[0];
    switch (random.Below(4)) {
      case 0:
        other.message.CopyTo(pair.message);
        break;
      case 1:
        pair.message = other.message;
        break;
      case 2:
        pair.message = Message(other.message);
        break;
      default: {
        Message& same = pair.message;
        pair.message = same;
        return;
      }
    }
    pair.model = other.model;
  }

  Random random;
  std::string strFault;           // what went wrong in this step
  std::list<std::string> vTexts;  // what the in-place messages were parsed over
  Pair pairs[2] = {Pair(false), Pair(true)};
};

Support::UpdatePlayer::UpdatePlayer(const Random& choices)
    : pPlayer(std::make_unique<Player>(choices)) {}
Support::UpdatePlayer::~UpdatePlayer() = default;
std::string Support::UpdatePlayer::Step() { return pPlayer->Step(); }
bool Support::UpdatePlayer::UsedUp() const { return pPlayer->UsedUp(); }

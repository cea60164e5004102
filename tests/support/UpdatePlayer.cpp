// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The model, and the steps in the message and in the model.

#include "tests/support/UpdatePlayer.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <list>
#include <type_traits>
#include <utility>
#include <vector>

#include "json/JSONMessage.h"
#include "tests/support/PlainEscape.h"
#include "tests/support/PlainParser.h"

namespace {

using JSON::JSONValue;
using JSON::Message;
using JSON::ObjectValue;
using JSON::Type;

// A text of the model, or none.
struct Text {
  Text() = default;
  Text(const char* text) : bThere(text != nullptr), strText(text == nullptr ? "" : text) {}
  Text(std::string text) : bThere(true), strText(std::move(text)) {}

  bool bThere = false;
  std::string strText;
};

// A value of the model.
struct Node {
  int eType = JSON::jtInvalid;
  Text text;
  bool bContainer = false;
  bool bObject = false;
  std::vector<Node> vValues;
  std::vector<std::string> vNames;

  void BecomeContainer(bool bOfNames) {
    if (bContainer) return;
    bContainer = true;
    bObject = bOfNames;
    eType = bOfNames ? JSON::jtObject : JSON::jtArray;
  }

  // What the update operations do; null when they store nothing.
  Node* Update(int nOrdinal, Text newText, int eNewType) {
    BecomeContainer(false);
    const auto n = static_cast<std::size_t>(nOrdinal);
    if (nOrdinal < 0 || (bObject && n >= vValues.size())) return nullptr;
    Node filler;
    filler.eType = JSON::jtNull;
    if (n >= vValues.size()) vValues.resize(n + 1, filler);
    vValues[n] = Node();
    vValues[n].eType = eNewType;
    vValues[n].text = std::move(newText);
    return &vValues[n];
  }
  Node* Update(const char* name, Text newText, int eNewType) {
    BecomeContainer(true);
    if (!bObject || name == nullptr) return nullptr;
    std::size_t n = 0;
    while (n < vNames.size() && vNames[n] != name)
      ++n;
    if (n == vNames.size()) {
      vNames.emplace_back(name);
      vValues.emplace_back();
    }
    return Update(static_cast<int>(n), std::move(newText), eNewType);
  }

  std::size_t Count() const {
    std::size_t n = 1;
    for (const Node& value : vValues)
      n += value.Count();
    return n;
  }
};

Node FromPlain(const Plain::Document& document, const Plain::Value& value) {
  const auto Bytes = [&](Plain::Slice slice) {
    return document.strBuffer.substr(slice.nStart, static_cast<std::size_t>(slice.nLength));
  };
  Node node;
  node.eType = value.eType;
  if (value.bHasText) node.text = Bytes(value.text);
  node.bContainer = value.bContainer;
  node.bObject = value.bObject;
  for (std::size_t i = 0; i < value.vValues.size(); ++i) {
    node.vValues.push_back(FromPlain(document, value.vValues[i]));
    if (value.bObject) node.vNames.push_back(Bytes(value.vNames[i]));
  }
  return node;
}

bool Write(const Node& node, std::string& strOutput) {
  if (node.eType == JSON::jtNone) return false;
  const std::string strText = node.text.strText;
  if (node.bContainer) {
    strOutput += node.bObject ? '{' : '[';
    for (std::size_t i = 0; i < node.vValues.size(); ++i) {
      if (i > 0) strOutput += ',';
      if (node.bObject) strOutput += '"' + Plain::Escape(node.vNames[i]) + "\":";
      if (!Write(node.vValues[i], strOutput)) return false;
    }
    strOutput += node.bObject ? '}' : ']';
  } else if (node.eType == JSON::jtString) {
    strOutput += '"' + Plain::Escape(strText) + '"';
  } else if (node.eType == JSON::jtInteger || node.eType == JSON::jtDouble) {
    const char* kBytes = node.eType == JSON::jtInteger ? "+-0123456789" : "+-0123456789.eE";
    strOutput += strText.substr(0, strText.find_first_not_of(kBytes));
  } else if (node.eType == JSON::jtBoolean) {
    strOutput += strText[0] == 't' ? "true" : "false";
  } else {
    strOutput += "null";
  }
  return true;
}

// Whether an array is searched by text as it should be. REQUIRES: want is an array.
bool FindsTexts(const JSON::CompositeValue& got, const Node& want) {
  std::vector<std::string> vTexts;  // as C strings, which is how they are looked for
  for (const Node& element : want.vValues) {
    if (element.eType == JSON::jtString) vTexts.emplace_back(element.text.strText.c_str());
  }
  const bool bSearchable = vTexts.size() == want.vValues.size();
  for (const std::string& text : vTexts) {
    const auto first = std::find(vTexts.begin(), vTexts.end(), text);
    const int nExpected = bSearchable ? static_cast<int>(first - vTexts.begin()) : -1;
    if (got.OrdinalOf(text.c_str(), -1) != nExpected) return false;
  }
  return got.OrdinalOf("no such text", -1) == -1;
}

// Where a value differs from its model, or "".
std::string Difference(const JSONValue& got, const Node& want) {
  const bool bObject = dynamic_cast<ObjectValue*>(got.pComposite) != nullptr;
  if (got.eType != want.eType) return "type " + std::to_string(got.eType);
  if ((got.pText != nullptr) != want.text.bThere) return "presence of text";
  if (std::string(got.pText == nullptr ? "" : got.pText, static_cast<std::size_t>(got.nLength)) !=
      want.text.strText) {
    return "text";
  }
  if ((got.pComposite != nullptr) != want.bContainer || bObject != want.bObject) return "container";
  if (got.Size() != static_cast<int>(want.vValues.size())) return "size";
  if (want.bContainer && !bObject && !FindsTexts(*got.pComposite, want)) return "lookup by text";
  for (int i = 0; i < got.Size(); ++i) {
    const auto n = static_cast<std::size_t>(i);
    const std::string strDifference = Difference(*got.GetByOrdinal(i), want.vValues[n]);
    if (!strDifference.empty()) return std::to_string(i) + ": " + strDifference;
    if (!bObject) continue;
    const std::string& name = want.vNames[n];
    const char* pName = got.pComposite->NameAt(i);
    if (std::memcmp(pName, name.c_str(), name.size() + 1) != 0) return std::to_string(i) + ": name";
    const auto first = std::find(want.vNames.begin(), want.vNames.end(), name);
    if (got.GetByName(pName, static_cast<int>(name.size())) !=
        got.GetByOrdinal(static_cast<int>(first - want.vNames.begin()))) {
      return std::to_string(i) + ": lookup";
    }
  }
  return "";
}

constexpr const char* kNames[] = {"",
                                  "a",
                                  "b",
                                  "c",
                                  "aa",
                                  "0",
                                  "column_of_15_by",
                                  "column_of_16_byt",
                                  "column_of_17_byte",
                                  "\xC3\xA9\n"};
constexpr const char* kTexts[] = {"",
                                  "text",
                                  "true",
                                  "12",
                                  "-7.5e3x",
                                  "\"\\\x01\n",
                                  "a text that is longer than any short buffer"};
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
    const std::string strDifference = Difference(pair.message, pair.model);
    if (!strDifference.empty()) return "tree: " + strDifference;
    std::string strExpected;
    std::string strWritten;
    const bool bExpected = Write(pair.model, strExpected);
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
    if (pair.model.Count() > 200 || random.OneIn(25)) return Parse(pair);
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
      return value.InternalUpdateValue(node.text.strText.c_str());
    }
    if (node.bContainer && random.OneIn(12)) return AppendClone(value, node);
    if (random.OneIn(2)) {
      Update(value, node, static_cast<int>(random.Below(node.vValues.size() + 4)) - 1);
    } else if (node.bObject && !node.vNames.empty() && random.OneIn(3)) {
      const int nMember = static_cast<int>(random.Below(node.vNames.size()));
      Update(value, node, value.pComposite->NameAt(nMember));
    } else {
      Update(value, node, random.OneIn(20) ? nullptr : random.Of(kNames));
    }
  }

  // One of the update operations under `key`, a name or an ordinal.
  template <typename Key>
  void Update(JSONValue& value, Node& node, Key key) {
    // The key may be a name of this very object, and the text one from below it.
    const Text kept = Kept(key);
    const auto InModel = [&](Text text, int eType) {
      if constexpr (std::is_same_v<Key, int>) {
        return node.Update(key, std::move(text), eType);
      } else {
        return node.Update(kept.bThere ? kept.strText.c_str() : nullptr, std::move(text), eType);
      }
    };
    const auto Compare = [&](const JSONValue& stored, const Node* pStored) {
      const JSONValue* pExpected = &JSONValue::None();
      if (pStored != nullptr)
        pExpected = value.GetByOrdinal(static_cast<int>(pStored - node.vValues.data()));
      Expect(&stored == pExpected, "what an update returns");
    };
    const int n = static_cast<int>(random.Below(100000)) - 50000;
    switch (random.Below(9)) {
      case 0:
        return Compare(value.Set(key, n), InModel(std::to_string(n), JSON::jtInteger));
      case 1:
        return Compare(value.Set(key, n * 40000L),
                       InModel(std::to_string(n * 40000L), JSON::jtInteger));
      case 2:
        return Compare(value.Set(key, n % 2 == 0),
                       InModel(n % 2 == 0 ? "true" : "false", JSON::jtBoolean));
      case 3: {
        char szText[32];
        std::snprintf(szText, sizeof szText, "%g", n / 7.0);
        return Compare(value.Set(key, n / 7.0), InModel(szText, JSON::jtDouble));
      }
      case 4:
        return Compare(value.SetNull(key), InModel(Text(), JSON::jtNull));
      case 5: {
        const Type eType = static_cast<Type>(static_cast<int>(random.Below(9)) - 1);
        const char* text = random.OneIn(4) ? nullptr : random.Of(kTexts);
        const JSONValue* pStored = nullptr;
        if constexpr (std::is_same_v<Key, int>) {
          pStored = value.InternalUpdateByOrdinal(key, text, eType);
        } else {
          pStored = value.InternalUpdateByName(key, text, eType);
        }
        return Compare(pStored == nullptr ? JSONValue::None() : *pStored, InModel(text, eType));
      }
      case 6: {
        const char* text = value.pText;  // a text of the tree, when it is a terminated one
        const int nSize = value.Size();
        if (nSize > 0)
          text = value[static_cast<int>(random.Below(static_cast<unsigned>(nSize)))].pText;
        if (text == nullptr) return;
        const Text before = text;
        return Compare(value.Set(key, text), InModel(before, JSON::jtString));
      }
      default: {
        const char* text = random.Of(kTexts);
        return Compare(value.Set(key, text), InModel(text, JSON::jtString));
      }
    }
  }
  static Text Kept(const char* text) { return text; }
  static Text Kept(int) { return {}; }

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
        if (entry.bOwnsName || pObject->vNameMap.size() != node.vNames.size()) continue;
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
    if (document.bRoot || !pair.message.bInPlace) pair.model = FromPlain(document, document.root);
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

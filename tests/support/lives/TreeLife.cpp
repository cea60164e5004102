// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The life of a tree: a message that copies its text or parses in place, or a container that a host
// makes by hand. A step goes down to some value of the tree, the root included, and does something
// to it there; lives of one world copy and move values between each other.

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <utility>

#include "json/Storage.h"
#include "tests/support/Author.h"
#include "tests/support/Values.h"
#include "tests/support/lives/HostContainers.h"
#include "tests/support/lives/Life.h"
#include "tests/support/lives/TreeModel.h"

namespace Support {
namespace {

using JSON::Parser;
using Value = JSON::JSONValue;

// Beyond this a step compares nothing, most of the time.
constexpr std::size_t kSmallTree = 1500;

constexpr const char* kNames[] = {"", "a", "b", "c", "aa", "0", "\xC3\xA9\n"};
constexpr const char* kLongNames[] = {"column_of_15_by", "column_of_16_byt", "column_of_17_byte"};
constexpr const char* kTexts[] = {"",        "text",       "true",         "12",
                                  "-7.5e3x", "\"\\\x01\n", "a longer text"};

Plain::Document Parsed(const std::string& text) {
  const Aside aside;
  return Plain::Parse(text);
}

Node CopyOf(const Node& node) {
  const Aside aside;
  return node;
}

HostCounts* CountsOf(JSON::CompositeValue* pComposite) {
  return dynamic_cast<HostCounts*>(pComposite);
}

bool InPool(const Value& value) {
  return value.pComposite != nullptr && JSON::Storage::InPool(*value.pComposite);
}

bool Within(const char* p, const char* pStart, const char* pEnd) {
  return std::less_equal<>()(pStart, p) && std::less_equal<>()(p, pEnd);
}

// Whether a text or name in the tree that its container does not own fulfils the condition, which
// is also told whether it lies in a container of a host's own kind.
template <typename Condition>
bool AnyBorrowed(const Value& value, const Condition& holds, bool bHosts = false) {
  JSON::CompositeValue* const p = value.pComposite;
  if (!value.bOwnsText && value.pText != nullptr && holds(value.pText, bHosts)) return true;
  bHosts = bHosts || CountsOf(p) != nullptr || dynamic_cast<HostList*>(p) != nullptr;
  if (const auto* const pObject = dynamic_cast<const JSON::ObjectValue*>(p)) {
    for (const auto& entry : std::as_const(pObject->vNameMap)) {
      if (!entry.bOwnsName && entry.pName != nullptr && holds(entry.pName, bHosts)) return true;
    }
  }
  for (int i = 0; i < value.Size(); ++i) {
    if (AnyBorrowed(*value.GetByOrdinal(i), holds, bHosts)) return true;
  }
  return false;
}

// All members have a name and all names a member. A parse that fails may leave one more.
bool NamesMatch(const Node& node) {
  return !node.bObject || node.vNames.size() == node.vValues.size();
}

JSON::CompositeValue* NewContainer(bool bObject, bool bHost) {
  if (bObject && bHost) return new HostObject(4);
  if (bObject) return new JSON::ObjectValue;
  if (bHost) return new HostArray;
  return new JSON::ArrayValue(4);
}

// A value of the tree, with its model, and the value whose element it is.
struct Spot {
  Value* pValue;
  Node* pNode;
  Value* pParent = nullptr;
  Node* pParentNode = nullptr;

  JSON::CompositeValue& Container() const { return *pValue->pComposite; }
  JSON::ObjectValue* Object() const { return dynamic_cast<JSON::ObjectValue*>(pValue->pComposite); }
  JSON::ArrayValue* Array() const { return dynamic_cast<JSON::ArrayValue*>(pValue->pComposite); }
  JSON::Sequence<JSON::UnsafeJSONValue>* Values() const {
    if (JSON::ObjectValue* const pObject = Object()) return &pObject->avValues.vValues;
    return Array() != nullptr ? &Array()->vValues : nullptr;
  }
  int Size() const { return static_cast<int>(pNode->vValues.size()); }
};

}  // namespace

class TreeLife : public Life {
 public:
  TreeLife(World& common, TreeKind kind) : Life(common) {
    const Aside aside;
    world.vTrees.push_back(this);
    if (kind == TreeKind::kCopying || kind == TreeKind::kInPlace) {
      pMessage = std::make_unique<JSON::Message>(kind == TreeKind::kInPlace);
      return;
    }
    GiveContainer(model, kind == TreeKind::kObject || kind == TreeKind::kHostObject);
    handle.pComposite =
        NewContainer(model.bObject, kind == TreeKind::kHostObject || kind == TreeKind::kHostArray);
    handle.eType = static_cast<JSON::Type>(model.eType);
  }
  ~TreeLife() override {
    delete handle.pComposite;
    world.vTrees.erase(std::find(world.vTrees.begin(), world.vTrees.end(), this));
  }

  std::string CheckAll() override { return Plain::Difference(model, Root()); }

 private:
  enum class Where { kMessage, kAnywhere, kElement, kContainer, kNamed };
  struct Step {
    const char* szName;
    Where where;
    void (TreeLife::*take)(Spot& spot);
    unsigned nWeight;
  };
  static const Step kSteps[];

  void TakeOne() override;

  // ---- The way to a value, and the comparison ---------------------------------------------------

  Value& Root() { return pMessage != nullptr ? static_cast<Value&>(*pMessage) : handle; }
  Spot Whole() { return {&Root(), &model}; }

  // By a lookup, or through the sequence of the elements, which may be a constant on the way.
  Spot Below(const Spot& spot) {
    const std::uint32_t n = random.Below(spot.pNode->vValues.size());
    auto* const pValues = random.OneIn(2) ? spot.Values() : nullptr;
    Value* pValue = nullptr;
    if (pValues == nullptr) {
      pValue = &(*spot.pValue)[static_cast<int>(n)];
    } else if (random.OneIn(2)) {
      pValue = &(*pValues)[n];
    } else {
      pValue = const_cast<JSON::UnsafeJSONValue*>(&std::as_const(*pValues)[n]);
    }
    return {pValue, &spot.pNode->vValues[n], spot.pValue, spot.pNode};
  }

  Spot Anywhere() {
    Spot spot = Whole();
    while (!spot.pNode->vValues.empty() && !random.OneIn(3))
      spot = Below(spot);
    return spot;
  }

  // A value of the kind, where there is one.
  bool Find(Where where, Spot& spot) {
    if (where == Where::kMessage) return pMessage != nullptr;
    spot = Anywhere();
    if (where == Where::kAnywhere) return true;
    if (where == Where::kElement) {
      if (spot.pParent == nullptr && !model.vValues.empty()) spot = Below(spot);
      return spot.pParent != nullptr;
    }
    if (!spot.pNode->bContainer && spot.pParent != nullptr) spot = {spot.pParent, spot.pParentNode};
    return spot.pNode->bContainer && (where == Where::kContainer || NamesMatch(*spot.pNode));
  }

  // The index of an array does not follow changes from below.
  static void RefreshAbove(const Spot& spot) {
    if (spot.pParent != nullptr) spot.pParent->pComposite->MakeMap();
  }

  // Looking hands out whatever it looks at, so now and then nothing is compared for a while.
  void Compare() {
    if (!strFault.empty() || random.OneIn(3)) return;
    if (Count(model) <= kSmallTree || random.OneIn(10)) strFault = CheckAll();
  }

  // ---- Updates ----------------------------------------------------------------------------------

  const char* Name() { return random.OneIn(3) ? random.Of(kLongNames) : random.Of(kNames); }
  static Text Copied(const char* text) { return text == nullptr ? Text() : Text(text); }
  static int Copied(int nOrdinal) { return nOrdinal; }

  static Value* UpdateRaw(Value& value, int nKey, const char* szText, JSON::Type type) {
    return value.InternalUpdateByOrdinal(nKey, szText, type);
  }
  static Value* UpdateRaw(Value& value, const char* szKey, const char* szText, JSON::Type type) {
    return value.InternalUpdateByName(szKey, szText, type);
  }

  // One of the update operations under `key`, a name or an ordinal.
  template <typename Key>
  void UpdateUnder(const Spot& spot, Key key) {
    // The key may be a name of this very object, and the text one from below it.
    const auto kept = Copied(key);
    Value& value = *spot.pValue;
    Text text;
    int eType = JSON::jtInteger;
    const auto integer = [&](auto n) {
      text = std::to_string(n);
      return &value.Set(key, n);
    };
    const auto string = [&](const char* szText) {
      text = Copied(szText);
      eType = JSON::jtString;
      return &value.Set(key, szText);
    };
    const int n = static_cast<int>(random.Below(100000)) - 50000;
    const long l = n * 40000L;
    const std::function<const Value*()> kUpdates[] = {
        [&] { return integer(n); },
        [&] { return integer(random.OneIn(4) ? LONG_MIN : l); },
        [&] { return integer(random.OneIn(4) ? ULONG_MAX : static_cast<unsigned long>(l)); },
        [&] { return integer(static_cast<unsigned long long>(n) * 77); },
        [&] {
          text = n % 2 == 0 ? "true" : "false";
          eType = JSON::jtBoolean;
          return &value.Set(key, n % 2 == 0);
        },
        [&] {
          char szText[32];
          std::snprintf(szText, sizeof szText, "%g", n / 7.0);
          text = szText;
          eType = JSON::jtDouble;
          return &value.Set(key, n / 7.0);
        },
        [&] {
          eType = JSON::jtNull;
          return &value.SetNull(key);
        },
        [&] {
          eType = static_cast<int>(random.Below(9)) - 1;
          const char* const szText = random.OneIn(4) ? nullptr : random.Of(kTexts);
          text = Copied(szText);
          return UpdateRaw(value, key, szText, static_cast<JSON::Type>(eType));
        },
        [&] { return string(random.Of(kTexts)); },
        [&] { return string(random.Of(kTexts)); },
        // A text of the tree, when it is a terminated one.
        [&] { return string(spot.Size() > 0 ? Below(spot).pValue->pText : value.pText); },
    };
    const Value* const pStored = random.Of(kUpdates)();
    const Node* const pModel = UpdateModel(*spot.pNode, kept, text, eType);
    if (pModel == nullptr)
      return Expect(pStored == nullptr || pStored == &Value::None(), "nothing is stored");
    const auto nAt = static_cast<int>(pModel - spot.pNode->vValues.data());
    Expect(pStored == value.GetByOrdinal(nAt), "what an update returns");
  }

  void Update(Spot& spot) {
    if (random.OneIn(2)) {
      UpdateUnder(spot, static_cast<int>(random.Below(spot.pNode->vValues.size() + 4)) - 1);
    } else if (spot.pNode->bObject && !spot.pNode->vNames.empty() && random.OneIn(3)) {
      const int nMember = static_cast<int>(random.Below(spot.pNode->vNames.size()));
      UpdateUnder(spot, spot.Container().NameAt(nMember));
    } else {
      UpdateUnder(spot, random.OneIn(20) ? nullptr : Name());
    }
  }

  void UpdateFar(Spot& spot) { UpdateUnder(spot, spot.Size() + static_cast<int>(world.Size())); }

  // In an object, or in a value that becomes one, under a name.
  void UpdateIn(const Spot& spot, const std::string& name) {
    if (!spot.pNode->bContainer || spot.pNode->bObject) return UpdateUnder(spot, name.c_str());
    UpdateUnder(spot, spot.Size());
  }

  void UpdateMany(Spot& spot) {
    const std::size_t nMost = spot.pNode->bObject ? 200 : 20000;
    const std::size_t nCount = std::min(world.Size(), nMost);
    for (std::size_t i = 0; i < nCount; ++i)
      UpdateIn(spot, 'm' + std::to_string(i * 7 % nCount));
  }

  void Clear(Spot& spot) {
    if (Count(model) > kSmallTree) spot = Whole();
    Empty(*spot.pNode);
    spot.Container().Clear();
  }

  // An index of the texts around it may be old then, but it reads what is there.
  void ReplaceText(Spot& spot) {
    const Text text = random.OneIn(8) ? Text() : Text(random.Of(kTexts));
    GiveText(*spot.pNode, text);
    spot.pValue->InternalUpdateValue(text ? text->c_str() : nullptr);
    spot.pParent->pComposite->OrdinalOf("text", -1);
  }

  // ---- Public fields ----------------------------------------------------------------------------

  static void SetText(const Spot& spot, const char* pText, int nLength, bool bOwns) {
    Value& value = *spot.pValue;
    if (value.bOwnsText) delete[] value.pText;
    value.pText = pText;
    value.nLength = nLength;
    value.bOwnsText = bOwns;
  }

  // A value's text becomes one that the container has to release.
  void FieldText(Spot& spot) {
    const std::string strText(random.Below(40), 'g');
    char* const pText = new char[strText.size() + 1];
    std::memcpy(pText, strText.c_str(), strText.size() + 1);
    SetText(spot, pText, static_cast<int>(strText.size()), true);
    GiveText(*spot.pNode, strText);
    if (random.OneIn(3)) spot.pNode->eType = static_cast<int>(random.Below(9)) - 1;
    spot.pValue->eType = static_cast<JSON::Type>(spot.pNode->eType);
  }

  // A container from the heap, for a value without one, or in place of another one from the heap.
  void FieldContainer(Spot& spot) {
    if (InPool(*spot.pValue)) return;
    Value& value = *spot.pValue;
    delete std::exchange(value.pComposite, nullptr);
    const std::uint32_t nKind = random.Below(5);
    GiveContainer(*spot.pNode, nKind % 2 != 0);
    value.pComposite = nKind == 4 ? new HostList : NewContainer(nKind % 2 != 0, nKind > 1);
    value.eType = static_cast<JSON::Type>(spot.pNode->eType);
    for (std::uint32_t n = random.Below(4); n > 0; --n)
      UpdateIn(spot, Name());
  }

  // A root in a message's pool has to be given up by the message.
  void RootContainer(Spot& spot) {
    if (pMessage != nullptr && random.OneIn(2)) {
      *pMessage = JSON::Message(pMessage->bInPlace);
      const Aside aside;
      model = Node();
    }
    spot = Whole();
    FieldContainer(spot);
  }

  void Rename(Spot& spot) {
    if (spot.pNode->vNames.empty()) return;
    JSON::ObjectValue& object = *spot.Object();
    auto& entry = object.vNameMap[random.Below(object.vNameMap.size())];
    std::string& name = spot.pNode->vNames.at(static_cast<std::size_t>(entry.nOrdinal));
    const bool bEnd = random.OneIn(4) && !name.empty() && name.find('\0') == std::string::npos;
    const char* const pNew = bEnd ? entry.pName + 1 : Name();  // maybe from what it replaces
    name = std::string(pNew);
    entry.UpdateName(pNew);
    object.bSorted = false;
  }

  // ---- Parses -----------------------------------------------------------------------------------

  void ParseText(const std::string& strText) {
    JSON::Message& message = *pMessage;
    Plain::Document document = Parsed(strText);
    // With its length, the text may have something behind it.
    const bool bLength = random.OneIn(2) && !strText.empty();
    if (!bLength && strText.find('\0') != std::string::npos) return;
    const std::string strGiven = strText + (bLength ? "77" : "");
    const char* const pText = message.bInPlace ? world.Keep(strGiven) : strGiven.c_str();

    JSON::CompositeValue* const pOld = message.pComposite;
    const bool bSameKind =
        document.bRoot && pOld != nullptr && model.bObject == document.root.bObject;
    HostCounts* const pCounts = bSameKind ? CountsOf(pOld) : nullptr;
    if (pCounts != nullptr) *pCounts = HostCounts();
    const bool bStays = pCounts != nullptr || (bSameKind && InPool(message));
    const bool bAccepted = message.Parse(pText, bLength ? static_cast<int>(strText.size()) : -1);
    Expect(bAccepted == document.bAccepted, "result of Parse");
    if (!document.bRoot && message.bInPlace) return;  // unchanged
    Expect(!bStays || message.pComposite == pOld, "the root stays in place");
    if (pCounts != nullptr) {
      const int nValues = static_cast<int>(document.root.vValues.size());
      const int nNames = static_cast<int>(document.root.vNames.size());
      Expect(pCounts->nCleared > 0 && pCounts->nValues == nValues && pCounts->nNames == nNames,
             "a host's root is emptied and filled through what it overrides");
    }
    const Aside aside;
    model = std::move(document.root);
  }

  std::string SomeDocument() {
    Author author(random.Below(1 << 16));
    std::string strText = author.Document(random.OneIn(2) ? Kind::kRows : Kind::kMixed);
    for (std::size_t n = random.Below(3); n > 0; --n)
      author.Damage(strText);
    return strText;
  }

  void ParseDocument(Spot& /*none*/) {
    std::string strText = SomeDocument();
    if (random.OneIn(2)) strText.resize(std::strlen(strText.c_str()));
    ParseText(strText);
  }

  void ParseTiny(Spot& /*none*/) {
    static const char* const kTiny[] = {"[",     "[]",      "{",  "{}",
                                        "",      " ",       "x",  "[1",
                                        "[1,2",  "[-1.5e3", "7",  R"({"a":1,"b":2)",
                                        "[1,2]", R"({"a")", "[[", "[12,3.x"};
    ParseText(random.Of(kTiny));
  }

  void ParseSized(Spot& /*none*/) {
    std::string strText = SizedText(random, world.Size());
    if (random.OneIn(4)) strText.pop_back();
    ParseText(strText);
  }

  JSON::ParseContext KeptContext(const std::string& strText) {
    return Context(world.Keep(strText), std::strlen(strText.c_str()));
  }

  // A container takes in more, behind what it has.
  void ParseMore(Spot& spot) {
    std::string strText = random.OneIn(2)
                              ? SomeDocument()
                              : SizedText(random, std::min<std::size_t>(world.Size(), 2000));
    if (random.OneIn(3)) strText.resize(strText.size() / 2);
    strText.erase(0, strText.find_first_of("[{"));
    const Plain::Document document = Parsed(strText);
    if (!document.bRoot || document.root.bObject != spot.pNode->bObject) return;
    if (spot.Values() == nullptr || strText.find('\0') != std::string::npos) return;
    JSON::ParseContext context = KeptContext(strText);
    const int nResult = spot.pNode->bObject ? Parser::ParseObject(context, *spot.Object())
                                            : Parser::ParseArray(context, *spot.Array());
    Expect((nResult > 0) == document.bAccepted, "result of parsing more");
    AppendCopies(spot, document.root);
  }

  // One value of any kind becomes the last one of a container.
  void ParseElement(Spot& spot) {
    static const char* const kElements[] = {"12",         " \"text\" ", "[1,{\"a\":2}]",
                                            "{\"b\":[]}", "true",       "-1.5e3",
                                            "nul",        "[1,2",       "\"cut"};
    const std::string strText = random.Of(kElements);
    const Plain::Document document = Parsed('[' + strText);
    const char* const name = NameFor(spot);
    JSON::ParseContext context = KeptContext(strText);
    Parser::ParseJSONValue(context, spot.Container());
    AppendModel(spot, name, document.root.vValues.at(0));
  }

  void TurnInPlace(Spot& /*none*/) { pMessage->bInPlace = !pMessage->bInPlace; }

  // ---- Copies and moves -------------------------------------------------------------------------

  bool IsForeign(const char* pText) const {
    return !Within(pText, pMessage->pStart, pMessage->pEnd);
  }

  void CopyMessage(Spot& /*none*/) {
    TreeLife& other = *random.Of(world.vTrees);  // maybe the same one
    if (other.pMessage == nullptr) return;
    // A host's own container moves all that it does not own, so it may hold nothing from elsewhere.
    if (AnyBorrowed(other.Root(),
                    [&](const char* p, bool bHosts) { return bHosts && other.IsForeign(p); })) {
      return;
    }
    JSON::Message& source = *other.pMessage;
    const std::function<void()> kWays[] = {
        [&] { source.CopyTo(*pMessage); },
        [&] { *pMessage = source; },
        [&] { *pMessage = JSON::Message(source); },
        [&] { pMessage = std::make_unique<JSON::Message>(source); },
    };
    const std::size_t nWay = random.Below(std::size(kWays));
    kWays[nWay]();
    if (&other == this && nWay < 2) return;  // nothing happens
    model = CopyOf(other.model);
  }

  // A clone refers to another buffer, as far away as it is told, and to nothing in the old one.
  void CloneElsewhere(Spot& /*none*/) {
    if (pMessage->pComposite == nullptr || pMessage->pStart == nullptr) return;
    if (AnyBorrowed(*pMessage, [&](const char* p, bool) { return IsForeign(p); })) return;
    const char* const pCopy = world.Keep(std::string(pMessage->pStart, pMessage->pEnd));
    const auto nDelta = reinterpret_cast<std::uintptr_t>(pCopy) -
                        reinterpret_cast<std::uintptr_t>(pMessage->pStart);
    JSON::UnsafeJSONValue clone(pMessage->eType);
    clone.pComposite = pMessage->pComposite->Clone(static_cast<std::ptrdiff_t>(nDelta));
    ExpectNone(Plain::Difference(model, clone), "a clone elsewhere: ");
    Expect(!AnyBorrowed(clone, [&](const char* p, bool) { return !IsForeign(p); }),
           "where the texts of a clone lie");
    delete clone.pComposite;
  }

  // The container gets a copy of itself as its last element.
  void AppendClone(Spot& spot) {
    if (Count(*spot.pNode) > kSmallTree) return;
    JSON::UnsafeJSONValue clone(spot.pNode->bObject ? JSON::jtObject : JSON::jtArray);
    clone.pComposite = spot.Container().Clone(0);
    Node copy = CopyOf(*spot.pNode);
    copy.eType = clone.eType;
    GiveText(copy, Text());
    Append(spot, clone, copy);
  }

  static void AppendCopies(const Spot& to, const Node& from) {
    const Aside aside;
    const Node copy = from;  // maybe of the same tree
    to.pNode->vValues.insert(to.pNode->vValues.end(), copy.vValues.begin(), copy.vValues.end());
    to.pNode->vNames.insert(to.pNode->vNames.end(), copy.vNames.begin(), copy.vNames.end());
    to.Container().MakeMap();
  }

  // Adds a name for the value that comes next, if there are names at all.
  const char* NameFor(const Spot& spot) {
    if (!spot.pNode->bObject) return nullptr;
    JSON::UnsafeJSONValue name = ValueOf(world.Keep(Name()));
    spot.Object()->AddName(name);
    return name.pText;
  }

  void AppendModel(const Spot& spot, const char* name, const Node& node) {
    const Aside aside;
    if (name != nullptr) spot.pNode->vNames.emplace_back(name);
    spot.pNode->vValues.push_back(CopyOf(node));
    spot.Container().MakeMap();
    if (name == nullptr) return;
    if (random.OneIn(2)) spot.Object()->Sort();
    spot.Object()->bSorted = false;
  }

  // The container gets a value with AddValue, and owns what it owned.
  void Append(const Spot& spot, Value& value, const Node& node) {
    const char* const name = NameFor(spot);
    spot.Container().AddValue(value);
    AppendModel(spot, name, node);
  }

  void AddByHand(Spot& spot) {
    for (std::size_t n = std::min<std::size_t>(world.Size(), 1500); n > 0; --n) {
      JSON::UnsafeJSONValue value(random.OneIn(2) ? JSON::jtInteger : JSON::jtString);
      value.pText = "123456";  // alone
      value.nNameIndex = static_cast<int>(n) * 1000 - 500;
      Node node;
      node.eType = value.eType;
      GiveText(node, "", value.pText);
      const char* const name = NameFor(spot);
      spot.Container().AddValue(value);
      const Aside aside;
      if (name != nullptr) spot.pNode->vNames.emplace_back(name);
      spot.pNode->vValues.push_back(node);
    }
    spot.Container().MakeMap();
    if (spot.pNode->bObject) spot.Object()->Sort();
  }

  // A part of a parsed document is added: the message dies, its text does not.
  void AddParsed(Spot& spot) {
    TreeLife donor(world, TreeKind::kInPlace);
    donor.ParseText(SomeDocument());
    const Spot from = donor.Anywhere();
    Append(spot, *from.pValue, *from.pNode);
    from.pValue->bOwnsText = false;
    donor.Compare();  // the original stays as it was
    ExpectNone(donor.strFault, "a donor: ");
  }

  std::unique_ptr<JSON::Message> pMessage;  // or
  JSON::UnsafeJSONValue handle;             // what refers to a container made by hand
  Node model;
};

const TreeLife::Step TreeLife::kSteps[] = {
    {"update", Where::kAnywhere, &TreeLife::Update, 40},
    {"update behind the end", Where::kContainer, &TreeLife::UpdateFar, 4},
    {"update many", Where::kContainer, &TreeLife::UpdateMany, 4},
    {"clear a container", Where::kContainer, &TreeLife::Clear, 4},
    {"replace a text", Where::kElement, &TreeLife::ReplaceText, 4},
    {"give a text", Where::kElement, &TreeLife::FieldText, 4},
    {"give a container", Where::kElement, &TreeLife::FieldContainer, 3},
    {"give a root", Where::kAnywhere, &TreeLife::RootContainer, 2},
    {"rename", Where::kContainer, &TreeLife::Rename, 3},
    {"parse a document", Where::kMessage, &TreeLife::ParseDocument, 4},
    {"parse a tiny text", Where::kMessage, &TreeLife::ParseTiny, 4},
    {"parse a text of any size", Where::kMessage, &TreeLife::ParseSized, 3},
    {"parse more into a container", Where::kNamed, &TreeLife::ParseMore, 3},
    {"parse an element", Where::kNamed, &TreeLife::ParseElement, 3},
    {"turn in-place parsing on or off", Where::kMessage, &TreeLife::TurnInPlace, 1},
    {"append a clone", Where::kNamed, &TreeLife::AppendClone, 4},
    {"copy a message", Where::kMessage, &TreeLife::CopyMessage, 5},
    {"clone to another buffer", Where::kMessage, &TreeLife::CloneElsewhere, 2},
    {"add by hand", Where::kNamed, &TreeLife::AddByHand, 4},
    {"add from a parsed document", Where::kNamed, &TreeLife::AddParsed, 4},
};

void TreeLife::TakeOne() {
  const Step& step = Choose(pMessage != nullptr ? "message" : "container", kSteps);
  Spot spot{nullptr, nullptr};
  if (Find(step.where, spot)) {
    (this->*step.take)(spot);
    RefreshAbove(spot);
  }
  Compare();
}

std::unique_ptr<Life> MakeTreeLife(World& common, TreeKind kind) {
  return std::make_unique<TreeLife>(common, kind);
}

}  // namespace Support

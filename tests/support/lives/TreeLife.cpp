// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The steps in the life of a tree.

#include "tests/support/lives/TreeLife.h"

#include <climits>
#include <cstdint>
#include <cstring>

#include "recordset/QXRecordSet.h"
#include "tests/support/Author.h"
#include "tests/support/Values.h"
#include "tests/support/lives/TreeSpots.h"

namespace Support {
namespace {

using CountedMemory::Aside;

Plain::Document Parsed(const std::string& text) {
  const Aside aside;
  return Plain::Parse(text);
}

HostCounts* CountsOf(JSON::CompositeValue* pComposite) {
  if (auto* const pObject = dynamic_cast<HostObject*>(pComposite)) return &pObject->counts;
  auto* const pArray = dynamic_cast<HostArray*>(pComposite);
  return pArray != nullptr ? &pArray->counts : nullptr;
}

JSON::ParseContext ContextOf(char* pText) { return Context(pText, std::strlen(pText)); }

bool Within(const char* p, const char* pStart, const char* pEnd) {
  return std::less_equal<>()(pStart, p) && std::less_equal<>()(p, pEnd);
}

// Whether a text or name in the tree that its container does not own fulfils the condition; with
// bHosted, only one in the containers of a host's own kinds.
template <typename Condition>
bool AnyBorrowed(const JSON::JSONValue& value, const Condition& holds, bool bHosted = false) {
  const JSON::CompositeValue* const p = value.pComposite;
  const bool bHosts =
      CountsOf(value.pComposite) != nullptr || dynamic_cast<const HostList*>(p) != nullptr;
  const bool bInside = bHosted && !bHosts;
  if (!bHosted && !value.bOwnsText && value.pText != nullptr && holds(value.pText)) return true;
  const auto* pObject = bInside ? nullptr : dynamic_cast<const JSON::ObjectValue*>(p);
  for (int i = 0; pObject != nullptr && i < static_cast<int>(pObject->vNameMap.size()); ++i) {
    const auto& entry = std::as_const(pObject->vNameMap)[static_cast<std::size_t>(i)];
    if (!entry.bOwnsName && entry.pName != nullptr && holds(entry.pName)) return true;
  }
  for (int i = 0; i < value.Size(); ++i) {
    if (AnyBorrowed(*value.GetByOrdinal(i), holds, bInside)) return true;
  }
  return false;
}

}  // namespace

class TreeLife : public TreeSpots {
 public:
  TreeLife(World& common, TreeKind kind) : TreeSpots(common, kind) {
    const Aside aside;
    world.vTrees.push_back(this);
  }
  ~TreeLife() override {
    world.vTrees.erase(std::find(world.vTrees.begin(), world.vTrees.end(), this));
  }

 private:
  struct Step {
    const char* szName;
    Where where;
    void (TreeLife::*take)(Spot& spot);
    unsigned nWeight;
  };
  static const Step kSteps[];

  void TakeOne() override;

  // ---- Updates ----------------------------------------------------------------------------------

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
  void UpdateIn(const Spot& spot, const std::string& name, int nOrdinal) {
    if (!spot.pNode->bContainer || spot.pNode->bObject) return UpdateUnder(spot, name.c_str());
    UpdateUnder(spot, nOrdinal);
  }

  // Each new name sorts the names anew, so there are only so many.
  void UpdateMany(Spot& spot) {
    const std::size_t nMost = spot.pNode->bObject ? 200 : 20000;
    const std::size_t nCount = std::min(world.Size(), nMost);
    for (std::size_t i = 0; i < nCount; ++i)
      UpdateIn(spot, 'm' + std::to_string(i * 7 % nCount), spot.Size());
  }

  void Clear(Spot& spot) {
    Empty(*spot.pNode);
    spot.Container().Clear();
  }
  void ClearContainer(Spot& spot) {
    if (Count(model) > kSmallTree) spot = {&Root(), &model};
    Clear(spot);
  }

  void ReplaceText(Spot& spot) {
    const Text text = random.OneIn(8) ? Text() : Text(random.Of(kTreeTexts));
    GiveText(*spot.pNode, text);
    spot.pValue->InternalUpdateValue(text ? text->c_str() : nullptr);
  }

  // Again and again the same room is enough.
  void SetAndClear(Spot& spot) {
    std::size_t nFirst = 0;
    for (int i = 0; i < 150; ++i) {
      for (int k = 0; k < 40; ++k)
        UpdateIn(spot, 's' + std::to_string(k), k);
      if (!spot.pNode->bContainer) return;  // an empty value
      Clear(spot);
      if (i == 2) nFirst = CountedMemory::Live();
    }
    Expect(CountedMemory::Live() <= nFirst + 4096, "memory grows from round to round");
  }

  // Level below level, each made of the scalar that was set last.
  void GoDown(Spot& spot) {
    for (std::size_t n = std::min<std::size_t>(world.Size(), 1000); n > 0; --n) {
      if (spot.pNode->bContainer && spot.Size() > 0) spot = Below(spot);
      UpdateIn(spot, "d", 0);
      RefreshAbove(spot);
      if (!spot.pNode->bContainer || spot.Size() == 0) return;
    }
  }

  // The index of an array does not follow changes from below.
  static void RefreshAbove(const Spot& spot) {
    if (spot.pParent != nullptr) spot.pParent->pComposite->MakeMap();
  }

  // ---- Public fields ----------------------------------------------------------------------------

  // A value's text becomes one that the container has to release.
  void FieldText(Spot& spot) {
    const std::string strText(random.Below(40), 'g');
    char* const pText = new char[strText.size() + 1];
    std::memcpy(pText, strText.c_str(), strText.size() + 1);
    SetText(spot, pText, static_cast<int>(strText.size()), true);
    GiveText(*spot.pNode, strText);
  }

  // A text that nobody releases, without its length.
  void FieldTextAlone(Spot& spot) {
    static const std::pair<const char*, JSON::Type> kTexts[] = {
        {"12", JSON::jtInteger},   {"99999999999", JSON::jtInteger}, {"-3.5e1", JSON::jtDouble},
        {"true", JSON::jtBoolean}, {"a text alone", JSON::jtString}, {"1.", JSON::jtDouble}};
    if (spot.pNode->bContainer) return;
    const auto& [szText, eType] = random.Of(kTexts);
    SetText(spot, szText, 0, false);
    spot.pNode->eType = spot.pValue->eType = eType;
    GiveText(*spot.pNode, "", szText);
  }

  static void SetText(const Spot& spot, const char* pText, int nLength, bool bOwns) {
    Value& value = *spot.pValue;
    if (value.bOwnsText) delete[] value.pText;
    value.pText = pText;
    value.nLength = nLength;
    value.bOwnsText = bOwns;
  }

  // A container from the heap, for a value without one, or in place of another one from the heap.
  void FieldContainer(Spot& spot) {
    Value& value = *spot.pValue;
    const Home home = spot.pNode->home;
    if (spot.pNode->bContainer && home != Home::kHeap && home != Home::kHost) return;
    delete std::exchange(value.pComposite, nullptr);
    const bool bObject = random.OneIn(2);
    const bool bHost = random.OneIn(2);
    const bool bList = !bObject && bHost && random.OneIn(2);
    value.pComposite = bList ? new HostList : NewContainer(bObject, bHost);
    value.eType = bObject ? JSON::jtObject : JSON::jtArray;
    GiveContainer(*spot.pNode, bObject, bHost ? Home::kHost : Home::kHeap);
    spot.pNode->eType = value.eType;
    for (std::uint32_t n = random.Below(4); n > 0; --n)
      UpdateIn(spot, Name(), spot.Size());
  }

  // A root in a message's pool has to be given up by the message.
  void RootContainer(Spot& spot) {
    if (pMessage != nullptr && random.OneIn(2)) {
      *pMessage = JSON::Message(pMessage->bInPlace);
      const Aside aside;
      model = Node();
      bRenewed = true;
    }
    spot = {&Root(), &model};
    FieldContainer(spot);
  }

  void FieldType(Spot& spot) {
    if (!spot.pValue->bOwnsText) return;  // no NUL may end another text
    spot.pNode->eType = static_cast<int>(random.Below(9)) - 1;
    spot.pValue->eType = static_cast<JSON::Type>(spot.pNode->eType);
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

  // Reads everything through what may be changed.
  void TouchSequences(Spot& spot) {
    std::size_t nSeen = 0;
    if (spot.Array() != nullptr) {
      for (const auto& entry : spot.Array()->vOrdinalMap)
        nSeen += entry.nOrdinal >= 0 ? 0 : 1;
    }
    if (spot.Object() != nullptr) {
      for (auto& entry : spot.Object()->vNameMap)
        nSeen += entry.nLength >= 0 ? 0 : 1;
    }
    if (spot.Values() == nullptr) return;
    for (JSON::UnsafeJSONValue& value : *spot.Values())
      nSeen += value.nLength >= 0 ? 1 : 0;
    Expect(nSeen == spot.pNode->vValues.size(), "what the sequences hold");
  }

  void SwapElements(Spot& spot) {
    if (spot.Size() == 0 || spot.Values() == nullptr) return;
    auto& values = *spot.Values();
    const std::size_t i = random.Below(values.size());
    const std::size_t k = random.Below(values.size());
    std::swap(values[i], values[k]);
    if (i != k) std::swap(spot.pNode->vValues[i], spot.pNode->vValues[k]);
    if (spot.Object() != nullptr) spot.Object()->bSorted = false;
    spot.Container().MakeMap();
  }

  // The string index does not follow an element's text. What it answers then is of no interest.
  void StaleTexts(Spot& spot) {
    if (spot.pNode->bObject || spot.Size() > 30) return;
    for (int i = spot.Size() + 1; i >= 0; --i) {
      const std::string strText(static_cast<std::size_t>(40 + i), 's');
      UpdateModel(*spot.pNode, i, strText, JSON::jtString);
      spot.pValue->Set(i, strText.c_str());
    }
    const std::string strSought(40, 's');
    Expect(spot.Container().OrdinalOf(strSought.c_str(), -1) == 0, "what the index finds");
    for (int i = 0; i < spot.Size(); ++i) {
      GiveText(spot.pNode->vValues[static_cast<std::size_t>(i)], "new");
      (*spot.pValue)[i].InternalUpdateValue("new");
      spot.Container().OrdinalOf(strSought.c_str(), -1);
      spot.Container().OrdinalOf("new", -1);
      spot.Container().NameAt(i);
    }
    spot.Container().MakeMap();
  }

  // A position in the name index that is none leaves a member without its name.
  void StaleNames(Spot& spot) {
    if (!spot.pNode->bObject || spot.Size() == 0 || Count(*spot.pNode) > 1000) return;
    JSON::ObjectValue& object = *spot.Object();
    object.Sort();
    const int kWrong[] = {spot.Size(), 100000, -1, INT_MIN, INT_MAX};
    const std::uint32_t n = random.Below(spot.pNode->vValues.size());
    object.GetByOrdinal(static_cast<int>(n))->nNameIndex = random.Of(kWrong);
    Expect(object.NameAt(static_cast<int>(n)) == nullptr, "the name at no place");
    Node expected = *spot.pNode;
    expected.vNames[n].clear();
    std::string strExpected;
    std::string strWritten;
    Expect(Plain::Write(expected, strExpected) == spot.pValue->Serialize(strWritten), "Serialize");
    Expect(strWritten == strExpected, "what is written for a lost name");
    JSON::Serialize writer(0);
    json_walk_obj(writer, spot.pValue, 0);
    object.Sort();
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
    const bool bAccepted = message.Parse(pText, bLength ? static_cast<int>(strText.size()) : -1);
    Expect(bAccepted == document.bAccepted, "result of Parse");
    if (!document.bRoot && message.bInPlace) return;  // unchanged

    const bool bKept = bSameKind && message.pComposite == pOld;
    const bool bHost = pCounts != nullptr;
    const Home home = bHost                                ? Home::kHost
                      : bKept && model.home == Home::kHeap ? Home::kHeap
                                                           : Home::kPool;
    if (bSameKind && (bHost || model.home == Home::kPool)) Expect(bKept, "the root stays in place");
    if (bHost && bKept) {
      const int nValues = static_cast<int>(document.root.vValues.size());
      const int nNames = static_cast<int>(document.root.vNames.size());
      Expect(pCounts->nCleared > 0 && pCounts->nValues == nValues && pCounts->nNames == nNames,
             "a host's root is emptied and filled through what it overrides");
    }
    const Aside aside;
    bRenewed = true;
    model = std::move(document.root);
    if (home != Home::kPool) model = CopyAt(model, Home::kAnywhere);
    model.home = home;
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
    JSON::ParseContext context = ContextOf(world.Keep(strText));
    const int nResult = spot.pNode->bObject ? JSON::Parser::ParseObject(context, *spot.Object())
                                            : JSON::Parser::ParseArray(context, *spot.Array());
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
    JSON::ParseContext context = ContextOf(world.Keep(strText));
    JSON::Parser::ParseJSONValue(context, spot.Container());
    AppendModel(spot, name, CopyAt(document.root.vValues.at(0), Home::kAnywhere));
  }

  // An element's text is parsed; one of its own is released.
  void ParseScalar(Spot& spot) {
    using JSON::Parser;
    static const struct {
      const char* szText;
      int (*parse)(JSON::ParseContext&, JSON::UnsafeJSONValue&);
      JSON::Type eType;
      const char* szValue;
      const char* szRest;
    } kScalars[] = {
        {"\"a\\u0041\" ", Parser::ParseString, JSON::jtString, "aA", ""},
        {"1.5e1]", Parser::ParseNumber, JSON::jtDouble, "1.5e1", ""},
        {"false", Parser::ParseBoolean, JSON::jtBoolean, "false", ""},
        {"null ", Parser::ParseNull, JSON::jtNull, "null", ""},
        {"34", Parser::ParseNumber, JSON::jtInteger, "3", "4"},
    };
    if (spot.pNode->bContainer) return;
    const auto& scalar = random.Of(kScalars);
    JSON::ParseContext context = ContextOf(world.Keep(scalar.szText));
    auto& value = static_cast<JSON::UnsafeJSONValue&>(*spot.pValue);
    Expect(scalar.parse(context, value) == scalar.eType, "result of parsing a scalar");
    GiveText(*spot.pNode, scalar.szValue, scalar.szRest);
    spot.pNode->eType = scalar.eType;
  }

  // A message that is used again and again for a little more each time, then for much, then for
  // little: what it held last is kept for the next content, and no longer.
  void GrowAndShrink(Spot& spot) {
    if (Count(model) > 1000) return;
    constexpr int kRounds = 12;
    ParseTwiceNothing();
    const std::size_t nBefore = CountedMemory::Live();
    const int nSize =
        world.nMost < 100000 || random.OneIn(2) ? static_cast<int>(world.Size() / 10) : 250000;
    const bool bCopy = random.OneIn(2);
    {
      JSON::Message source;
      for (int i = 0; i <= kRounds; ++i) {
        if (!bCopy) pMessage->Parse(pMessage->bInPlace ? world.Keep("[]") : "[]");
        (bCopy ? source : *pMessage).Set(nSize + i, 1);
        if (bCopy) source.CopyTo(*pMessage);
      }
      if (bCopy) model.home = Home::kPool;
      Expect((*pMessage)[nSize + kRounds].AsInt() == 1, "the last element");
      const std::size_t nOne = static_cast<std::size_t>(nSize) * sizeof(Value);
      Expect(CountedMemory::Live() <= nBefore + 8 * nOne + 65536, "memory grows with each use");
    }
    ParseText("[]");
    ParseText(SizedText(random, random.OneIn(8) ? world.nMost : world.Size()));
    ParseTwiceNothing();
    Expect(CountedMemory::Live() <= nBefore + 65536, "what was needed long ago is kept");
    spot = {&Root(), &model};
  }
  void ParseTwiceNothing() {
    ParseText("[]");
    ParseText("[]");
  }

  void TurnInPlace(Spot& /*none*/) { pMessage->bInPlace = !pMessage->bInPlace; }

  // ---- Copies and moves -------------------------------------------------------------------------

  // Whether something in `value` refers to the text that the message holds itself.
  bool RefersToOwnText(const Value& value) const {
    if (pMessage == nullptr) return false;
    const char* const pOwn = pMessage->strText.data();
    return AnyBorrowed(
        value, [&](const char* p) { return Within(p, pOwn, pOwn + pMessage->strText.size()); });
  }

  bool IsForeign(const char* pText) const {
    return !Within(pText, pMessage->pStart, pMessage->pEnd);
  }

  void CopyMessage(Spot& /*none*/) {
    TreeLife& other = *random.Of(world.vTrees);  // maybe the same one
    if (other.pMessage == nullptr) return;
    // A host's own container moves all that it does not own, so it may hold nothing from elsewhere.
    if (AnyBorrowed(
            other.Root(), [&](const char* p) { return other.IsForeign(p); }, true)) {
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
    bRenewed = true;
    model = CopyAt(other.model, Home::kPool);
  }

  // A clone refers to another buffer, as far away as it is told, and to nothing in the old one.
  void CloneElsewhere(Spot& /*none*/) {
    if (pMessage->pComposite == nullptr || pMessage->pStart == nullptr) return;
    if (AnyBorrowed(*pMessage, [&](const char* p) { return IsForeign(p); })) return;
    const char* const pCopy = world.Keep(std::string(pMessage->pStart, pMessage->pEnd));
    const auto nDelta = reinterpret_cast<std::uintptr_t>(pCopy) -
                        reinterpret_cast<std::uintptr_t>(pMessage->pStart);
    JSON::UnsafeJSONValue clone(pMessage->eType);
    clone.pComposite = pMessage->pComposite->Clone(static_cast<std::ptrdiff_t>(nDelta));
    ExpectNone(Plain::Difference(model, clone), "a clone elsewhere: ");
    Expect(!AnyBorrowed(clone, [&](const char* p) { return !IsForeign(p); }),
           "where the texts of a clone lie");
    delete clone.pComposite;
  }

  // The container gets a copy of itself as its last element.
  void AppendClone(Spot& spot) {
    if (Count(*spot.pNode) > kSmallTree) return;
    JSON::UnsafeJSONValue clone(spot.pNode->bObject ? JSON::jtObject : JSON::jtArray);
    clone.pComposite = spot.Container().Clone(0);
    Node copy = CopyAt(*spot.pNode, Home::kHeap);
    copy.eType = clone.eType;
    GiveText(copy, Text());
    Append(spot, clone, std::move(copy));
  }

  // Appends copies of the elements, or of the members to an empty object.
  void CopyContainer(Spot& to) {
    TreeLife& other = *random.Of(world.vTrees);
    Spot from{nullptr, nullptr};
    if (&other == this || !other.Find(Where::kContainer, from)) return;
    if (from.pNode->bObject != to.pNode->bObject || other.RefersToOwnText(*from.pValue)) return;
    if (from.Values() == nullptr || to.Values() == nullptr) return;
    if (to.pNode->bObject) {
      if (to.Size() > 0) return;
      Clear(to);  // of names without value
      from.Object()->CopyTo(*to.Object(), 0);
    } else {
      from.Array()->CopyTo(*to.Array(), 0);
    }
    AppendCopies(to, *from.pNode);
  }

  static void AppendCopies(const Spot& to, const Node& from) {
    const Aside aside;
    const Node copy = CopyAt(from, Home::kAnywhere);
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

  static void AddToModel(const Spot& spot, const char* name, Node node) {
    const Aside aside;
    if (name != nullptr) spot.pNode->vNames.emplace_back(name);
    spot.pNode->vValues.push_back(std::move(node));
  }

  void AppendModel(const Spot& spot, const char* name, Node node) {
    AddToModel(spot, name, std::move(node));
    spot.Container().MakeMap();
    if (name == nullptr) return;
    if (random.OneIn(2)) spot.Object()->Sort();
    spot.Object()->bSorted = false;
  }

  // The container gets a value with AddValue, and owns what it owned.
  void Append(const Spot& spot, Value& value, Node node) {
    const char* const name = NameFor(spot);
    spot.Container().AddValue(value);
    AppendModel(spot, name, std::move(node));
  }

  void AddByHand(Spot& spot) {
    const std::size_t nMost = spot.pNode->bObject ? 1500 : 20000;
    for (std::size_t n = std::min(world.Size(), nMost); n > 0; --n) {
      JSON::UnsafeJSONValue value(random.OneIn(2) ? JSON::jtInteger : JSON::jtString);
      value.pText = "123456";  // alone
      value.nNameIndex = static_cast<int>(n) * 1000 - 500;
      Node node;
      node.eType = value.eType;
      node.text = "";
      node.strRest = value.pText;
      const char* const name = NameFor(spot);
      spot.Container().AddValue(value);
      AddToModel(spot, name, std::move(node));
    }
    spot.Container().MakeMap();
    if (spot.pNode->bObject) spot.Object()->Sort();
  }

  // A part of a parsed document is added: the message dies, its text does not.
  void AddParsed(Spot& spot) {
    TreeLife donor(world, TreeKind::kInPlace);
    donor.ParseText(SomeDocument());
    const Spot from = donor.Anywhere();
    Node copy = CopyAt(*from.pNode, Home::kHeap);
    Append(spot, *from.pValue, std::move(copy));
    from.pValue->bOwnsText = false;
    donor.Compare();  // the original stays as it was
    ExpectNone(donor.strFault, "a donor: ");
  }

  // A container that lies on the heap goes from one tree to another.
  void AddMoved(Spot& to) {
    TreeLife& other = *random.Of(world.vTrees);
    Spot from{nullptr, nullptr};
    if (&other == this || !other.Find(Where::kElement, from)) return;
    if (!AllOnHeap(*from.pNode) || other.RefersToOwnText(*from.pValue)) return;
    JSON::UnsafeJSONValue scratch(*from.pValue);
    Node moved = CopyAt(*from.pNode, Home::kHeap);
    from.pValue->pComposite = nullptr;
    from.pValue->bOwnsText = false;
    SetText(from, nullptr, 0, false);
    GiveText(*from.pNode, Text());
    Empty(*from.pNode);
    from.pNode->bContainer = from.pNode->bObject = false;
    RefreshAbove(from);
    Append(to, scratch, std::move(moved));
    other.Compare();
    ExpectNone(other.strFault, "a donor: ");
  }
};

const TreeLife::Step TreeLife::kSteps[] = {
    {"update", Where::kAnywhere, &TreeLife::Update, 40},
    {"update behind the end", Where::kContainer, &TreeLife::UpdateFar, 4},
    {"update many", Where::kContainer, &TreeLife::UpdateMany, 4},
    {"clear a container", Where::kContainer, &TreeLife::ClearContainer, 4},
    {"replace a text", Where::kElement, &TreeLife::ReplaceText, 4},
    {"append a clone", Where::kNamed, &TreeLife::AppendClone, 4},
    {"set and clear", Where::kAnywhere, &TreeLife::SetAndClear, 1},
    {"go down", Where::kAnywhere, &TreeLife::GoDown, 1},
    {"give a text", Where::kElement, &TreeLife::FieldText, 3},
    {"point at a text", Where::kElement, &TreeLife::FieldTextAlone, 3},
    {"give a container", Where::kElement, &TreeLife::FieldContainer, 3},
    {"give a root", Where::kAnywhere, &TreeLife::RootContainer, 2},
    {"give a type", Where::kElement, &TreeLife::FieldType, 1},
    {"rename", Where::kContainer, &TreeLife::Rename, 3},
    {"touch the sequences", Where::kContainer, &TreeLife::TouchSequences, 2},
    {"swap elements", Where::kContainer, &TreeLife::SwapElements, 2},
    {"look through a stale string index", Where::kContainer, &TreeLife::StaleTexts, 2},
    {"look through a stale name index", Where::kNamed, &TreeLife::StaleNames, 2},
    {"parse a document", Where::kMessage, &TreeLife::ParseDocument, 4},
    {"parse a tiny text", Where::kMessage, &TreeLife::ParseTiny, 4},
    {"parse a text of any size", Where::kMessage, &TreeLife::ParseSized, 3},
    {"parse more into a container", Where::kNamed, &TreeLife::ParseMore, 3},
    {"parse an element", Where::kNamed, &TreeLife::ParseElement, 3},
    {"parse a scalar", Where::kElement, &TreeLife::ParseScalar, 3},
    {"grow and shrink", Where::kMessage, &TreeLife::GrowAndShrink, 2},
    {"turn in-place parsing on or off", Where::kMessage, &TreeLife::TurnInPlace, 1},
    {"copy a message", Where::kMessage, &TreeLife::CopyMessage, 5},
    {"clone to another buffer", Where::kMessage, &TreeLife::CloneElsewhere, 2},
    {"copy a container", Where::kContainer, &TreeLife::CopyContainer, 3},
    {"add by hand", Where::kNamed, &TreeLife::AddByHand, 4},
    {"add from a parsed document", Where::kNamed, &TreeLife::AddParsed, 4},
    {"move from another tree", Where::kNamed, &TreeLife::AddMoved, 4},
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

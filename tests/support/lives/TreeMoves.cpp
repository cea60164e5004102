// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The steps that parse into a tree, and those that copy and move between trees.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <utility>

#include "tests/support/Author.h"
#include "tests/support/lives/HostContainers.h"
#include "tests/support/lives/TreeLife.h"

namespace Support {
namespace {

using CountedMemory::Aside;

const char* const kTiny[] = {"[",     "[]",      "{",    "{}",      "",  " ",
                             "x",     "[1",      "[1,2", "[-1.5e3", "7", R"({"a":1,"b":2)",
                             "[1,2]", R"({"a")", "[[",   "[12,3.x"};

Plain::Document Parsed(const std::string& text) {
  const Aside aside;
  return Plain::Parse(text);
}

HostCounts* CountsOf(JSON::CompositeValue* pComposite) {
  if (auto* const pObject = dynamic_cast<HostObject*>(pComposite)) return &pObject->counts;
  auto* const pArray = dynamic_cast<HostArray*>(pComposite);
  return pArray != nullptr ? &pArray->counts : nullptr;
}

JSON::ParseContext Context(char* pText) { return {pText, pText + std::strlen(pText), pText}; }

// Whether a text or name in the tree that its container does not own fulfils the condition.
template <typename Condition>
bool AnyBorrowed(const JSON::JSONValue& value, const Condition& holds) {
  if (!value.bOwnsText && value.pText != nullptr && holds(value.pText)) return true;
  if (const auto* pObject = dynamic_cast<const JSON::ObjectValue*>(value.pComposite)) {
    for (const auto& entry : std::as_const(pObject->vNameMap)) {
      if (!entry.bOwnsName && entry.pName != nullptr && holds(entry.pName)) return true;
    }
  }
  for (int i = 0; i < value.Size(); ++i) {
    if (AnyBorrowed(*value.GetByOrdinal(i), holds)) return true;
  }
  return false;
}

// The same for what lies in a host's own kinds of containers.
template <typename Condition>
bool AnyHosted(const JSON::JSONValue& value, const Condition& holds) {
  const JSON::CompositeValue* const p = value.pComposite;
  if (dynamic_cast<const HostObject*>(p) != nullptr ||
      dynamic_cast<const HostArray*>(p) != nullptr || dynamic_cast<const HostList*>(p) != nullptr) {
    return AnyBorrowed(value, holds);
  }
  for (int i = 0; i < value.Size(); ++i) {
    if (AnyHosted(*value.GetByOrdinal(i), holds)) return true;
  }
  return false;
}

bool Within(const char* p, const char* pStart, const char* pEnd) {
  return std::less_equal<>()(pStart, p) && std::less_equal<>()(p, pEnd);
}

}  // namespace

// ---- Parses -------------------------------------------------------------------------------------

void TreeLife::ParseText(const std::string& strText) {
  if (pMessage == nullptr) return;
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

void TreeLife::ParseDocument() {
  Author author(random.Below(1 << 16));
  std::string strText =
      author.Document(random.OneIn(2) ? Support::Kind::kRows : Support::Kind::kMixed);
  for (std::size_t n = random.Below(3); n > 0; --n)
    author.Damage(strText);
  if (random.OneIn(2)) strText.resize(std::strlen(strText.c_str()));
  ParseText(strText);
}

void TreeLife::ParseTiny() { ParseText(random.Of(kTiny)); }

void TreeLife::ParseSized() {
  std::string strText = SizedText(random, world.Size());
  if (random.OneIn(4)) strText.pop_back();
  ParseText(strText);
}

// A container takes in more, behind what it has.
void TreeLife::ParseMore() {
  Spot spot{nullptr, nullptr};
  if (!FindContainer(spot) || !NamesMatch(*spot.pNode)) return;
  Author author(random.Below(1 << 16));
  std::string strText = random.OneIn(2)
                            ? author.Document(Support::Kind::kMixed)
                            : SizedText(random, std::min<std::size_t>(world.Size(), 2000));
  if (random.OneIn(3)) strText.resize(strText.size() / 2);
  strText.erase(0, strText.find_first_of("[{"));
  Plain::Document document = Parsed(strText);
  if (!document.bRoot || document.root.bObject != spot.pNode->bObject) return;
  if (strText.find('\0') != std::string::npos) return;
  auto* const pArray = dynamic_cast<JSON::ArrayValue*>(spot.pValue->pComposite);
  if (!spot.pNode->bObject && pArray == nullptr) return;
  JSON::ParseContext context = Context(world.Keep(strText));
  const int nResult = spot.pNode->bObject ? JSON::Parser::ParseObject(context, *spot.Object())
                                          : JSON::Parser::ParseArray(context, *pArray);
  Expect((nResult > 0) == document.bAccepted, "result of parsing more");
  const Aside aside;
  const Node read = CopyAt(document.root, Home::kAnywhere);
  spot.pNode->vValues.insert(spot.pNode->vValues.end(), read.vValues.begin(), read.vValues.end());
  spot.pNode->vNames.insert(spot.pNode->vNames.end(), read.vNames.begin(), read.vNames.end());
  spot.Container().MakeMap();
}

// One value of any kind becomes the last one of a container.
void TreeLife::ParseElement() {
  static const char* const kElements[] = {
      "12", " \"text\" ", "[1,{\"a\":2}]", "{\"b\":[]}", "true", "-1.5e3", "nul", "[1,2", "\"cut"};
  Spot spot{nullptr, nullptr};
  if (!FindContainer(spot) || !NamesMatch(*spot.pNode)) return;
  const std::string strText = random.Of(kElements);
  const Plain::Document document = Parsed('[' + strText);
  const char* const name = NameFor(spot);
  JSON::ParseContext context = Context(world.Keep(strText));
  JSON::Parser::ParseJSONValue(context, spot.Container());
  AppendModel(spot, name, CopyAt(document.root.vValues.at(0), Home::kAnywhere));
}

// An element's text is parsed; one of its own is released.
void TreeLife::ParseScalar() {
  struct Scalar {
    const char* szText;
    int (*parse)(JSON::ParseContext&, JSON::UnsafeJSONValue&);
    JSON::Type eType;
    const char* szValue;
    const char* szRest = "";
  };
  using JSON::Parser;
  static const Scalar kScalars[] = {
      {"\"a\\u0041\" ", Parser::ParseString, JSON::jtString, "aA"},
      {"-12,", Parser::ParseNumber, JSON::jtInteger, "-12"},
      {"1.5e1]", Parser::ParseNumber, JSON::jtDouble, "1.5e1"},
      {"false", Parser::ParseBoolean, JSON::jtBoolean, "false"},
      {"null ", Parser::ParseNull, JSON::jtNull, "null"},
      {"34", Parser::ParseNumber, JSON::jtInteger, "3", "4"},
  };
  Spot spot{nullptr, nullptr};
  if (!FindElement(spot) || spot.pNode->bContainer) return;
  const Scalar& scalar = random.Of(kScalars);
  auto& value = static_cast<JSON::UnsafeJSONValue&>(*spot.pValue);
  JSON::ParseContext context = Context(world.Keep(scalar.szText));
  Expect(scalar.parse(context, value) == scalar.eType, "result of parsing a scalar");
  GiveText(*spot.pNode, scalar.szValue, scalar.szRest);
  spot.pNode->eType = scalar.eType;
  spot.pParent->pComposite->MakeMap();
}

// A message that is used again and again for a little more each time.
void TreeLife::GrowSlowly() {
  if (pMessage == nullptr || Count(model) > 1000) return;
  constexpr int kRounds = 12;
  ParseText("[]");
  const int nSize =
      world.nMost < 100000 || random.OneIn(2) ? static_cast<int>(world.Size() / 10) : 250000;
  const bool bCopy = random.OneIn(2);
  {
    JSON::Message source;
    source.Set(nSize, 1);
    const std::size_t nBefore = CountedMemory::Live();
    for (int i = 1; i <= kRounds; ++i) {
      if (bCopy) {
        source.Set(nSize + i, 1);
        source.CopyTo(*pMessage);
      } else {
        pMessage->Parse(pMessage->bInPlace ? world.Keep("[]") : "[]");
        pMessage->Set(nSize + i, 1);
      }
    }
    if (bCopy) model.home = Home::kPool;
    Expect((*pMessage)[nSize + kRounds].AsInt() == 1, "the last element");
    const std::size_t nOne = static_cast<std::size_t>(nSize) * sizeof(Value);
    Expect(CountedMemory::Live() <= nBefore + 7 * nOne + 65536, "memory grows with each use");
  }
  ParseText("[]");
  ParseText("[]");  // now the content before is small, too
}

void TreeLife::TurnInPlace() {
  if (pMessage != nullptr) pMessage->bInPlace = !pMessage->bInPlace;
}

// ---- Copies and moves ---------------------------------------------------------------------------

// Whether something in `value` refers to the text that the message holds itself.
bool TreeLife::RefersToOwnText(const Value& value) const {
  if (pMessage == nullptr) return false;
  const char* const pOwn = pMessage->strText.data();
  return AnyBorrowed(value, [&](const char* pText) {
    return Within(pText, pOwn, pOwn + pMessage->strText.size());
  });
}

// A host's own container moves all that it does not own, so it may hold nothing from elsewhere.
bool TreeLife::CanBeCopied() {
  return !AnyHosted(
      Root(), [&](const char* pText) { return !Within(pText, pMessage->pStart, pMessage->pEnd); });
}

void TreeLife::CopyMessage() {
  TreeLife& other = *random.Of(world.vTrees);  // maybe the same one
  if (pMessage == nullptr || other.pMessage == nullptr || !other.CanBeCopied()) return;
  const std::uint32_t nHow = random.Below(4);
  if (&other == this && nHow < 2) {
    nHow == 0 ? pMessage->CopyTo(*pMessage) : void(*pMessage = *&*pMessage);
    return;
  }
  if (nHow == 0) other.pMessage->CopyTo(*pMessage);
  if (nHow == 1) *pMessage = *other.pMessage;
  if (nHow == 2) *pMessage = JSON::Message(*other.pMessage);
  if (nHow == 3) pMessage = std::make_unique<JSON::Message>(*other.pMessage);
  bRenewed = true;
  model = CopyAt(other.model, Home::kPool);
}

// A clone refers to another buffer, as far away as it is told, and to nothing in the old one.
void TreeLife::CloneElsewhere() {
  if (pMessage == nullptr || pMessage->pComposite == nullptr || pMessage->pStart == nullptr) return;
  const char* const pStart = pMessage->pStart;
  const char* const pEnd = pMessage->pEnd;
  const auto isInBuffer = [&](const char* pText) { return Within(pText, pStart, pEnd); };
  const auto isElsewhere = [&](const char* pText) { return !isInBuffer(pText); };
  if (AnyBorrowed(*pMessage, isElsewhere)) return;
  const char* const pCopy = world.Keep(std::string(pStart, pEnd));
  const auto nDelta =
      reinterpret_cast<std::uintptr_t>(pCopy) - reinterpret_cast<std::uintptr_t>(pStart);
  JSON::UnsafeJSONValue clone(pMessage->eType);
  clone.pComposite = pMessage->pComposite->Clone(static_cast<std::ptrdiff_t>(nDelta));
  const std::string strDifference = Plain::Difference(model, clone);
  Expect(strDifference.empty(), "a clone elsewhere: " + strDifference);
  Expect(!AnyBorrowed(clone, isInBuffer), "where the texts of a clone lie");
  delete clone.pComposite;
}

// Appends copies of the elements, or of the members to an empty object.
void TreeLife::CopyContainer() {
  TreeLife& other = *random.Of(world.vTrees);
  Spot from{nullptr, nullptr};
  Spot to{nullptr, nullptr};
  if (&other == this || !other.FindContainer(from) || !FindContainer(to)) return;
  if (from.pNode->bObject != to.pNode->bObject || other.RefersToOwnText(*from.pValue)) return;
  if (to.pNode->bObject && to.Size() > 0) return;
  if (JSON::ObjectValue* const pObject = from.Object()) {
    to.Container().Clear();  // of names without value
    Empty(*to.pNode);
    pObject->CopyTo(*to.Object(), 0);
  } else {
    const auto* const pFrom = dynamic_cast<JSON::ArrayValue*>(from.pValue->pComposite);
    auto* const pTo = dynamic_cast<JSON::ArrayValue*>(to.pValue->pComposite);
    if (pFrom == nullptr || pTo == nullptr) return;
    pFrom->CopyTo(*pTo, 0);
  }
  const Aside aside;
  const Node copy = CopyAt(*from.pNode, Home::kAnywhere);
  to.pNode->vValues.insert(to.pNode->vValues.end(), copy.vValues.begin(), copy.vValues.end());
  to.pNode->vNames.insert(to.pNode->vNames.end(), copy.vNames.begin(), copy.vNames.end());
  to.Container().MakeMap();
}

// Adds a name for the value that comes next, if there are names at all.
const char* TreeLife::NameFor(const Spot& spot) {
  if (!spot.pNode->bObject) return nullptr;
  JSON::UnsafeJSONValue name(JSON::jtString);
  name.pText = world.Keep(Name());
  name.nLength = static_cast<int>(std::strlen(name.pText));
  spot.Object()->AddName(name);
  return name.pText;
}

void TreeLife::AppendModel(const Spot& spot, const char* name, Node node) {
  const Aside aside;
  if (name != nullptr) spot.pNode->vNames.emplace_back(name);
  spot.pNode->vValues.push_back(std::move(node));
  spot.Container().MakeMap();
  if (name == nullptr) return;
  if (random.OneIn(2)) spot.Object()->Sort();
  spot.Object()->bSorted = false;
}

// The container gets a value with AddValue, and owns what it owned.
void TreeLife::Append(const Spot& spot, Value& value, Node node) {
  const char* const name = NameFor(spot);
  spot.Container().AddValue(value);
  AppendModel(spot, name, std::move(node));
}

void TreeLife::AddByHand() {
  Spot spot{nullptr, nullptr};
  if (!FindContainer(spot) || !NamesMatch(*spot.pNode)) return;
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
    const Aside aside;
    if (name != nullptr) spot.pNode->vNames.emplace_back(name);
    spot.pNode->vValues.push_back(std::move(node));
  }
  spot.Container().MakeMap();
  if (spot.pNode->bObject) spot.Object()->Sort();
}

// A part of a parsed document is added: the message dies, its text does not.
void TreeLife::AddParsed() {
  Spot spot{nullptr, nullptr};
  if (!FindContainer(spot) || !NamesMatch(*spot.pNode)) return;
  Author author(random.Below(1 << 16));
  const std::string strText =
      author.Document(random.OneIn(2) ? Support::Kind::kRows : Support::Kind::kMixed);
  TreeLife donor(world, Kind::kInPlace);
  donor.ParseText(strText);
  const Spot from = donor.Anywhere();
  Node copy = CopyAt(*from.pNode, Home::kHeap);
  Append(spot, *from.pValue, std::move(copy));
  from.pValue->bOwnsText = false;
  if (donor.strFault.empty()) donor.Compare();  // the original stays as it was
  Expect(donor.strFault.empty(), donor.strFault);
}

// A container that lies on the heap goes from one tree to another.
void TreeLife::AddMoved() {
  TreeLife& other = *random.Of(world.vTrees);
  Spot from{nullptr, nullptr};
  Spot to{nullptr, nullptr};
  if (&other == this || !other.FindElement(from) || !FindContainer(to)) return;
  if (!AllOnHeap(*from.pNode) || other.RefersToOwnText(*from.pValue) || !NamesMatch(*to.pNode)) {
    return;
  }
  JSON::UnsafeJSONValue scratch(*from.pValue);
  Node moved = CopyAt(*from.pNode, Home::kHeap);
  from.pValue->pComposite = nullptr;
  from.pValue->pText = nullptr;
  from.pValue->nLength = 0;
  from.pValue->bOwnsText = false;
  GiveText(*from.pNode, Text());
  Empty(*from.pNode);
  from.pNode->bContainer = from.pNode->bObject = false;
  from.pParent->pComposite->MakeMap();
  Append(to, scratch, std::move(moved));
  other.Compare();
  Expect(other.strFault.empty(), other.strFault);
}

}  // namespace Support

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The table of steps, the way to a value, the comparison, and the steps that update a tree.

#include "tests/support/lives/TreeLife.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

#include "tests/support/lives/HostContainers.h"

namespace Support {
namespace {

// Beyond this a step compares a sample, most of the time.
constexpr std::size_t kSmallTree = 1500;

constexpr const char* kNames[] = {"", "a", "b", "c", "aa", "0", "\xC3\xA9\n"};
constexpr const char* kLongNames[] = {"column_of_15_by", "column_of_16_byt", "column_of_17_byte"};
constexpr const char* kTexts[] = {"",        "text",       "true",         "12",
                                  "-7.5e3x", "\"\\\x01\n", "a longer text"};

Text Copied(const char* text) { return text == nullptr ? Text() : Text(text); }
int Copied(int nOrdinal) { return nOrdinal; }

}  // namespace

TreeLife::TreeLife(World& common, Kind kind) : Life(common) {
  {
    const CountedMemory::Aside aside;
    world.vTrees.push_back(this);
  }
  if (kind == Kind::kCopying || kind == Kind::kInPlace) {
    pMessage = std::make_unique<JSON::Message>(kind == Kind::kInPlace);
    return;
  }
  const bool bObject = kind == Kind::kObject || kind == Kind::kHostObject;
  if (kind == Kind::kObject) handle.pComposite = new JSON::ObjectValue;
  if (kind == Kind::kArray) handle.pComposite = new JSON::ArrayValue(4);
  if (kind == Kind::kHostObject) handle.pComposite = new HostObject(4);
  if (kind == Kind::kHostArray) handle.pComposite = new HostArray;
  handle.eType = bObject ? JSON::jtObject : JSON::jtArray;
  const bool bHost = kind == Kind::kHostObject || kind == Kind::kHostArray;
  GiveContainer(model, bObject, bHost ? Home::kHost : Home::kHeap);
  model.eType = handle.eType;
}

TreeLife::~TreeLife() {
  world.vTrees.erase(std::find(world.vTrees.begin(), world.vTrees.end(), this));
  delete handle.pComposite;
}

void TreeLife::TakeOne() {
  static const Named<TreeLife> kSteps[] = {
      {"update", &TreeLife::Update, 40},
      {"update behind the end", &TreeLife::UpdateFar, 4},
      {"update many", &TreeLife::UpdateMany, 4},
      {"clear a container", &TreeLife::ClearContainer, 4},
      {"replace a text", &TreeLife::ReplaceText, 4},
      {"append a clone", &TreeLife::AppendClone, 4},
      {"set and clear", &TreeLife::SetAndClear, 1},
      {"go down", &TreeLife::GoDown, 1},
      {"give a text", &TreeLife::FieldText, 3},
      {"point at a text", &TreeLife::FieldTextAlone, 3},
      {"give a container", &TreeLife::FieldContainer, 3},
      {"give a root", &TreeLife::RootContainer, 2},
      {"give a type", &TreeLife::FieldType, 1},
      {"rename", &TreeLife::Rename, 3},
      {"touch the sequences", &TreeLife::TouchSequences, 2},
      {"swap elements", &TreeLife::SwapElements, 2},
      {"forget the order", &TreeLife::ForgetOrder, 1},
      {"look through a stale string index", &TreeLife::StaleTexts, 2},
      {"look through a stale name index", &TreeLife::StaleNames, 2},
      {"parse a document", &TreeLife::ParseDocument, 4},
      {"parse a tiny text", &TreeLife::ParseTiny, 4},
      {"parse a text of any size", &TreeLife::ParseSized, 3},
      {"parse more into a container", &TreeLife::ParseMore, 3},
      {"parse an element", &TreeLife::ParseElement, 3},
      {"parse a scalar", &TreeLife::ParseScalar, 3},
      {"grow slowly", &TreeLife::GrowSlowly, 2},
      {"turn in-place parsing on or off", &TreeLife::TurnInPlace, 1},
      {"copy a message", &TreeLife::CopyMessage, 5},
      {"clone to another buffer", &TreeLife::CloneElsewhere, 2},
      {"copy a container", &TreeLife::CopyContainer, 3},
      {"add by hand", &TreeLife::AddByHand, 4},
      {"add from a parsed document", &TreeLife::AddParsed, 4},
      {"move from another tree", &TreeLife::AddMoved, 4},
  };
  TakeOneOf(pMessage != nullptr ? "message" : "container", *this, kSteps);
  Compare();
}

// ---- The way to a value -------------------------------------------------------------------------

JSON::ObjectValue* TreeLife::Spot::Object() const {
  return dynamic_cast<JSON::ObjectValue*>(pValue->pComposite);
}

JSON::Sequence<JSON::UnsafeJSONValue>* TreeLife::Spot::Values() const {
  if (JSON::ObjectValue* const pObject = Object()) return &pObject->avValues.vValues;
  auto* const pArray = dynamic_cast<JSON::ArrayValue*>(pValue->pComposite);
  return pArray != nullptr ? &pArray->vValues : nullptr;
}

// By a lookup, or through the sequence of the elements, which may be a constant on the way.
TreeLife::Spot TreeLife::Below(const Spot& spot) {
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

TreeLife::Spot TreeLife::Anywhere() {
  Spot spot{&Root(), &model};
  while (!spot.pNode->vValues.empty() && !random.OneIn(3))
    spot = Below(spot);
  return spot;
}

bool TreeLife::FindElement(Spot& spot) {
  spot = Anywhere();
  if (spot.pParent == nullptr && !model.vValues.empty()) spot = Below(spot);
  return spot.pParent != nullptr;
}

bool TreeLife::FindContainer(Spot& spot) {
  spot = Anywhere();
  if (!spot.pNode->bContainer && spot.pParent != nullptr) spot = {spot.pParent, spot.pParentNode};
  return spot.pNode->bContainer;
}

const char* TreeLife::Name() { return random.OneIn(3) ? random.Of(kLongNames) : random.Of(kNames); }

// ---- Comparison ---------------------------------------------------------------------------------

// Looking hands out whatever it looks at, so now and then nothing is compared for a while.
void TreeLife::Compare() {
  if (!strFault.empty() || random.OneIn(3)) return;
  if (Count(model) > kSmallTree && !random.OneIn(10)) return CompareSample();
  strFault = CheckAll();
}

// On some ways down, the sizes and what the last value is.
void TreeLife::CompareSample() {
  for (int i = 0; i < 5; ++i) {
    Spot spot{&Root(), &model};
    while (spot.pNode->bContainer && spot.pValue->Size() == spot.Size() && spot.Size() > 0)
      spot = Below(spot);
    if (spot.pNode->bContainer) Expect(spot.pValue->Size() == spot.Size(), "the size");
    if (strFault.empty() && spot.Size() == 0)
      strFault = Plain::Difference(*spot.pNode, *spot.pValue);
  }
}

// ---- Updates ------------------------------------------------------------------------------------

namespace {

JSON::JSONValue* InternalUpdate(JSON::JSONValue& value, int nOrdinal, const char* text,
                                JSON::Type eType) {
  return value.InternalUpdateByOrdinal(nOrdinal, text, eType);
}
JSON::JSONValue* InternalUpdate(JSON::JSONValue& value, const char* name, const char* text,
                                JSON::Type eType) {
  return value.InternalUpdateByName(name, text, eType);
}

}  // namespace

// One of the update operations under `key`, a name or an ordinal.
template <typename Key>
void TreeLife::UpdateUnder(const Spot& spot, Key key) {
  // The key may be a name of this very object, and the text one from below it.
  const auto kept = Copied(key);
  Value& value = *spot.pValue;
  const bool bNewRoot = &value == pMessage.get() && !spot.pNode->bContainer;
  const auto Store = [&](const Value& stored, const Text& strText, int eType) {
    const Value* pExpected = &Value::None();
    if (const Node* pStored = UpdateModel(*spot.pNode, kept, strText, eType))
      pExpected = value.GetByOrdinal(static_cast<int>(pStored - spot.pNode->vValues.data()));
    if (bNewRoot) spot.pNode->home = Home::kAnywhere;  // as the library likes
    Expect(&stored == pExpected, "what an update returns");
  };
  const int n = static_cast<int>(random.Below(100000)) - 50000;
  const bool b = n % 2 == 0;
  const double d = n / 7.0;
  const long l = n * 40000L;
  const auto nLarge = static_cast<unsigned long long>(n) * 77;
  const char* text = random.Of(kTexts);
  switch (random.Below(11)) {
    case 0:
      return Store(value.Set(key, n), std::to_string(n), JSON::jtInteger);
    case 1:
      return Store(value.Set(key, l), std::to_string(l), JSON::jtInteger);
    case 2:
      return Store(value.Set(key, b), b ? "true" : "false", JSON::jtBoolean);
    case 3: {
      char szText[32];
      std::snprintf(szText, sizeof szText, "%g", d);
      return Store(value.Set(key, d), szText, JSON::jtDouble);
    }
    case 4:
      return Store(value.SetNull(key), Text(), JSON::jtNull);
    case 5: {
      const JSON::Type eType = static_cast<JSON::Type>(static_cast<int>(random.Below(9)) - 1);
      if (random.OneIn(4)) text = nullptr;
      const Value* pStored = InternalUpdate(value, key, text, eType);
      return Store(pStored == nullptr ? Value::None() : *pStored, Copied(text), eType);
    }
    case 6:
      return Store(value.Set(key, nLarge), std::to_string(nLarge), JSON::jtInteger);
    case 7: {
      const auto nLong = static_cast<unsigned long>(l);
      return Store(value.Set(key, nLong), std::to_string(nLong), JSON::jtInteger);
    }
    case 8:  // a text of the tree, when it is a terminated one
      text = value.pText;
      if (spot.Size() > 0) text = Below(spot).pValue->pText;
      [[fallthrough]];
    default: {
      const Text before = Copied(text);
      return Store(value.Set(key, text), before, JSON::jtString);
    }
  }
}

template void TreeLife::UpdateUnder(const Spot& spot, int nOrdinal);
template void TreeLife::UpdateUnder(const Spot& spot, const char* name);

void TreeLife::Update() {
  const Spot spot = Anywhere();
  const bool bWasScalar = !spot.pNode->bContainer;
  if (random.OneIn(2)) {
    UpdateUnder(spot, static_cast<int>(random.Below(spot.pNode->vValues.size() + 4)) - 1);
  } else if (spot.pNode->bObject && !spot.pNode->vNames.empty() && random.OneIn(3)) {
    const int nMember = static_cast<int>(random.Below(spot.pNode->vNames.size()));
    UpdateUnder(spot, spot.Container().NameAt(nMember));
  } else {
    UpdateUnder(spot, random.OneIn(20) ? nullptr : Name());
  }
  // The index of an array does not follow changes from below.
  if (spot.pParent != nullptr && bWasScalar) spot.pParent->pComposite->MakeMap();
}

void TreeLife::UpdateFar() {
  Spot spot{nullptr, nullptr};
  if (FindContainer(spot)) UpdateUnder(spot, spot.Size() + static_cast<int>(world.Size()));
}

// Each new name sorts the names anew, so there are only so many.
void TreeLife::UpdateMany() {
  Spot spot{nullptr, nullptr};
  if (!FindContainer(spot)) return;
  const std::size_t nCount = std::min<std::size_t>(world.Size(), spot.pNode->bObject ? 200 : 20000);
  for (std::size_t i = 0; i < nCount; ++i) {
    if (spot.pNode->bObject) {
      UpdateUnder(spot, ('m' + std::to_string(i * 7 % nCount)).c_str());
    } else {
      UpdateUnder(spot, spot.Size());
    }
  }
}

void TreeLife::ClearContainer() {
  Spot spot{nullptr, nullptr};
  if (Count(model) > kSmallTree) spot = {&Root(), &model};
  if (spot.pNode == nullptr && !FindContainer(spot)) return;
  if (!spot.pNode->bContainer) return;
  Empty(*spot.pNode);
  spot.Container().Clear();
}

void TreeLife::ReplaceText() {
  Spot spot{nullptr, nullptr};
  if (!FindElement(spot)) return;
  const Text text = random.OneIn(8) ? Text() : Text(random.Of(kTexts));
  GiveText(*spot.pNode, text);
  spot.pValue->InternalUpdateValue(text ? text->c_str() : nullptr);
  spot.pParent->pComposite->MakeMap();
}

// The container gets a copy of itself as its last element.
void TreeLife::AppendClone() {
  Spot spot{nullptr, nullptr};
  if (!FindContainer(spot) || Count(*spot.pNode) > kSmallTree) return;
  JSON::UnsafeJSONValue clone(spot.pNode->bObject ? JSON::jtObject : JSON::jtArray);
  clone.pComposite = spot.Container().Clone(0);
  Node copy = CopyAt(*spot.pNode, Home::kHeap);
  copy.eType = clone.eType;
  GiveText(copy, Text());
  if (NamesMatch(*spot.pNode)) return Append(spot, clone, std::move(copy));
  delete clone.pComposite;
}

// Again and again the same room is enough.
void TreeLife::SetAndClear() {
  Spot spot = Anywhere();
  constexpr int kRounds = 150;
  constexpr int kEntries = 40;
  std::size_t nFirst = 0;
  for (int i = 0; i < kRounds; ++i) {
    for (int k = 0; k < kEntries; ++k) {
      if (spot.pNode->bObject || !spot.pNode->bContainer) {
        UpdateUnder(spot, ('s' + std::to_string(k)).c_str());
      } else {
        UpdateUnder(spot, k);
      }
    }
    if (!spot.pNode->bContainer) return;  // an empty value
    spot.Container().Clear();
    Empty(*spot.pNode);
    if (i == 2) nFirst = CountedMemory::Live();
  }
  if (spot.pParent != nullptr) spot.pParent->pComposite->MakeMap();
  Expect(CountedMemory::Live() <= nFirst + 4096, "memory grows from round to round");
}

// Level below level, each made of the scalar that was set last.
void TreeLife::GoDown() {
  Spot spot = Anywhere();
  for (std::size_t n = std::min<std::size_t>(world.Size(), 1000); n > 0; --n) {
    if (spot.pNode->bContainer && spot.Size() > 0) spot = Below(spot);
    if (random.OneIn(2)) {
      UpdateUnder(spot, 0);
    } else {
      UpdateUnder(spot, "d");
    }
    if (spot.pParent != nullptr) spot.pParent->pComposite->MakeMap();
    if (!spot.pNode->bContainer || spot.Size() == 0) return;
  }
}

}  // namespace Support

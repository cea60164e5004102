// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A tree with its model: the way to a value, the comparison, and the update operations.

#ifndef QXRECORDSET_TESTS_SUPPORT_LIVES_TREESPOTS_H
#define QXRECORDSET_TESTS_SUPPORT_LIVES_TREESPOTS_H

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "tests/support/lives/HostContainers.h"
#include "tests/support/lives/Life.h"
#include "tests/support/lives/TreeLife.h"
#include "tests/support/lives/TreeModel.h"

namespace Support {

// Beyond this a step compares a sample, most of the time.
constexpr std::size_t kSmallTree = 1500;

constexpr const char* kTreeNames[] = {"", "a", "b", "c", "aa", "0", "\xC3\xA9\n"};
constexpr const char* kLongTreeNames[] = {"column_of_15_by", "column_of_16_byt",
                                          "column_of_17_byte"};
constexpr const char* kTreeTexts[] = {"",        "text",       "true",         "12",
                                      "-7.5e3x", "\"\\\x01\n", "a longer text"};

class TreeSpots : public Life {
 public:
  using Value = JSON::JSONValue;

  // A value of the tree, with its model, and the value whose element it is.
  struct Spot {
    Value* pValue;
    Node* pNode;
    Value* pParent = nullptr;
    Node* pParentNode = nullptr;

    JSON::CompositeValue& Container() const { return *pValue->pComposite; }
    template <typename Kind>
    Kind* As() const {
      return dynamic_cast<Kind*>(pValue->pComposite);
    }
    JSON::ObjectValue* Object() const { return As<JSON::ObjectValue>(); }
    JSON::ArrayValue* Array() const { return As<JSON::ArrayValue>(); }
    JSON::Sequence<JSON::UnsafeJSONValue>* Values() const {
      if (JSON::ObjectValue* const pObject = Object()) return &pObject->avValues.vValues;
      return Array() != nullptr ? &Array()->vValues : nullptr;
    }
    int Size() const { return static_cast<int>(pNode->vValues.size()); }
  };

  TreeSpots(World& common, TreeKind kind) : Life(common) {
    const bool bHost = kind == TreeKind::kHostObject || kind == TreeKind::kHostArray;
    const bool bObject = kind == TreeKind::kObject || kind == TreeKind::kHostObject;
    if (kind == TreeKind::kCopying || kind == TreeKind::kInPlace) {
      pMessage = std::make_unique<JSON::Message>(kind == TreeKind::kInPlace);
      return;
    }
    handle.pComposite = NewContainer(bObject, bHost);
    handle.eType = bObject ? JSON::jtObject : JSON::jtArray;
    GiveContainer(model, bObject, bHost ? Home::kHost : Home::kHeap);
    model.eType = handle.eType;
  }
  ~TreeSpots() override { delete handle.pComposite; }

  std::string CheckAll() override { return Plain::Difference(model, Root()); }
  std::size_t Need() const override { return NeedOf(model); }

 protected:
  static JSON::CompositeValue* NewContainer(bool bObject, bool bHost) {
    if (bObject && bHost) return new HostObject(4);
    if (bObject) return new JSON::ObjectValue;
    if (bHost) return new HostArray;
    return new JSON::ArrayValue(4);
  }

  Value& Root() { return pMessage != nullptr ? static_cast<Value&>(*pMessage) : handle; }

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
    Spot spot{&Root(), &model};
    while (!spot.pNode->vValues.empty() && !random.OneIn(3))
      spot = Below(spot);
    return spot;
  }

  // A value of the kind, where there is one.
  enum class Where { kMessage, kAnywhere, kElement, kContainer, kNamed };
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

  // Looking hands out whatever it looks at, so now and then nothing is compared for a while.
  void Compare() {
    if (!strFault.empty() || random.OneIn(3)) return;
    if (Count(model) > kSmallTree && !random.OneIn(10)) return CompareSample();
    strFault = CheckAll();
  }

  // One of the update operations under `key`, a name or an ordinal.
  template <typename Key>
  void UpdateUnder(const Spot& spot, Key key) {
    // The key may be a name of this very object, and the text one from below it.
    const auto kept = Copied(key);
    Value& value = *spot.pValue;
    const bool bNewRoot = &value == pMessage.get() && !spot.pNode->bContainer;
    const auto store = [&](const Value& stored, const Text& strText, int eType) {
      const Value* pExpected = &Value::None();
      if (const Node* pStored = UpdateModel(*spot.pNode, kept, strText, eType))
        pExpected = value.GetByOrdinal(static_cast<int>(pStored - spot.pNode->vValues.data()));
      if (bNewRoot) spot.pNode->home = Home::kAnywhere;  // as the library likes
      Expect(&stored == pExpected, "what an update returns");
    };
    const auto integer = [&](auto n) {
      store(value.Set(key, n), std::to_string(n), JSON::jtInteger);
    };
    const auto text = [&](const char* szText) {
      const Text before = Copied(szText);
      store(value.Set(key, szText), before, JSON::jtString);
    };
    const auto real = [&](double d) {
      char szText[32];
      std::snprintf(szText, sizeof szText, "%g", d);
      store(value.Set(key, d), szText, JSON::jtDouble);
    };
    const auto anyType = [&] {
      const auto eType = static_cast<JSON::Type>(static_cast<int>(random.Below(9)) - 1);
      const char* const szText = random.OneIn(4) ? nullptr : random.Of(kTreeTexts);
      const Value* pStored = nullptr;
      if constexpr (std::is_same_v<Key, int>) {
        pStored = value.InternalUpdateByOrdinal(key, szText, eType);
      } else {
        pStored = value.InternalUpdateByName(key, szText, eType);
      }
      store(pStored == nullptr ? Value::None() : *pStored, Copied(szText), eType);
    };
    const int n = static_cast<int>(random.Below(100000)) - 50000;
    const long l = n * 40000L;
    const std::function<void()> kUpdates[] = {
        [&] { integer(n); },
        [&] { integer(random.OneIn(4) ? LONG_MIN : l); },
        [&] { integer(random.OneIn(4) ? ULONG_MAX : static_cast<unsigned long>(l)); },
        [&] { integer(static_cast<unsigned long long>(n) * 77); },
        [&] { store(value.Set(key, n % 2 == 0), n % 2 == 0 ? "true" : "false", JSON::jtBoolean); },
        [&] { real(n / 7.0); },
        [&] { store(value.SetNull(key), Text(), JSON::jtNull); },
        anyType,
        [&] { text(random.Of(kTreeTexts)); },
        [&] { text(random.Of(kTreeTexts)); },
        // A text of the tree, when it is a terminated one.
        [&] { text(spot.Size() > 0 ? Below(spot).pValue->pText : value.pText); },
    };
    random.Of(kUpdates)();
  }

  const char* Name() { return random.OneIn(3) ? random.Of(kLongTreeNames) : random.Of(kTreeNames); }

  std::unique_ptr<JSON::Message> pMessage;  // or
  JSON::UnsafeJSONValue handle;             // what refers to a container made by hand
  Node model;

 private:
  static Text Copied(const char* text) { return text == nullptr ? Text() : Text(text); }
  static int Copied(int nOrdinal) { return nOrdinal; }

  // On some ways down, the sizes and what the last value is.
  void CompareSample() {
    for (int i = 0; i < 5; ++i) {
      Spot spot{&Root(), &model};
      while (spot.pNode->bContainer && spot.pValue->Size() == spot.Size() && spot.Size() > 0)
        spot = Below(spot);
      if (spot.pNode->bContainer) Expect(spot.pValue->Size() == spot.Size(), "the size");
      if (strFault.empty() && spot.Size() == 0)
        strFault = Plain::Difference(*spot.pNode, *spot.pValue);
    }
  }
};

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_LIVES_TREESPOTS_H

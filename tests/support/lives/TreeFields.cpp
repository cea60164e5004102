// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The steps that write to public fields, and those that look through an index that is out of date.

#include <climits>
#include <cstring>
#include <utility>

#include "recordset/QXRecordSet.h"
#include "tests/support/lives/HostContainers.h"
#include "tests/support/lives/TreeLife.h"

namespace Support {

// A value's text becomes one that the container has to release.
void TreeLife::FieldText() {
  Spot spot{nullptr, nullptr};
  if (!FindElement(spot)) return;
  Value& value = *spot.pValue;
  const std::string strText(random.Below(40), 'g');
  if (value.bOwnsText) delete[] value.pText;
  char* const pText = new char[strText.size() + 1];
  std::memcpy(pText, strText.c_str(), strText.size() + 1);
  value.pText = pText;
  value.nLength = static_cast<int>(strText.size());
  value.bOwnsText = true;
  GiveText(*spot.pNode, strText);
  spot.pParent->pComposite->MakeMap();
}

// A text that nobody releases, without its length.
void TreeLife::FieldTextAlone() {
  struct Alone {
    const char* szText;
    JSON::Type eType;
  };
  static const Alone kTexts[] = {{"12", JSON::jtInteger},          {"99999999999", JSON::jtInteger},
                                 {"-3.5e1", JSON::jtDouble},       {"true", JSON::jtBoolean},
                                 {"a text alone", JSON::jtString}, {"1.", JSON::jtDouble}};
  Spot spot{nullptr, nullptr};
  if (!FindElement(spot) || spot.pNode->bContainer) return;
  Value& value = *spot.pValue;
  const Alone& alone = random.Of(kTexts);
  if (value.bOwnsText) delete[] value.pText;
  value.pText = alone.szText;
  value.nLength = 0;
  value.bOwnsText = false;
  value.eType = alone.eType;
  spot.pNode->eType = alone.eType;
  GiveText(*spot.pNode, "", alone.szText);
  spot.pParent->pComposite->MakeMap();
}

// A container from the heap, for a value without one, or in place of another one from the heap.
void TreeLife::GiveContainerTo(const Spot& spot) {
  Value& value = *spot.pValue;
  const Home home = spot.pNode->home;
  if (spot.pNode->bContainer && home != Home::kHeap && home != Home::kHost) return;
  delete std::exchange(value.pComposite, nullptr);
  const std::uint32_t nKind = random.Below(5);
  const bool bObject = nKind < 2;
  if (nKind == 0) value.pComposite = new JSON::ObjectValue(4);
  if (nKind == 1) value.pComposite = new HostObject;
  if (nKind == 2) value.pComposite = new JSON::ArrayValue(4);
  if (nKind == 3) value.pComposite = new HostArray(1);
  if (nKind == 4) value.pComposite = new HostList;
  value.eType = bObject ? JSON::jtObject : JSON::jtArray;
  GiveContainer(*spot.pNode, bObject, nKind % 2 == 0 && nKind < 4 ? Home::kHeap : Home::kHost);
  spot.pNode->eType = value.eType;
  for (std::uint32_t n = random.Below(4); n > 0; --n) {
    if (bObject) {
      UpdateUnder(spot, Name());
    } else {
      UpdateUnder(spot, spot.Size());
    }
  }
  if (spot.pParent != nullptr) spot.pParent->pComposite->MakeMap();
}

void TreeLife::FieldContainer() {
  Spot spot{nullptr, nullptr};
  if (FindElement(spot)) GiveContainerTo(spot);
}

// A root in a message's pool has to be given up by the message.
void TreeLife::RootContainer() {
  if (pMessage != nullptr && random.OneIn(2)) {
    *pMessage = JSON::Message(pMessage->bInPlace);
    const CountedMemory::Aside aside;
    model = Node();
    bRenewed = true;
  }
  GiveContainerTo({&Root(), &model});
}

void TreeLife::FieldType() {
  Spot spot{nullptr, nullptr};
  if (!FindElement(spot) || !spot.pValue->bOwnsText) return;  // no NUL may end another text
  spot.pNode->eType = static_cast<int>(random.Below(9)) - 1;
  spot.pValue->eType = static_cast<JSON::Type>(spot.pNode->eType);
  spot.pParent->pComposite->MakeMap();
}

void TreeLife::Rename() {
  Spot spot{nullptr, nullptr};
  if (!FindContainer(spot) || spot.pNode->vNames.empty()) return;
  JSON::ObjectValue& object = *spot.Object();
  const char* const name = Name();
  auto& entry = object.vNameMap[random.Below(object.vNameMap.size())];
  spot.pNode->vNames.at(static_cast<std::size_t>(entry.nOrdinal)) = name;
  entry.UpdateName(name);
  object.bSorted = false;
}

// Reads everything through what may be changed.
void TreeLife::TouchSequences() {
  Spot spot{nullptr, nullptr};
  if (!FindContainer(spot)) return;
  std::size_t nSeen = 0;
  if (auto* const pArray = dynamic_cast<JSON::ArrayValue*>(spot.pValue->pComposite)) {
    for (const auto& entry : pArray->vOrdinalMap)
      nSeen += entry.nOrdinal >= 0 ? 0 : 1;
  }
  if (JSON::ObjectValue* const pObject = spot.Object()) {
    for (auto& entry : pObject->vNameMap)
      nSeen += entry.nLength >= 0 ? 0 : 1;
  }
  auto* const pValues = spot.Values();
  if (pValues == nullptr) return;
  for (JSON::UnsafeJSONValue& value : *pValues)
    nSeen += value.nLength >= 0 ? 1 : 0;
  Expect(nSeen == spot.pNode->vValues.size(), "what the sequences hold");
}

void TreeLife::SwapElements() {
  Spot spot{nullptr, nullptr};
  if (!FindContainer(spot) || spot.Size() == 0 || spot.Values() == nullptr) return;
  auto& values = *spot.Values();
  const std::size_t i = random.Below(values.size());
  const std::size_t k = random.Below(values.size());
  std::swap(values[i], values[k]);
  if (i != k) std::swap(spot.pNode->vValues[i], spot.pNode->vValues[k]);
  if (spot.Object() != nullptr) spot.Object()->bSorted = false;
  spot.Container().MakeMap();
}

void TreeLife::ForgetOrder() {
  Spot spot{nullptr, nullptr};
  if (FindContainer(spot) && spot.pNode->bObject) spot.Object()->bSorted = false;
}

// The string index does not follow an element's text. What it answers then is of no interest.
void TreeLife::StaleTexts() {
  Spot spot{nullptr, nullptr};
  if (!FindContainer(spot) || spot.pNode->bObject || spot.Size() > 30) return;
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
void TreeLife::StaleNames() {
  Spot spot{nullptr, nullptr};
  if (!FindContainer(spot) || !spot.pNode->bObject || spot.Size() == 0 || !NamesMatch(*spot.pNode))
    return;
  if (Count(*spot.pNode) > 1000) return;
  JSON::ObjectValue& object = *spot.Object();
  object.Sort();
  const int kWrong[] = {spot.Size(), 100000, -1, INT_MIN, INT_MAX};
  const std::uint32_t n = random.Below(spot.pNode->vValues.size());
  Value& value = *object.GetByOrdinal(static_cast<int>(n));
  value.nNameIndex = random.Of(kWrong);
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

}  // namespace Support

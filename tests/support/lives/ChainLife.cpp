// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A document that is a chain of containers: each has one element, which is the next one. Updates
// make it as deep as they like. Its model is the row of brackets.

#include <utility>

#include "json/JSONMessage.h"
#include "tests/support/lives/ChainLife.h"

namespace {

using CountedMemory::Aside;

class ChainLife : public Support::Life {
 public:
  explicit ChainLife(Support::World& common) : Life(common) {}

  std::string CheckAll() override {
    Expect(Written(message) == Text(strLevels), "what a chain writes");
    return strFault;
  }
  std::size_t Need() const override { return 1000 * (strLevels.size() + 1); }

 private:
  using Value = JSON::JSONValue;

  void TakeOne() override {
    static const Named<ChainLife> kSteps[] = {
        {"make a chain longer", &ChainLife::Lengthen, 4},
        {"cut a chain", &ChainLife::Cut, 2},
        {"copy a chain", &ChainLife::Copy, 3},
        {"clone a chain", &ChainLife::Clone, 2},
        {"add a chain", &ChainLife::Add, 1},
        {"parse a chain", &ChainLife::Parse, 1},
    };
    TakeOneOf("chain", *this, kSteps);
    if (strFault.empty()) CheckAll();
    if (strLevels.size() >= world.nMost && random.OneIn(4)) Parse();
  }

  // The text of a chain: 1 is at its end.
  static std::string Text(const std::string& strBrackets) {
    std::string strText;
    if (strBrackets.empty()) return "null";
    for (const char c : strBrackets)
      strText += c == '[' ? "[" : "{\"d\":";
    strText += '1';
    for (std::size_t i = strBrackets.size(); i-- > 0;)
      strText += strBrackets[i] == '[' ? ']' : '}';
    return strText;
  }
  static std::string Written(const Value& value) {
    std::string strText;
    value.Serialize(strText);
    return strText;
  }

  // The value below `nLevels` containers.
  Value& At(std::size_t nLevels) {
    Value* pValue = &message;
    for (; nLevels > 0; --nLevels)
      pValue = pValue->GetByOrdinal(0);
    return *pValue;
  }

  void Lengthen() {
    const Value* pEnd = &At(strLevels.size());
    for (std::size_t n = random.OneIn(12) ? world.nMost : world.Size(); n > 0; --n) {
      const bool bArray = random.OneIn(2);
      Value& end = const_cast<Value&>(*pEnd);
      pEnd = bArray ? &end.Set(0, 1) : &end.Set("d", 1);
      const Aside aside;
      strLevels += bArray ? '[' : '{';
    }
  }

  // What hangs below a level is replaced.
  void Cut() {
    if (strLevels.empty()) return;
    const std::size_t n = random.Below(strLevels.size());
    At(n).Set(0, 1);
    strLevels.resize(n + 1);
  }

  void Copy() {
    JSON::Message copy(random.OneIn(2));
    if (random.OneIn(2)) copy.Parse("[]");
    if (random.OneIn(2)) copy = message;
    message.CopyTo(copy);
    Expect(Written(copy) == Text(strLevels), "what the copy of a chain writes");
    if (random.OneIn(2)) return;
    copy.CopyTo(message);
    bRenewed = true;
  }

  void Clone() {
    if (message.pComposite == nullptr) return;
    JSON::UnsafeJSONValue clone(message.eType);
    clone.pComposite = message.pComposite->Clone(0);
    JSON::ArrayValue array;
    array.AddValue(clone);
    Expect(Written(array.vValues[0]) == Text(strLevels), "what the clone of a chain writes");
  }

  // A chain in the pool is copied by AddValue.
  void Add() {
    if (message.pComposite == nullptr) return;
    JSON::ArrayValue array;
    JSON::Message copy(message);
    array.AddValue(copy);
    copy.pComposite->Clear();
    Expect(Written(array.vValues[0]) == Text(strLevels), "what an added chain writes");
  }

  void Parse() {
    std::string strText = Text(strLevels);
    const bool bDeep = strLevels.size() > std::size_t{JSON::kMaxNesting};
    if (bDeep || strLevels.empty()) strText = "[1]";
    Expect(message.Parse(strText.c_str()), "result of Parse");
    bRenewed = true;
    if (bDeep || strLevels.empty()) strLevels = "[";
  }

  JSON::Message message;
  std::string strLevels;
};

}  // namespace

std::unique_ptr<Support::Life> Support::MakeChainLife(World& common) {
  return std::make_unique<ChainLife>(common);
}

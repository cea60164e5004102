// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A document that is a chain of containers: each has one element, which is the next one. Updates
// make it as deep as they like. Its model is the row of brackets.

#include "tests/support/lives/ChainLife.h"
#include "tests/support/Values.h"

namespace {

using CountedMemory::Aside;
using Support::Written;

class ChainLife : public Support::Life {
 public:
  explicit ChainLife(Support::World& common) : Life(common) {}

  std::string CheckAll() override {
    ExpectChain(message, "a chain");
    return strFault;
  }
  std::size_t Need() const override { return 1000 * (strLevels.size() + 1); }

 private:
  void TakeOne() override {
    static const Named<ChainLife> kSteps[] = {
        {"make a chain longer", &ChainLife::Lengthen, 4},
        {"cut a chain", &ChainLife::Cut, 2},
        {"copy a chain", &ChainLife::Copy, 3},
        {"clone and add a chain", &ChainLife::CloneAndAdd, 3},
        {"parse a chain", &ChainLife::Parse, 1},
    };
    TakeOneOf("chain", *this, kSteps);
    if (strFault.empty()) CheckAll();
    if (strLevels.size() >= world.nMost && random.OneIn(4)) Parse();
  }

  // The text of the chain: 1 is at its end.
  std::string Text() const {
    std::string strText;
    if (strLevels.empty()) return "null";
    for (const char c : strLevels)
      strText += c == '[' ? "[" : "{\"d\":";
    strText += '1';
    for (std::size_t i = strLevels.size(); i-- > 0;)
      strText += strLevels[i] == '[' ? ']' : '}';
    return strText;
  }
  void ExpectChain(const JSON::JSONValue& value, const char* szWhat) {
    Expect(Written(value) == Text(), std::string("what is written for ") + szWhat);
  }

  // The value below `nLevels` containers.
  JSON::JSONValue& At(std::size_t nLevels) {
    JSON::JSONValue* pValue = &message;
    for (; nLevels > 0; --nLevels)
      pValue = pValue->GetByOrdinal(0);
    return *pValue;
  }

  void Lengthen() {
    JSON::JSONValue* pEnd = &At(strLevels.size());
    for (std::size_t n = random.OneIn(12) ? world.nMost : world.Size(); n > 0; --n) {
      const bool bArray = random.OneIn(2);
      bArray ? pEnd->Set(0, 1) : pEnd->Set("d", 1);
      pEnd = pEnd->GetByOrdinal(0);
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
    ExpectChain(copy, "a copy");
    if (random.OneIn(2)) return;
    copy.CopyTo(message);
    bRenewed = true;
  }

  // A clone is added, and a chain in a pool, which AddValue copies.
  void CloneAndAdd() {
    if (message.pComposite == nullptr) return;
    JSON::UnsafeJSONValue clone(message.eType);
    clone.pComposite = message.pComposite->Clone(0);
    JSON::Message copy(message);
    JSON::ArrayValue array;
    array.AddValue(clone);
    array.AddValue(copy);
    copy.pComposite->Clear();
    ExpectChain(array.vValues[0], "a clone");
    ExpectChain(array.vValues[1], "a chain that was added");
  }

  void Parse() {
    if (strLevels.size() > std::size_t{JSON::kMaxNesting} || strLevels.empty()) strLevels = "[";
    Expect(message.Parse(Text().c_str()), "result of Parse");
    bRenewed = true;
  }

  JSON::Message message;
  std::string strLevels;
};

}  // namespace

std::unique_ptr<Support::Life> Support::MakeChainLife(World& common) {
  return std::make_unique<ChainLife>(common);
}

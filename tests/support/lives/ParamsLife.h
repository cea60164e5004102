// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The life of a parameter string: it is built call by call, and reads back as what went in.

#ifndef QXRECORDSET_TESTS_SUPPORT_LIVES_PARAMSLIFE_H
#define QXRECORDSET_TESTS_SUPPORT_LIVES_PARAMSLIFE_H

#include <climits>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>

#include "tests/support/PlainParams.h"
#include "tests/support/lives/Life.h"

namespace Support {

class ParamsLife : public Life {
 public:
  explicit ParamsLife(World& common) : Life(common) { Clear(); }

  std::string CheckAll() override {
    ExpectNone(Plain::Difference(content, params), "");
    const CParamsRS received(params.paramListRef());
    ExpectNone(Plain::Difference(content, received), "received: ");
    const bool bNul = !content.vTexts.empty() && content.vTexts[0].find('\0') != std::string::npos;
    Expect(bNul || received.getHRESULT() == CParamsRS::getHRESULT(received.paramListRef()),
           "both readers of the result code agree");
    return strFault;
  }

  std::size_t Need() const override {
    return 1000 + 3 * params.paramListRef().size() + 40 * content.vTexts.size();
  }

 private:
  static constexpr std::size_t kMostTexts = 60;

  void TakeOne() override {
    static const Named<ParamsLife> kSteps[] = {
        {"add a header", &ParamsLife::AddHeader, 4},
        {"add a number", &ParamsLife::AddNumber, 4},
        {"add a result", &ParamsLife::AddResult, 4},
        {"append all again", &ParamsLife::Append, 3},
        {"assign a copy", &ParamsLife::Assign, 4},
        {"add a text", &ParamsLife::AddText, 12},
        {"clear", &ParamsLife::Clear, 1},
        {"compare all", &ParamsLife::Compare, 2},
    };
    (this->*Choose("parameters", kSteps).take)();
    if (content.vTexts.size() > kMostTexts) Clear();
  }

  void AddHeader() {
    {
      const CountedMemory::Aside aside;
      content.strHeader = 'H' + Bytes("Hx 0\n");
    }
    params.addHeader(content.strHeader);
  }
  const std::string& Add(const std::string& strText) {
    const CountedMemory::Aside aside;
    return content.vTexts.emplace_back(strText);
  }
  void AddNumber() {
    static constexpr long kEnds[] = {0, -1, LONG_MAX, LONG_MIN};
    const long lValue = random.OneIn(4) ? random.Of(kEnds) : random.Below(0x10000) * 40000L;
    Add(std::to_string(lValue));
    params.addParam(lValue);
  }
  void AddResult() {
    const auto nCode = static_cast<unsigned>(random.Below(0x10000) * 0x10001U);
    char szCode[16];
    std::snprintf(szCode, sizeof szCode, "0x%08X", nCode);
    Add(szCode);
    params.addResult(static_cast<long>(nCode));
  }
  void AddText() { params.addParam(Add(Bytes(";0x \xFF-9a"))); }
  void Append() {
    const std::size_t nTexts = content.vTexts.size();
    if (nTexts == 0 || nTexts > kMostTexts / 2) return;
    params.append(params.paramList().substr(content.strHeader.size() + 1));
    for (std::size_t i = 0; i < nTexts; ++i)
      Add(std::string(content.vTexts[i]));
  }
  void Assign() {
    if (random.OneIn(4)) params.addHeader("");  // changes nothing
    CParamsRS other(static_cast<long>(random.Below(100)));
    other.addHeader("another header");
    other.addResult(1);
    other = params;
    ExpectNone(Plain::Difference(content, other), "assigned: ");
    params = std::move(other);
    ExpectNone(Plain::Difference(Plain::Params(), other), "moved from: ");  // NOLINT
    bRenewed = true;
  }
  void Clear() {
    params.clear();
    if (random.OneIn(2)) params = CParamsRS(static_cast<long>(world.Size()));
    content = Plain::Params();
    params.addHeader(content.strHeader = "H");
    bRenewed = true;
  }
  void Compare() { CheckAll(); }

  std::string Bytes(std::string_view bytes) {
    std::string strText(world.Size(), ' ');
    for (char& c : strText)
      c = bytes[random.Below(bytes.size())];
    return strText;
  }

  CParamsRS params;
  Plain::Params content;
};

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_LIVES_PARAMSLIFE_H

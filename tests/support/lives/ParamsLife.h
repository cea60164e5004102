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
  explicit ParamsLife(World& common) : Life(common) { params.addHeader(content.strHeader = "H"); }

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
    TakeOneOf("parameters", *this, kSteps);
    if (content.vTexts.size() > kMostTexts) Clear();
  }

  void AddHeader() {
    Model([&] { content.strHeader = 'H' + Bytes("Hx 0\n", world.Size()); });
    params.addHeader(content.strHeader);
  }
  void AddNumber() {
    static constexpr long kEnds[] = {0, -1, LONG_MAX, LONG_MIN};
    const long lValue = random.OneIn(4) ? random.Of(kEnds) : random.Below(0x10000) * 40000L;
    Model([&] { content.vTexts.push_back(std::to_string(lValue)); });
    params.addParam(lValue);
  }
  void AddResult() {
    const auto nCode = static_cast<unsigned>(random.Below(0x10000) * 0x10001U);
    char szCode[16];
    std::snprintf(szCode, sizeof szCode, "0x%08X", nCode);
    Model([&] { content.vTexts.emplace_back(szCode); });
    params.addResult(static_cast<long>(nCode));
  }
  void AddText() {
    Model([&] { content.vTexts.push_back(Bytes(";0x \xFF-9a", world.Size())); });
    params.addParam(content.vTexts.back());
  }
  void Append() {
    if (content.vTexts.empty() || content.vTexts.size() > kMostTexts / 2) return;
    params.append(params.paramList().substr(content.strHeader.size() + 1));
    Model([&] {
      const auto vTexts = content.vTexts;
      content.vTexts.insert(content.vTexts.end(), vTexts.begin(), vTexts.end());
    });
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
    Model([&] { content = Plain::Params(); });
    params.addHeader(content.strHeader = "H");
    bRenewed = true;
  }
  void Compare() { CheckAll(); }

  template <typename Change>
  static void Model(Change change) {
    const CountedMemory::Aside aside;
    change();
  }

  std::string Bytes(std::string_view bytes, std::size_t nLength) {
    std::string strText;
    while (strText.size() < nLength)
      strText += bytes[random.Below(bytes.size())];
    return strText;
  }

  CParamsRS params;
  Plain::Params content;
};

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_LIVES_PARAMSLIFE_H

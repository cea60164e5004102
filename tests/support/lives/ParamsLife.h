// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The life of a parameter string: it is built call by call, and reads back as what went in.

#ifndef QXRECORDSET_TESTS_SUPPORT_LIVES_PARAMSLIFE_H
#define QXRECORDSET_TESTS_SUPPORT_LIVES_PARAMSLIFE_H

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

#include "params/CParamsX.h"
#include "tests/support/PlainParams.h"
#include "tests/support/lives/Life.h"

namespace Support {

// What of the parameter string is not as it should be, or "".
inline std::string ParamsDifference(const CParamsRS& params, const Plain::Params& content) {
  if (params.count() != static_cast<int>(content.vTexts.size())) return "the count";
  if (params.getHeader() != content.strHeader) return "the header";
  for (int i = 0; i < params.count() - (content.bUnreadable ? 1 : 0); ++i) {
    const std::string& text = content.vTexts[static_cast<std::size_t>(i)];
    if (params.getStringParamAt(i) != text) return "the text of a parameter";
    if (params.getLongParamAt(i) != std::strtol(text.c_str(), nullptr, 10)) return "the number";
  }
  return "";
}

class ParamsLife : public Life {
 public:
  explicit ParamsLife(World& common) : Life(common) { params.addHeader(content.strHeader = "H"); }

  std::string CheckAll() override {
    Expect(ParamsDifference(params, content).empty(), ParamsDifference(params, content));
    const CParamsRS received(params.paramListRef());
    Expect(ParamsDifference(received, content).empty(), "what is received");
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
    const long lValue = static_cast<int>(random.Below(0x10000) << 16);
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
    CParamsRS other(static_cast<long>(random.Below(100)));
    other.addHeader("another header");
    other.addResult(1);
    other = params;
    Expect(ParamsDifference(other, content).empty(), "what was assigned");
    params = std::move(other);
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

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Parameter strings. Input, by its first byte: choices of building calls, whose result must read
// back as what went in; or a text, which must be taken apart, or refused, as a plain scan does it.

#include "params/CParamsX.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <vector>

#include "fuzz/common/Fuzz.h"
#include "tests/support/PlainParams.h"
#include "tests/support/Random.h"

namespace {

void ExpectHolds(const CParamsRS& params, const Plain::Params& content) {
  Fuzz::Expect(params.count() == static_cast<int>(content.vTexts.size()), "the count");
  Fuzz::ExpectEqual(params.getHeader(), content.strHeader, "the header");
  for (int i = 0; i < params.count() - (content.bUnreadable ? 1 : 0); ++i) {
    const std::string& text = content.vTexts[static_cast<std::size_t>(i)];
    Fuzz::ExpectEqual(params.getStringParamAt(i), text, "the text of a parameter");
    Fuzz::Expect(params.getLongParamAt(i) == std::strtol(text.c_str(), nullptr, 10), "the number");
  }
}

void ReadText(const std::string& text) {
  const Plain::Params content = Plain::ScanParams(text);
  CParamsRS params;
  bool bRefused = false;
  try {
    params.SetParams(text);
  } catch (const std::exception&) {
    bRefused = true;
  }
  Fuzz::Expect(bRefused == content.bRefused, "whether the text is refused");
  Fuzz::ExpectEqual(params.paramListRef(), text, "the text");
  ExpectHolds(params, content);
  ExpectHolds(CParamsRS(params), content);
  CParamsRS::getHRESULT(text);
  try {
    params.getHRESULT();
    params.append(text);
  } catch (const std::exception&) {  // as the header allows
  }
}

class Builder {
  static constexpr std::size_t kMostTexts = 60;

 public:
  explicit Builder(std::string_view input) : random(input) {}

  void Run() {
    params.addHeader(content.strHeader = "H");
    while (!random.UsedUp() && content.vTexts.size() < kMostTexts) {
      Step();
      if (random.OneIn(16)) ExpectHolds(params, content);
    }
    ExpectHolds(params, content);
    const CParamsRS received(params.paramListRef());
    ExpectHolds(received, content);
    const bool bNul = !content.vTexts.empty() && content.vTexts[0].find('\0') != std::string::npos;
    Fuzz::Expect(bNul || received.getHRESULT() == CParamsRS::getHRESULT(received.paramListRef()),
                 "both readers of the result code agree");
  }

 private:
  void Step() {
    switch (random.Below(8)) {
      case 0:
        content.strHeader = "H" + Text("Hx 0\n", random.Below(30));
        return params.addHeader(content.strHeader);
      case 1: {
        const long lValue = static_cast<int>(random.Below(0x10000) << 16);
        content.vTexts.push_back(std::to_string(lValue));
        return params.addParam(lValue);
      }
      case 2: {
        const auto nCode = static_cast<unsigned>(random.Below(0x10000) * 0x10001U);
        char szCode[16];
        std::snprintf(szCode, sizeof szCode, "0x%08X", nCode);
        content.vTexts.emplace_back(szCode);
        return params.addResult(static_cast<long>(nCode));
      }
      case 3: {
        const std::string strHeader = params.getHeader();
        const std::string strSegments = params.paramList().substr(strHeader.size() + 1);
        if (content.vTexts.empty()) return;
        const auto vTexts = content.vTexts;
        content.vTexts.insert(content.vTexts.end(), vTexts.begin(), vTexts.end());
        return params.append(strSegments);
      }
      case 4:
        params = CParamsRS(params);
        return;
      default:
        content.vTexts.push_back(Text(";0x \xFF-9a", random.Below(40)));
        return params.addParam(content.vTexts.back());
    }
  }

  std::string Text(std::string_view bytes, std::size_t nLength) {
    std::string strText;
    while (strText.size() < nLength)
      strText += bytes[random.Below(bytes.size())];
    return strText;
  }

  Support::Random random;
  CParamsRS params;
  Plain::Params content;
};

}  // namespace

void Fuzz::Run(std::string_view input) {
  if (input.empty()) return ReadText("");
  if (input[0] == 'b') return Builder(input.substr(1)).Run();
  ReadText(std::string(input.substr(1)));
}

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The reading of parameter strings once more, step by step, the comparison of CParamsRS with it,
// and its building by random calls.

#ifndef QXRECORDSET_TESTS_SUPPORT_PLAINPARAMS_H
#define QXRECORDSET_TESTS_SUPPORT_PLAINPARAMS_H

#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "params/CParamsX.h"
#include "tests/support/Random.h"

namespace Plain {

// What a parameter string holds.
struct Params {
  std::string strHeader;
  std::vector<std::string> vTexts;
  bool bRefused = false;     // the last length field is malformed
  bool bUnreadable = false;  // and more than negative, so that its text cannot be read
};

inline Params ScanParams(const std::string& text) {
  Params params;
  std::size_t nAt = 0;
  const std::size_t nHeader = text.find(';');
  if (!text.empty() && (text[0] < '0' || text[0] > '9') && nHeader != std::string::npos) {
    params.strHeader = text.substr(0, nHeader);
    nAt = nHeader + 1;
  }
  while (nAt < text.size() && !params.bRefused) {
    const std::size_t nField = text.find(';', nAt);
    const long lLength = std::strtol(text.c_str() + nAt, nullptr, 10);
    params.bUnreadable = nField == std::string::npos || nField == nAt;
    params.bRefused = params.bUnreadable || lLength < 0;
    params.vTexts.emplace_back();
    if (params.bUnreadable) break;
    const auto nLength = static_cast<std::size_t>(lLength);  // a negative one reaches to the end
    params.vTexts.back() = text.substr(nField + 1, nLength);
    if (nLength >= text.size() - nField - 1) break;
    nAt = nField + 1 + nLength + 1;
  }
  return params;
}

// What of the parameter string is not as it should be, or "".
inline std::string Difference(const Params& expected, const CParamsRS& params) {
  if (params.count() != static_cast<int>(expected.vTexts.size())) return "the count";
  if (params.getHeader() != expected.strHeader) return "the header";
  for (int i = 0; i < params.count() - (expected.bUnreadable ? 1 : 0); ++i) {
    const std::string& text = expected.vTexts[static_cast<std::size_t>(i)];
    if (params.getStringParamAt(i) != text) return "the text of a parameter";
    if (params.getLongParamAt(i) != std::strtol(text.c_str(), nullptr, 10)) return "the number";
  }
  return "";
}

// A parameter string that is built call by call, and what it has to hold.
struct Built {
  CParamsRS params;
  Params content{};
  std::string strFault{};  // of what was assigned

  Built() { Clear(); }

  // Without a header the first length field would pass for one.
  void Clear() {
    params.clear();
    content = Params();
    params.addHeader(content.strHeader = "H");
  }

  // One call: a header, a text, a number, a result code, all parameters once more, an assignment
  // there and back, or the beginning of another string.
  void Step(Support::Random& random) {
    std::string text(random.OneIn(9) ? random.Below(1300) : random.Below(12), ' ');
    for (char& c : text)
      c = ";0x \xFF-9a"[random.Below(8)];
    static constexpr long kEnds[] = {0, -1, LONG_MAX, LONG_MIN};
    const long lValue = random.OneIn(4) ? random.Of(kEnds) : random.Below(0x10000) * 40000L;
    const auto nCode = static_cast<unsigned>(random.Below(0x10000) * 0x10001U);
    const auto add = [this](const std::string& strText) { content.vTexts.push_back(strText); };
    const std::function<void()> kSteps[] = {
        [&] { params.addHeader(content.strHeader = 'H' + text.substr(0, text.find(';'))); },
        [&] { params.addParam(text), add(text); },
        [&] { params.addParam(lValue), add(std::to_string(lValue)); },
        [&] {
          char szCode[16];
          std::snprintf(szCode, sizeof szCode, "0x%08X", nCode);
          params.addResult(static_cast<long>(nCode)), add(szCode);
        },
        [&] {
          if (content.vTexts.empty() || content.vTexts.size() > 30) return;
          params.append(params.paramList().substr(content.strHeader.size() + 1));
          for (std::size_t i = 0, nTexts = content.vTexts.size(); i < nTexts; ++i)
            add(std::string(content.vTexts[i]));
        },
        [&] {
          CParamsRS other(lValue % 100);
          other.addHeader("another header");
          other.addResult(1);
          other = params;
          strFault += Plain::Difference(content, other);
          params = std::move(other);
          strFault += Plain::Difference(Params(), other);  // NOLINT: moved-from
        },
        [&] {
          if (random.OneIn(4)) Clear();
        },
    };
    random.Of(kSteps)();
  }

  std::string Difference() const {
    const CParamsRS received(params.paramListRef());
    const std::string strDifference = strFault + Plain::Difference(content, params);
    const bool bAgree =
        received.getHRESULT() == CParamsRS::getHRESULT(params.paramListRef()) ||
        (!content.vTexts.empty() && content.vTexts[0].find('\0') != std::string::npos);
    if (!strDifference.empty()) return strDifference;
    return bAgree ? Plain::Difference(content, received) : "both readers of the result code";
  }
};

}  // namespace Plain

#endif  // QXRECORDSET_TESTS_SUPPORT_PLAINPARAMS_H

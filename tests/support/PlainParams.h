// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The reading of parameter strings once more, step by step, and the comparison of CParamsRS with
// it.

#ifndef QXRECORDSET_TESTS_SUPPORT_PLAINPARAMS_H
#define QXRECORDSET_TESTS_SUPPORT_PLAINPARAMS_H

#include <cstddef>
#include <cstdlib>
#include <string>
#include <vector>

#include "params/CParamsX.h"

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

}  // namespace Plain

#endif  // QXRECORDSET_TESTS_SUPPORT_PLAINPARAMS_H

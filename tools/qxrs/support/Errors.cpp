// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Counting and reporting losses.

#include "tools/qxrs/support/Errors.h"

#include <algorithm>
#include <iostream>

#include "tools/qxrs/support/Terminal.h"

namespace qxrs {

void Warnings::Add(std::string_view strReason, unsigned long long nRow, std::string_view strColumn,
                   unsigned long long nCount) {
  const auto it = std::find_if(vLosses.begin(), vLosses.end(),
                               [&](const Loss& loss) { return loss.strReason == strReason; });
  if (it != vLosses.end()) {
    it->nCount += nCount;
    return;
  }
  std::string strPlace = nRow == 0 ? "" : "row " + std::to_string(nRow);
  if (!strColumn.empty()) strPlace += ", column '" + MakeDisplayText(strColumn).strText + "'";
  if (bStrict) {
    throw InputError((strPlace.empty() ? "" : strPlace + ": ") + std::string(strReason));
  }
  vLosses.push_back({std::string(strReason), std::move(strPlace), nCount});
}

void Warnings::Report() const {
  for (const Loss& loss : vLosses) {
    std::cerr << "qxrs: warning: " << loss.strReason;
    if (!loss.strFirst.empty()) {
      std::cerr << (loss.nCount == 1 ? " ("
                                     : " (" + std::to_string(loss.nCount) + " times, first: ")
                << loss.strFirst << ')';
    }
    std::cerr << '\n';
  }
}

}  // namespace qxrs

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Counting and reporting losses.

#include "tools/qxrs/support/Errors.h"

#include <algorithm>
#include <iostream>

#include "tools/qxrs/support/Terminal.h"

namespace qxrs {

namespace {

std::string Place(unsigned long long nRow, std::string_view strColumn) {
  if (nRow == 0) return "";
  const std::string strRow = "row " + std::to_string(nRow);
  return strColumn.empty() ? strRow
                           : strRow + ", column '" + MakeDisplayText(strColumn).strText + "'";
}

}  // namespace

void Warnings::Add(std::string_view strReason, unsigned long long nRow, std::string_view strColumn,
                   unsigned long long nCount) {
  const auto it = std::find_if(vLosses.begin(), vLosses.end(),
                               [&](const Loss& loss) { return loss.strReason == strReason; });
  if (it != vLosses.end()) {
    it->nCount += nCount;
    return;
  }
  std::string strPlace = Place(nRow, strColumn);
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

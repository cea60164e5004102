// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Counting lines and columns.

#include "tools/qxrs/support/TextPosition.h"

#include <algorithm>

namespace qxrs {

void TextPosition::Advance(std::string_view strText) {
  const auto nLineFeeds = std::count(strText.begin(), strText.end(), '\n');
  if (nLineFeeds == 0) {
    nColumn += strText.size();
    return;
  }
  nLine += static_cast<unsigned long long>(nLineFeeds);
  nColumn = strText.size() - strText.rfind('\n');
}

std::string Complaint(const std::string& strName, const TextPosition& position,
                      const std::string& strReason) {
  return strName + ": line " + std::to_string(position.nLine) + ", column " +
         std::to_string(position.nColumn) + ": " + strReason;
}

}  // namespace qxrs

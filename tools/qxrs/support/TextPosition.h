// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Where in a text something stands, as people count: line and column from 1, columns in bytes.

#ifndef QXRECORDSET_TOOLS_SUPPORT_TEXTPOSITION_H
#define QXRECORDSET_TOOLS_SUPPORT_TEXTPOSITION_H

#include <string>
#include <string_view>

namespace qxrs {

struct TextPosition {
  unsigned long long nLine = 1;
  unsigned long long nColumn = 1;

  // Moves behind `strText`. Lines end with a line feed.
  void Advance(std::string_view strText);
};

// "planets.csv: line 3, column 5: reason", the form of every complaint about a place in a text.
std::string Complaint(const std::string& strName, const TextPosition& position,
                      const std::string& strReason);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_TEXTPOSITION_H

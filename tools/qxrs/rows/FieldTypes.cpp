// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// From fields to cells.

#include "tools/qxrs/rows/FieldTypes.h"

#include <algorithm>

namespace qxrs {

Cell FieldTypes::MakeCell(const std::string& strColumn, const Field& field) const {
  const std::string& strText = field.strText;
  if (field.bNull || (bInfer && field.bNothing)) {
    return {strColumn, CQXRecordSet::QX_NULL, ""};
  }
  if (bInfer && (strText == "true" || strText == "false")) {
    return {strColumn, CQXRecordSet::QX_BOOL, strText == "true" ? "1" : "0"};
  }
  if (bInfer && IsPlainInteger(strText, eLong)) {
    return {strColumn, CQXRecordSet::QX_LONG, strText};
  }
  return {strColumn, CQXRecordSet::QX_TEXT, strText};
}

std::optional<std::string> RepeatedColumn(const std::vector<std::string>& vColumns) {
  std::vector<std::string> vSorted = vColumns;
  std::sort(vSorted.begin(), vSorted.end());
  const auto itRepeated = std::adjacent_find(vSorted.begin(), vSorted.end());
  if (itRepeated == vSorted.end()) {
    return std::nullopt;
  }
  return "the column name '" + *itRepeated + "' occurs more than once";
}

std::string FieldCountReason(std::size_t nFields, std::size_t nColumns) {
  return std::to_string(nFields) + (nFields == 1 ? " field" : " fields") + " instead of " +
         std::to_string(nColumns);
}

}  // namespace qxrs

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What the fields of CSV and TSV become. Such a file has no types: its fields are texts, unless the
// user asks to recognise others.

#ifndef QXRECORDSET_TOOLS_ROWS_FIELDTYPES_H
#define QXRECORDSET_TOOLS_ROWS_FIELDTYPES_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/qxrs/rows/Integers.h"
#include "tools/qxrs/rows/Rows.h"

namespace qxrs {

struct Field {
  std::string strText;
  bool bNothing = false;  // nothing between two delimiters, not even quotes
  bool bNull = false;     // it is the text that stands for null
};

struct FieldTypes {
  // Nothing becomes null, true and false booleans, and integers that a long holds integers, when
  // they stand as they would be written: 7 is one, 007 and 7.0 are texts.
  bool bInfer = false;
  LongSize eLong = LongSize::Native;
  std::optional<std::string> strNull;     // a field that stands for null
  std::vector<std::string> vColumnNames;  // empty: the first line names the columns

  bool IsNull(std::string_view strField) const { return strNull && strField == *strNull; }
  Cell MakeCell(const std::string& strColumn, const Field& field) const;
};

// Why names cannot be columns of one record set, or nothing.
std::optional<std::string> RepeatedColumn(const std::vector<std::string>& vColumns);

// "3 fields instead of 4".
std::string FieldCountReason(std::size_t nFields, std::size_t nColumns);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_FIELDTYPES_H

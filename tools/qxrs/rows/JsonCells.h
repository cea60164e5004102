// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// From the members of a parsed JSON object to the cells of a row.

#ifndef QXRECORDSET_TOOLS_ROWS_JSONCELLS_H
#define QXRECORDSET_TOOLS_ROWS_JSONCELLS_H

#include <deque>
#include <string>

#include "json/JSONValue.h"
#include "tools/qxrs/rows/Integers.h"
#include "tools/qxrs/rows/Rows.h"

namespace qxrs {

class JsonCells {
 public:
  // The two readings of a JSON value. They differ in what a record set cannot hold:
  //   RecordSet: as CQXRecordSet::SetString loads it; reals and arrays become empty texts.
  //   Foreign:   nothing at the top of a row is lost; reals, arrays and integers that a long cannot
  //              hold become texts, as they are written.
  enum class Reading { RecordSet, Foreign };

  explicit JsonCells(Reading eHow, LongSize eLong = LongSize::Native)
      : eReading(eHow), eLongSize(eLong) {}

  // The cells of `object`, in its order, in place of what `row` holds; none for any other value. Of
  // members that share a name the last counts. The texts stay valid until the next call, or until
  // the document changes.
  void Read(const JSON::JSONValue& object, Row& row);

 private:
  Cell MakeCell(std::string_view strName, const JSON::JSONValue& value);
  Cell MakeInteger(Cell cell, std::string_view strDigits);
  std::string_view Keep(std::string strText);

  const Reading eReading;
  const LongSize eLongSize;
  std::deque<std::string> vTexts;  // texts of the current row that the document does not hold
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_JSONCELLS_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows in the order of some of their values. SQLite sorts them, in memory or, when they are many,
// in temporary files; the rows lie there as they are.

#ifndef QXRECORDSET_TOOLS_ROWS_SORT_H
#define QXRECORDSET_TOOLS_ROWS_SORT_H

#include <string>
#include <vector>

#include "tools/qxrs/rows/Sqlite.h"

namespace qxrs {

// Makes the value of a cell a parameter of a statement, so that SQLite compares it: numbers by
// value, booleans as numbers. A number that SQLite does not hold is the nearest that it does. A
// null pointer binds null. The text may lie in `strBuffer`.
void BindValue(sqlite3_stmt& statement, int nParameter, const Cell* pCell, std::string& strBuffer);

class SortedRows : public RowSource {
 public:
  // Reads `source` to its end. Throws UsageError when it never has one of the columns.
  SortedRows(RowSource& source, const std::vector<std::string>& vKeys, bool bDescending);

  const Columns& GetColumns() const override { return columns; }
  bool AllColumnsKnown() const override { return true; }
  bool Next(Row& row) override;

 private:
  Database database;
  Database::Statement pSelect;
  Columns columns;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_SORT_H

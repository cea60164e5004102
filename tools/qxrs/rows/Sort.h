// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows in the order of some of their values, or found by them. SQLite keeps them as they are, in
// memory or, when they are many, in a temporary file, beside the values that it compares: numbers
// by value, booleans as numbers.

#ifndef QXRECORDSET_TOOLS_ROWS_SORT_H
#define QXRECORDSET_TOOLS_ROWS_SORT_H

#include <string>
#include <vector>

#include "tools/qxrs/rows/Sqlite.h"

namespace qxrs {

class SortedRows : public RowSource {
 public:
  enum class Order { Ascending, Descending, AsTheyCame };

  // Reads `source` to its end. Throws UsageError when it never has one of the columns `vKey`.
  SortedRows(RowSource& source, const std::vector<std::string>& vKey, Order eOrder);

  const Columns& GetColumns() const override { return columns; }
  bool AllColumnsKnown() const override { return true; }
  bool Next(Row& row) override;

  // Gives the first row that has the values of `row` in the key, and removes it. `columnsOfRow` are
  // those of that row. REQUIRES: Next() was not called.
  bool Take(const Row& row, const Columns& columnsOfRow, Row& rowFound);

 private:
  void BindKey(sqlite3_stmt& statement, const Row& row, const Columns& columnsOfRow);

  const std::vector<std::string> vKeys;
  std::vector<std::string> vBuffers;  // for each part of the key, a text without its escapes
  Columns columns;
  Database database;
  Database::Statement pSelect;
  Database::Statement pTake;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_SORT_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows in the order of some of their values, or found by them. SQLite keeps them as they are, in
// memory or, when they are many, in a temporary file, beside the values that it compares: numbers
// by value, booleans as numbers.

#ifndef QXRECORDSET_TOOLS_ROWS_SORT_H
#define QXRECORDSET_TOOLS_ROWS_SORT_H

#include <memory>
#include <string>
#include <vector>

#include "tools/qxrs/rows/Sql.h"

namespace qxrs {

class SortedRows : public RowSource {
 public:
  enum class Order { Ascending, Descending, AsTheyCame };

  // Reads `source` to its end. Throws UsageError when it never has one of the columns `vKey`.
  SortedRows(RowSource& source, const std::vector<std::string>& vKey, Order eOrder);

  const Columns& GetColumns() const override { return columns; }
  bool AllColumnsKnown() const override { return true; }
  bool Next(Row& row) override { return Unpack(*pSelect, row); }

  // Gives the first row that has the values of `row` in the key, and removes it. `columnsOfRow` are
  // those of that row. REQUIRES: Next() was not called.
  bool Take(const Row& row, const Columns& columnsOfRow, Row& rowFound);

 private:
  void SetKey(const Row& row, const Columns& columnsOfRow);
  bool Unpack(Statement& statement, Row& row);

  const std::vector<std::string> vKeys;
  std::vector<Value> vValues;         // the values of a key
  std::vector<std::string> vBuffers;  // and for each part a text without its escapes
  Columns columns;
  Row rowPacked;  // one cell that holds a packed row
  const std::shared_ptr<Database> pDatabase;
  std::unique_ptr<Statement> pSelect;
  std::unique_ptr<Statement> pTake;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_SORT_H

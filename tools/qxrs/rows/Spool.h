// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows that are read before the first of them can be used: because a later row may bring a column
// or decide its kind, or because they are needed twice. They lie in a temporary file.
//
// One row as bytes, of native order: for each cell column and kind (32 bits), length of the text
// (32), the text.

#ifndef QXRECORDSET_TOOLS_ROWS_SPOOL_H
#define QXRECORDSET_TOOLS_ROWS_SPOOL_H

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tools/qxrs/rows/Rows.h"
#include "tools/qxrs/rows/Sql.h"

namespace qxrs {

// Appends the bytes of a row, and makes a row of all of them.
void PackRow(const Row& row, std::string& strBytes);
void UnpackRow(std::string_view strBytes, Row& row);

class SpooledRows : public RowSource {
 public:
  // Whether texts become what all texts of their column can be read as: integers, reals, booleans.
  enum class Kinds { AsTheyAre, Inferred };

  // Reads `source` to its end.
  SpooledRows(RowSource& source, Kinds eWanted);

  // Of each column the kind is known then.
  const Columns& GetColumns() const override { return columns; }
  bool AllColumnsKnown() const override { return true; }
  bool Next(Row& row) override;

  // Next() gives the first row again.
  void Rewind();

  unsigned long long Count() const { return nRows; }

 private:
  // What is known of the cells of a column: their kind, and what the texts can be read as.
  struct Kept {
    std::optional<Kind> eKind;
    std::optional<Kind> eReadAs;
  };

  void Keep(const Row& row, std::vector<Kept>& vKept);
  bool Read(char* pBytes, std::size_t nBytes);
  [[noreturn]] static void Fail(const char* szWhat);

  const Kinds eKinds;
  Columns columns;
  std::vector<bool> vInferred;  // for each column, whether its texts become something else
  struct Close {
    void operator()(std::FILE* p) const { std::fclose(p); }
  };

  const std::unique_ptr<std::FILE, Close> pFile;
  std::string strBytes;  // of one row
  unsigned long long nRows = 0;
};

// The kind of all cells of a column that has cells of both kinds.
Kind CommonKind(std::optional<Kind> eOne, Kind eOther);

// Rows in the order of some of their values, or found by them. SQLite keeps them as they are, in
// memory or, when they are many, in a temporary file, beside the values that it compares: numbers
// by value, booleans as numbers.
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

#endif  // QXRECORDSET_TOOLS_ROWS_SPOOL_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows from a query of an SQLite database, and into a table of one.

#ifndef QXRECORDSET_TOOLS_ROWS_SQLITE_H
#define QXRECORDSET_TOOLS_ROWS_SQLITE_H

#include <sqlite3.h>

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "tools/qxrs/rows/Columns.h"
#include "tools/qxrs/rows/FieldTypes.h"
#include "tools/qxrs/rows/Integers.h"
#include "tools/qxrs/support/Progress.h"

namespace qxrs {

// An open database. Failures are InputErrors that name the file.
class Database {
 public:
  enum class Mode { Read, Write };  // Write creates a missing file

  Database(const std::string& strPath, Mode eMode);

  struct FinalizeStatement {
    void operator()(sqlite3_stmt* pStatement) const { sqlite3_finalize(pStatement); }
  };
  using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

  // The one statement of `strSql`; several, or none, are refused.
  Statement Prepare(const std::string& strSql);
  void Execute(const std::string& strSql);

  // One step of a statement: whether it gave a row.
  bool Step(sqlite3_stmt& statement);

 private:
  struct Close {
    void operator()(sqlite3* pDatabase) const { sqlite3_close(pDatabase); }
  };

  Statement PrepareFirst(const std::string& strSql, std::size_t nFrom, std::size_t* pnEnd);
  [[noreturn]] void Fail() const;

  const std::string strName;
  std::unique_ptr<sqlite3, Close> pHandle;
};

// The rows of one query. Integers that a long holds are integers, other integers and reals become
// texts, a real in its shortest form. A column declared BOOLEAN gives booleans for 0 and 1. A blob
// and a text with a NUL byte are refused.
class SqlSource : public RowSource {
 public:
  SqlSource(const std::string& strPath, const std::string& strSql, LongSize eLong,
            Progress& progressBar);

  const std::vector<std::string>* Columns() override { return &vColumns; }
  bool Next(Row& row) override;

 private:
  Cell MakeCell(int nColumn);
  Cell MakeIntegerCell(int nColumn, Cell cell);
  [[noreturn]] void Refuse(int nColumn, const std::string& strReason) const;

  const std::string strName;
  Database database;
  Database::Statement pStatement;
  const LongSize eLongSize;
  Progress& progress;
  std::vector<std::string> vColumns;
  std::vector<bool> vBoolean;      // for each column, whether it is declared so
  std::deque<std::string> vTexts;  // numbers of the current row
  unsigned long long nRow = 0;
};

// Where a table goes, and what is done when there is one of that name.
struct SqlTarget {
  enum class Existing { Refuse, Replace, Append };

  std::string strPath;  // a missing file is created
  std::string strTable;
  Existing eExisting = Existing::Refuse;
};

// Writes a table in one transaction: it is there whole or not at all. Columns whose cells are all
// integers, or all booleans, are declared INTEGER or BOOLEAN, all others TEXT.
void WriteSqlTable(const SqlTarget& target, GatheredRows& rows);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_SQLITE_H

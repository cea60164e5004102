// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows from a query of an SQLite database, and into a table of one.

#ifndef QXRECORDSET_TOOLS_ROWS_SQLITE_H
#define QXRECORDSET_TOOLS_ROWS_SQLITE_H

#include <sqlite3.h>

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/qxrs/rows/Rows.h"
#include "tools/qxrs/support/Progress.h"
#include "tools/qxrs/support/TemporaryFile.h"
#include "tools/qxrs/support/Warnings.h"

namespace qxrs {

// `strName` as an identifier of SQL, in double quotes.
std::string QuotedName(const std::string& strName);

// An open database. Failures are InputErrors that name the file.
class Database {
 public:
  // Write creates a missing file. Scratch is a database of no name that lies in memory and, when it
  // grows, in a temporary file.
  enum class Mode { Read, Write, Scratch };

  // `strFile` is what is opened, when that is another file than the one to name in messages.
  Database(const std::string& strPath, Mode eMode, const std::string& strFile = {});

  struct FinalizeStatement {
    void operator()(sqlite3_stmt* pStatement) const { sqlite3_finalize(pStatement); }
  };
  using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

  // The one statement of `strSql`; several, or none, are refused.
  Statement Prepare(const std::string& strSql);
  void Execute(const std::string& strSql);

  // One step of a statement: whether it gave a row.
  bool Step(sqlite3_stmt& statement);

  // The names that a query of one text column gives.
  std::vector<std::string> Names(const std::string& strSql);

  // Tells what a column of a table is declared as.
  void Describe(const char* szTable, const char* szName, Column& column);

  sqlite3* Handle() const { return pHandle.get(); }

 private:
  struct Close {
    void operator()(sqlite3* pDatabase) const { sqlite3_close(pDatabase); }
  };

  Statement PrepareFirst(const std::string& strSql, std::size_t nFrom, std::size_t* pnEnd);
  [[noreturn]] void Fail() const;

  const std::string strName;
  std::unique_ptr<sqlite3, Close> pHandle;
};

// The rows of one query, each value with the kind that it has there. A column declared BOOLEAN
// gives booleans for 0 and 1. A blob is refused.
class SqlSource : public RowSource {
 public:
  SqlSource(std::shared_ptr<Database> pOpened, const std::string& strPath,
            const std::string& strSql, Progress& progressBar);

  const Columns& GetColumns() const override { return columns; }
  bool AllColumnsKnown() const override { return true; }
  bool Next(Row& row) override;

 private:
  void FillCell(int nColumn, Cell& cell);
  void TakeColumns();
  bool HasWholeKey(const std::string& strTable) const;

  const std::string strName;
  const std::shared_ptr<Database> pDatabase;
  Database::Statement pStatement;
  Progress& progress;
  Columns columns;
  std::vector<bool> vBoolean;       // for each column, whether it is declared so
  std::vector<std::string> vTexts;  // the number that each column's cell has in the current row
  unsigned long long nRow = 0;
};

// Where a table goes, and what is done when there is one of that name.
struct SqlTarget {
  enum class Existing { Refuse, Replace, Append };

  std::string strPath;  // a missing file is created
  std::string strTable;
  Existing eExisting = Existing::Refuse;
  std::vector<std::string> vKey;  // the columns of the primary key; empty: as the source has them
};

// The columns' definitions of a CREATE TABLE statement: as the source declares them, or by the
// kinds of their cells.
std::string ColumnDefinitions(const Columns& columns, const std::vector<std::string>& vWantedKey);

// INSERT INTO "table" ("a", "b") VALUES (?, ?)
std::string InsertStatement(const std::string& strTable, const Columns& columns);

// Writes a table in one transaction: it is there whole or not at all, and so is a new file.
class SqlSink : public RowSink {
 public:
  SqlSink(SqlTarget tableToWrite, Warnings& lossesSeen);

  // What a column makes of the values that it is given.
  enum class Hold { Values, Texts, Booleans };

  // Into a database that is open.
  SqlSink(std::shared_ptr<Database> pOpened, SqlTarget tableToWrite, Warnings& lossesSeen);

  Needs GetNeeds() const override;
  void Begin(const Columns& columns, bool bAllColumns) override;
  void Write(const Row& row) override;
  void End() override;

 private:
  void Bind(const Cell& cell);
  void BindNumber(const Cell& cell, int nParameter);
  void BindText(const Cell& cell, int nParameter);

  const SqlTarget target;
  Warnings& warnings;
  std::optional<TemporaryFile> file;  // a database that is made
  std::shared_ptr<Database> pDatabase;
  Database::Statement pInsert;
  const Columns* pColumns = nullptr;
  bool bAllKnown = false;          // no column comes later
  std::vector<Hold> vHold;         // for each column
  std::deque<std::string> vTexts;  // texts of the current row that had escapes
  std::size_t nColumns = 0;
  unsigned long long nRow = 0;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_SQLITE_H

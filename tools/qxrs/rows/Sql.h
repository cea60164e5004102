// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows from a query of a database, and into a table of one. A database is an SQLite file or, behind
// the prefix odbc: and a connection string, whatever an ODBC driver reaches: odbc:DSN=shop,
// odbc:Driver=SQLite3;Database=world.db. Failures are InputErrors with what the database says.

#ifndef QXRECORDSET_TOOLS_ROWS_SQL_H
#define QXRECORDSET_TOOLS_ROWS_SQL_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/qxrs/rows/Rows.h"
#include "tools/qxrs/support/Errors.h"
#include "tools/qxrs/support/Terminal.h"

namespace qxrs {

// ---- Databases ----------------------------------------------------------------------------------

// A parameter of a statement: nothing (Null), an integer, a real, or a text, which any value has
// besides. The text has to stay until the statement got other parameters or is flushed.
struct Value {
  Kind eKind = Kind::Null;
  std::int64_t nInteger = 0;
  double fReal = 0;
  std::string_view strText;
};

// What a column of a table makes of the values that it is given. Values holds integers of 64 bits
// and reals, Exact numbers of any length.
enum class Hold { Values, Reals, Texts, Booleans, Exact };

class Statement {
 public:
  Statement() = default;
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  virtual ~Statement() = default;

  // The columns of the answer; none for a statement that gives none. Called once, before Next().
  virtual Columns GetColumns() = 0;

  // The next row of the answer, as RowSource::Next() gives it.
  virtual bool Next(Row& row) = 0;

  // Starts anew with these parameters.
  virtual void Bind(const std::vector<Value>& vValues) = 0;

  // Runs a statement without an answer. It may wait for more parameters until Flush().
  virtual void Run(const std::vector<Value>& vValues) {
    Row none;
    Bind(vValues);
    Next(none);
  }
  virtual void Flush() {}
};

// An open database. Without Commit() what was begun is undone in the end.
class Database {
 public:
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;
  virtual ~Database() = default;

  virtual void Execute(const std::string& strSql) = 0;

  // The one statement of `strSql`. The database outlives it.
  virtual std::unique_ptr<Statement> Prepare(const std::string& strSql) = 0;

  virtual std::vector<std::string> Tables() = 0;

  // What the columns of a table hold.
  virtual std::vector<Hold> Holds(const std::string& strTable, const Columns& columns) = 0;

  virtual void Begin() = 0;
  virtual void Create(const std::string& strTable, const std::string& strDefinitions) = 0;
  virtual void Commit() = 0;

  // How a column of a new table is declared, one of the primary key or another.
  std::string TypeOf(const Column& column, bool bInKey) const;

  // A name as an identifier of SQL, and several of them, separated by commas.
  std::string Quoted(const std::string& strName) const;
  std::string Quoted(const std::vector<std::string>& vNames) const;

 protected:
  // What the database calls types that can hold all our values.
  struct Types {
    const char* szInteger;
    const char* szReal;
    const char* szText;
    const char* szKey;  // a text in a key
  };

  explicit Database(const Types& typesKnown) : types(typesKnown) {}

  char chQuote = '"';

 private:
  const Types types;
};

// Read needs an existing database. Write makes a missing file, which appears when it is committed;
// Append does not. Scratch is an SQLite database of no name that lies in memory and, when it grows,
// in a temporary file.
enum class DatabaseMode { Read, Write, Append, Scratch };

bool IsOdbc(const std::string& strPath);
std::shared_ptr<Database> OpenDatabase(const std::string& strPath, DatabaseMode eMode);
std::shared_ptr<Database> OpenOdbc(const std::string& strPath);

// ---- Rows ---------------------------------------------------------------------------------------

// The rows of one query. Of SQLite each value has the kind that it has there; a column declared
// BOOLEAN gives booleans for 0 and 1. A blob is refused.
std::unique_ptr<RowSource> OpenQuery(std::shared_ptr<Database> pDatabase, const std::string& strSql,
                                     Progress& progress);

// Where a table goes, and what is done when there is one of that name.
struct SqlTarget {
  enum class Existing { Refuse, Replace, Append };

  std::string strPath;  // a missing file is created
  std::string strTable;
  Existing eExisting = Existing::Refuse;
  std::vector<std::string> vKey;  // the columns of the primary key; empty: as the source has them
};

// Writes a table in one transaction: it is there whole or not at all, where the database can take
// back what it created. Columns are declared as the source tells, or by the kinds of their cells.
std::unique_ptr<RowSink> OpenTable(std::shared_ptr<Database> pDatabase, const SqlTarget& target,
                                   Warnings& warnings);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_SQL_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Databases behind ODBC drivers. Values travel as text in both directions.

#include "tools/qxrs/rows/Odbc.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "tools/qxrs/rows/Values.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

constexpr std::string_view kPrefix = "odbc:";

SQLCHAR* Sql(const std::string& strText) {
  return reinterpret_cast<SQLCHAR*>(const_cast<char*>(strText.c_str()));
}

// A handle of ODBC, of the environment, a connection or a statement.
class Handle {
 public:
  Handle(SQLSMALLINT eHandleType, SQLHANDLE parent) : eType(eHandleType) {
    SQLAllocHandle(eType, parent, &handle);
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() { SQLFreeHandle(eType, handle); }

  SQLHANDLE Get() const { return handle; }

  // Throws what the driver says, unless the call was done.
  void Check(SQLRETURN nResult) const {
    if (SQL_SUCCEEDED(nResult) || nResult == SQL_NO_DATA) return;
    SQLCHAR szState[6];
    SQLCHAR szText[SQL_MAX_MESSAGE_LENGTH] = {};
    SQLGetDiagRec(eType, handle, 1, szState, nullptr, szText, sizeof szText, nullptr);
    throw InputError("ODBC: " + std::string(reinterpret_cast<const char*>(szText)));
  }

 private:
  const SQLSMALLINT eType;
  SQLHANDLE handle = SQL_NULL_HANDLE;
};

class Connection {
 public:
  explicit Connection(const std::string& strPath) {
    SQLSetEnvAttr(environment.Get(), SQL_ATTR_ODBC_VERSION,
                  reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    handle.emplace(SQL_HANDLE_DBC, environment.Get());
    const std::string strConnection = strPath.substr(kPrefix.size());
    handle->Check(SQLDriverConnect(handle->Get(), nullptr, Sql(strConnection), SQL_NTS, nullptr, 0,
                                   nullptr, SQL_DRIVER_NOPROMPT));
    char szQuote[8] = "\"";
    SQLGetInfo(handle->Get(), SQL_IDENTIFIER_QUOTE_CHAR, szQuote, sizeof szQuote, nullptr);
    chQuote = szQuote[0];
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() { SQLDisconnect(handle->Get()); }

  void Execute(const std::string& strSql) const {
    const Handle statement(SQL_HANDLE_STMT, handle->Get());
    statement.Check(SQLExecDirect(statement.Get(), Sql(strSql), SQL_NTS));
  }

  // `strSql` with the quotes that this database has around names; ours are double.
  std::string WithQuotes(std::string strSql) const {
    for (char& c : strSql) {
      c = c == '"' ? chQuote : c;
    }
    return strSql;
  }

  const Handle& Get() const { return *handle; }

 private:
  class Environment : public Handle {
   public:
    Environment() : Handle(SQL_HANDLE_ENV, SQL_NULL_HANDLE) {}
  };

  const Environment environment;
  std::optional<Handle> handle;
  char chQuote = '"';
};

// What the values of a column are; nothing for bytes that are no text.
std::optional<Kind> KindOf(SQLSMALLINT eType) {
  switch (eType) {
    case SQL_BIT:
      return Kind::Boolean;
    case SQL_TINYINT:
    case SQL_SMALLINT:
    case SQL_INTEGER:
    case SQL_BIGINT:
      return Kind::Integer;
    case SQL_REAL:
    case SQL_FLOAT:
    case SQL_DOUBLE:
    case SQL_DECIMAL:
    case SQL_NUMERIC:
      return Kind::Real;
    case SQL_BINARY:
    case SQL_VARBINARY:
    case SQL_LONGVARBINARY:
      return std::nullopt;
    default:
      return Kind::Text;
  }
}

class OdbcSource : public RowSource {
 public:
  // All rows of `strTable` when there is no query.
  OdbcSource(const std::string& strPath, const std::string& strQuery, const std::string& strTable,
             Progress& progressBar)
      : connection(strPath),
        statement(SQL_HANDLE_STMT, connection.Get().Get()),
        progress(progressBar) {
    const std::string strSql = strQuery.empty()
                                   ? connection.WithQuotes("SELECT * FROM " + QuotedName(strTable))
                                   : strQuery;
    statement.Check(SQLExecDirect(statement.Get(), Sql(strSql), SQL_NTS));
    SQLSMALLINT nColumns = 0;
    SQLNumResultCols(statement.Get(), &nColumns);
    if (nColumns == 0) throw InputError("the SQL statement gives no rows");
    for (SQLSMALLINT i = 1; i <= nColumns; ++i) {
      SQLCHAR szName[256] = {};
      SQLSMALLINT eType = 0;
      SQLSMALLINT eNullable = 0;
      statement.Check(SQLDescribeCol(statement.Get(), static_cast<SQLUSMALLINT>(i), szName,
                                     sizeof szName, nullptr, &eType, nullptr, nullptr, &eNullable));
      Column column;
      column.strName = reinterpret_cast<const char*>(szName);
      column.eKind = KindOf(eType);
      column.bNotNull = eNullable == SQL_NO_NULLS;
      vKinds.push_back(column.eKind);
      if (!columns.Add(std::move(column))) throw InputError("a column name occurs more than once");
    }
    vTexts.resize(columns.Count());
  }

  const Columns& GetColumns() const override { return columns; }
  bool AllColumnsKnown() const override { return true; }

  bool Next(Row& row) override {
    const SQLRETURN nResult = SQLFetch(statement.Get());
    statement.Check(nResult);
    if (nResult == SQL_NO_DATA) return false;
    progress.Add(1);
    row.resize(columns.Count());
    for (std::size_t i = 0; i < row.size(); ++i) {
      row[i] = {{}, static_cast<std::uint32_t>(i), Kind::Null};
      if (ReadText(i)) SetValue(row[i]);
    }
    return true;
  }

 private:
  // Reads the value of a column piece by piece; false for a null.
  bool ReadText(std::size_t nColumn) {
    std::string& strText = vTexts[nColumn];
    strText.clear();
    char szPiece[4096];
    SQLLEN nLeft = 0;
    SQLRETURN nResult = SQL_SUCCESS_WITH_INFO;
    while (nResult == SQL_SUCCESS_WITH_INFO) {
      nResult = SQLGetData(statement.Get(), static_cast<SQLUSMALLINT>(nColumn + 1), SQL_C_CHAR,
                           szPiece, sizeof szPiece, &nLeft);
      statement.Check(nResult);
      if (nLeft == SQL_NULL_DATA) return false;
      if (nResult == SQL_NO_DATA) break;
      const bool bMore = nLeft == SQL_NO_TOTAL || nLeft >= static_cast<SQLLEN>(sizeof szPiece);
      strText.append(szPiece, bMore ? sizeof szPiece - 1 : static_cast<std::size_t>(nLeft));
    }
    return true;
  }

  void SetValue(Cell& cell) {
    std::string& strText = vTexts[cell.nColumn];
    const std::optional<Kind> eKind = vKinds[cell.nColumn];
    if (!eKind) {
      throw InputError("column '" + columns[cell.nColumn].strName + "': a blob is no text");
    }
    cell.eKind = *eKind;
    if (eKind == Kind::Boolean) {
      cell.strText = strText == "1" || strText == "t" || strText == "true" ? "true" : "false";
      return;
    }
    if (eKind != Kind::Text) {
      // Some drivers leave out the zero in front of a point.
      const std::size_t nPoint = strText.substr(0, 1) == "-" ? 1 : 0;
      if (strText.compare(nPoint, 1, ".") == 0) strText.insert(nPoint, "0");
      cell.eKind = NumberKind(strText);
    }
    cell.strText = strText;
  }

  const Connection connection;
  const Handle statement;
  Progress& progress;
  Columns columns;
  std::vector<std::optional<Kind>> vKinds;
  std::vector<std::string> vTexts;  // the values of the current row
};

// The column as servers know it: their integers and reals are as large as ours by other names.
Column ForServer(Column column, bool bInKey) {
  constexpr const char* kLongestKey = "VARCHAR(255)";
  if (!column.strType.empty() && column.strType != "INTEGER" && column.strType != "REAL") {
    return column;
  }
  const Kind eKind = column.strType == "INTEGER" ? Kind::Integer
                     : column.strType == "REAL"  ? Kind::Real
                                                 : column.eKind.value_or(Kind::Text);
  column.strType = eKind == Kind::Integer   ? "BIGINT"
                   : eKind == Kind::Real    ? "DOUBLE PRECISION"
                   : eKind == Kind::Boolean ? "BOOLEAN"
                   : bInKey                 ? kLongestKey
                                            : "TEXT";
  return column;
}

class OdbcSink : public RowSink {
 public:
  explicit OdbcSink(SqlTarget tableToWrite)
      : target(std::move(tableToWrite)), connection(target.strPath) {
    SQLSetConnectAttr(connection.Get().Get(), SQL_ATTR_AUTOCOMMIT,
                      reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0);
  }
  OdbcSink(const OdbcSink&) = delete;
  OdbcSink& operator=(const OdbcSink&) = delete;

  // Some servers cannot take back the making of a table.
  ~OdbcSink() override {
    if (bDone) return;
    insert.reset();
    SQLEndTran(SQL_HANDLE_DBC, connection.Get().Get(), SQL_ROLLBACK);
    try {
      if (bMade) {
        connection.Execute(connection.WithQuotes("DROP TABLE " + QuotedName(target.strTable)));
        SQLEndTran(SQL_HANDLE_DBC, connection.Get().Get(), SQL_COMMIT);
      }
    } catch (const InputError&) {
      return;  // it was taken back
    }
  }

  Needs GetNeeds() const override { return Needs::Kinds; }

  void Begin(const Columns& columns, bool) override {
    const std::string strName = QuotedName(target.strTable);
    if (columns.Count() == 0) throw InputError("there are no columns to make a table of");
    if (target.eExisting == SqlTarget::Existing::Replace) {
      connection.Execute(connection.WithQuotes("DROP TABLE IF EXISTS " + strName));
    }
    if (target.eExisting != SqlTarget::Existing::Append) {
      Columns declared;
      for (const Column& column : columns) {
        const bool bInKey = column.nKey != 0 ||
                            std::count(target.vKey.begin(), target.vKey.end(), column.strName) != 0;
        declared.Add(ForServer(column, bInKey));
      }
      connection.Execute(connection.WithQuotes("CREATE TABLE " + strName + " (" +
                                               ColumnDefinitions(declared, target.vKey) + ")"));
      bMade = true;
    }
    insert.emplace(SQL_HANDLE_STMT, connection.Get().Get());
    const std::string strInsert = connection.WithQuotes(InsertStatement(target.strTable, columns));
    insert->Check(SQLPrepare(insert->Get(), Sql(strInsert), SQL_NTS));
    vTexts.resize(columns.Count());
    vLengths.resize(columns.Count());
  }

  void Write(const Row& row) override {
    vLengths.assign(vLengths.size(), SQL_NULL_DATA);
    for (const Cell& cell : row) {
      if (cell.eKind == Kind::Null) continue;
      std::string& strText = vTexts[cell.nColumn];
      strText = cell.eKind == Kind::Boolean ? (cell.strText == "true" ? "1" : "0")
                                            : ShownText(cell, strBuffer);
      vLengths[cell.nColumn] = static_cast<SQLLEN>(strText.size());
    }
    for (std::size_t i = 0; i < vTexts.size(); ++i) {
      const bool bNull = vLengths[i] == SQL_NULL_DATA;
      insert->Check(SQLBindParameter(
          insert->Get(), static_cast<SQLUSMALLINT>(i + 1), SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR,
          std::max<SQLULEN>(1, bNull ? 1 : vTexts[i].size()), 0, vTexts[i].data(),
          static_cast<SQLLEN>(vTexts[i].size()), &vLengths[i]));
    }
    insert->Check(SQLExecute(insert->Get()));
  }

  void End() override {
    insert.reset();
    connection.Get().Check(SQLEndTran(SQL_HANDLE_DBC, connection.Get().Get(), SQL_COMMIT));
    bDone = true;
  }

 private:
  const SqlTarget target;
  const Connection connection;
  std::optional<Handle> insert;
  std::vector<std::string> vTexts;  // for each column, the value of the current row
  std::vector<SQLLEN> vLengths;
  std::string strBuffer;
  bool bMade = false;
  bool bDone = false;
};

}  // namespace

bool IsOdbc(const std::string& strPath) { return strPath.compare(0, kPrefix.size(), kPrefix) == 0; }

std::unique_ptr<RowSource> OpenOdbcRows(const std::string& strPath, const std::string& strQuery,
                                        const std::string& strTable, Progress& progress) {
  if (strQuery.empty() && strTable.empty()) {
    throw UsageError("--table or --query has to say what to read from the database");
  }
  return std::make_unique<OdbcSource>(strPath, strQuery, strTable, progress);
}

std::unique_ptr<RowSink> OpenOdbcSink(const SqlTarget& target) {
  return std::make_unique<OdbcSink>(target);
}

}  // namespace qxrs

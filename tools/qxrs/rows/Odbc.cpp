// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Databases behind ODBC drivers. Values travel as text in both directions, rows that are written in
// batches, where the driver takes arrays of parameters.

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <optional>

#include "tools/qxrs/rows/Sql.h"
#include "tools/qxrs/rows/Values.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

constexpr std::string_view kPrefix = "odbc:";
constexpr std::size_t kNameSize = 256;  // bytes of the longest name, and its NUL

constexpr std::size_t kBatchCells = 2000;  // that are sent at a time,
constexpr std::size_t kLongText = 1000;    // a row with a text of more bytes alone

SQLCHAR* Sql(const std::string& strText) {
  return reinterpret_cast<SQLCHAR*>(const_cast<char*>(strText.c_str()));
}

// A number, or an address, as an attribute.
template <typename Attribute>
SQLPOINTER Pointer(Attribute attribute) {
  return reinterpret_cast<SQLPOINTER>(attribute);  // NOLINT(performance-no-int-to-ptr): ODBC's way
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
    Fail();
  }

  [[noreturn]] void Fail() const {
    SQLCHAR szState[6];
    SQLCHAR szText[SQL_MAX_MESSAGE_LENGTH] = {};
    SQLGetDiagRec(eType, handle, 1, szState, nullptr, szText, sizeof szText, nullptr);
    throw InputError("ODBC: " + std::string(reinterpret_cast<const char*>(szText)));
  }

 private:
  const SQLSMALLINT eType;
  SQLHANDLE handle = SQL_NULL_HANDLE;
};

// A type of ODBC as the tool has it.
struct OdbcType {
  std::optional<Kind> eKind;  // nothing: bytes that are no text
  Hold eHold;
};

OdbcType TypeNumbered(SQLSMALLINT eType) {
  switch (eType) {
    case SQL_BIT:
      return {Kind::Boolean, Hold::Booleans};
    case SQL_TINYINT:
    case SQL_SMALLINT:
    case SQL_INTEGER:
    case SQL_BIGINT:
      return {Kind::Integer, Hold::Values};
    case SQL_REAL:
    case SQL_FLOAT:
    case SQL_DOUBLE:
      return {Kind::Real, Hold::Reals};
    case SQL_DECIMAL:
    case SQL_NUMERIC:
      return {Kind::Real, Hold::Exact};
    case SQL_BINARY:
    case SQL_VARBINARY:
    case SQL_LONGVARBINARY:
      return {std::nullopt, Hold::Texts};
    default:
      return {Kind::Text, Hold::Texts};
  }
}

class OdbcStatement : public Statement {
 public:
  // Many rows of parameters are sent at a time, where the driver takes them.
  OdbcStatement(const Handle& connection, const std::string& strSql)
      : handle(SQL_HANDLE_STMT, connection.Get()) {
    handle.Check(SQLPrepare(handle.Get(), Sql(strSql), SQL_NTS));
    bArrays = SQLSetStmtAttr(handle.Get(), SQL_ATTR_PARAMSET_SIZE, Pointer(std::size_t{2}), 0) ==
              SQL_SUCCESS;
    SQLSetStmtAttr(handle.Get(), SQL_ATTR_PARAMSET_SIZE, Pointer(std::size_t{1}), 0);
  }

  Columns GetColumns() override {
    Columns columns;
    handle.Check(SQLExecute(handle.Get()));
    SQLSMALLINT nColumns = 0;
    SQLNumResultCols(handle.Get(), &nColumns);
    for (SQLSMALLINT i = 1; i <= nColumns; ++i) {
      SQLCHAR szName[kNameSize] = {};
      SQLSMALLINT eType = 0;
      SQLSMALLINT eNullable = 0;
      handle.Check(SQLDescribeCol(handle.Get(), static_cast<SQLUSMALLINT>(i), szName, sizeof szName,
                                  nullptr, &eType, nullptr, nullptr, &eNullable));
      vTypes.push_back(TypeNumbered(eType));
      Column column;
      column.strName = reinterpret_cast<const char*>(szName);
      column.eKind = vTypes.back().eKind;
      column.bNotNull = eNullable == SQL_NO_NULLS;
      if (!columns.Add(column)) {
        throw InputError(RepeatedName(column.strName) + "; name it with AS");
      }
      vNames.push_back(column.strName);
    }
    vTexts.resize(vTypes.size());
    return columns;
  }

  // Of the columns of the answer.
  const std::vector<OdbcType>& Types() const { return vTypes; }

  bool Next(Row& row) override {
    const SQLRETURN nResult = SQLFetch(handle.Get());
    handle.Check(nResult);
    if (nResult == SQL_NO_DATA) return false;
    row.resize(vTypes.size());
    for (std::size_t i = 0; i < row.size(); ++i) {
      row[i].nColumn = static_cast<std::uint32_t>(i);
      FillCell(row[i]);
    }
    return true;
  }

  void Bind(const std::vector<Value>& vValues) override {
    nParameters = vValues.size();
    for (const Value& value : vValues) {
      vPending.emplace_back();
      if (value.eKind != Kind::Null) vPending.back() = value.strText;
    }
  }

  void Run(const std::vector<Value>& vValues) override {
    const bool bLong = std::any_of(vValues.begin(), vValues.end(), [](const Value& value) {
      return value.eKind != Kind::Null && value.strText.size() > kLongText;
    });
    if (bLong) Flush();
    Bind(vValues);
    if (bLong || !bArrays || vPending.size() + nParameters > kBatchCells) Flush();
  }

  void Flush() override {
    if (vPending.empty()) return;
    const std::size_t nRows = vPending.size() / nParameters;
    SQLULEN nDone = nRows;
    std::vector<SQLUSMALLINT> vStates(nRows, SQL_PARAM_SUCCESS);
    std::vector<Parameter> vParameters(nParameters);
    for (std::size_t i = 0; i < nParameters; ++i) {
      Spread(i, nRows, vParameters[i]);
    }
    if (bArrays) {
      SQLSetStmtAttr(handle.Get(), SQL_ATTR_PARAM_STATUS_PTR, vStates.data(), 0);
      SQLSetStmtAttr(handle.Get(), SQL_ATTR_PARAMS_PROCESSED_PTR, &nDone, 0);
      handle.Check(SQLSetStmtAttr(handle.Get(), SQL_ATTR_PARAMSET_SIZE, Pointer(nRows), 0));
    }
    handle.Check(SQLExecute(handle.Get()));
    const auto itFailed = std::find(vStates.begin(), vStates.end(), SQL_PARAM_ERROR);
    if (itFailed != vStates.end() || nDone != nRows) handle.Fail();
    vPending.clear();
  }

 private:
  // The values of all rows that one parameter has.
  struct Parameter {
    std::vector<char> vBytes;  // in pieces of one size
    std::vector<SQLLEN> vLengths;
  };

  void Spread(std::size_t nParameter, std::size_t nRows, Parameter& parameter) {
    std::size_t nWidest = 1;
    for (std::size_t i = nParameter; i < vPending.size(); i += nParameters) {
      const auto& strText = vPending[i];
      nWidest = std::max(nWidest, strText ? strText->size() : 0);
      parameter.vLengths.push_back(strText ? static_cast<SQLLEN>(strText->size()) : SQL_NULL_DATA);
    }
    parameter.vBytes.resize(nRows * nWidest);
    for (std::size_t i = 0; i < nRows; ++i) {
      const auto& strText = vPending[i * nParameters + nParameter];
      if (strText) strText->copy(&parameter.vBytes[i * nWidest], nWidest);
    }
    handle.Check(SQLBindParameter(handle.Get(), static_cast<SQLUSMALLINT>(nParameter + 1),
                                  SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR, nWidest, 0,
                                  parameter.vBytes.data(), static_cast<SQLLEN>(nWidest),
                                  parameter.vLengths.data()));
  }

  // The text of a column of the current row; false for a null.
  bool GetText(std::size_t nColumn, std::string& strText) {
    strText.clear();
    while (true) {
      char aPiece[4096];
      SQLLEN nLength = 0;
      const SQLRETURN nResult = SQLGetData(handle.Get(), static_cast<SQLUSMALLINT>(nColumn + 1),
                                           SQL_C_CHAR, aPiece, sizeof aPiece, &nLength);
      handle.Check(nResult);
      if (nLength == SQL_NULL_DATA) return false;
      if (nResult == SQL_NO_DATA) return true;
      const bool bCut = nLength == SQL_NO_TOTAL || nLength >= static_cast<SQLLEN>(sizeof aPiece);
      strText.append(aPiece, bCut ? sizeof aPiece - 1 : static_cast<std::size_t>(nLength));
      if (!bCut) return true;
    }
  }

  void FillCell(Cell& cell) {
    std::string& strText = vTexts[cell.nColumn];
    const std::optional<Kind> eKind = vTypes[cell.nColumn].eKind;
    const bool bNull = !GetText(cell.nColumn, strText);
    cell.strText = strText;
    cell.eKind = bNull ? Kind::Null : eKind.value_or(Kind::Null);
    if (bNull) return;
    if (!eKind) throw InputError("column '" + vNames[cell.nColumn] + "': a blob is no text");
    if (eKind == Kind::Boolean) {
      cell.strText = strText == "1" || strText == "t" || strText == "true" ? "true" : "false";
    } else if (eKind != Kind::Text) {
      // Some drivers leave out the zero in front of a point.
      const std::size_t nPoint = strText.substr(0, 1) == "-" ? 1 : 0;
      if (strText.compare(nPoint, 1, ".") == 0) strText.insert(nPoint, "0");
      cell.strText = strText;
      cell.eKind = NumberKind(strText);
    }
  }

  const Handle handle;
  bool bArrays = false;
  std::vector<OdbcType> vTypes;  // of the columns of the answer,
  std::vector<std::string> vNames;
  std::vector<std::string> vTexts;                   // and the values of the current row
  std::vector<std::optional<std::string>> vPending;  // parameters of rows, one behind the other
  std::size_t nParameters = 0;                       // of one row
};

class OdbcDatabase final : public Database {
 public:
  // Servers know integers and reals that are as large as ours by other names.
  explicit OdbcDatabase(const std::string& strPath)
      : Database({"BIGINT", "DOUBLE PRECISION", "TEXT", "VARCHAR(255)"}) {
    SQLSetEnvAttr(environment.Get(), SQL_ATTR_ODBC_VERSION, Pointer(std::size_t{SQL_OV_ODBC3}), 0);
    connection.emplace(SQL_HANDLE_DBC, environment.Get());
    const std::string strConnection = strPath.substr(kPrefix.size());
    connection->Check(SQLDriverConnect(connection->Get(), nullptr, Sql(strConnection), SQL_NTS,
                                       nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT));
    char szQuote[8] = "\"";
    SQLGetInfo(connection->Get(), SQL_IDENTIFIER_QUOTE_CHAR, szQuote, sizeof szQuote, nullptr);
    chQuote = szQuote[0];
  }
  OdbcDatabase(const OdbcDatabase&) = delete;
  OdbcDatabase& operator=(const OdbcDatabase&) = delete;

  ~OdbcDatabase() override {
    EndTransaction(SQL_ROLLBACK);
    if (!strMade.empty()) Undo();
    SQLDisconnect(connection->Get());
  }

  void Execute(const std::string& strSql) override {
    const Handle statement(SQL_HANDLE_STMT, connection->Get());
    statement.Check(SQLExecDirect(statement.Get(), Sql(strSql), SQL_NTS));
  }

  std::unique_ptr<Statement> Prepare(const std::string& strSql) override {
    return std::make_unique<OdbcStatement>(*connection, strSql);
  }

  std::vector<std::string> Tables() override {
    const Handle statement(SQL_HANDLE_STMT, connection->Get());
    SQLCHAR szType[] = "TABLE";
    SQLCHAR szName[kNameSize] = {};
    statement.Check(
        SQLTables(statement.Get(), nullptr, 0, nullptr, 0, nullptr, 0, szType, SQL_NTS));
    SQLBindCol(statement.Get(), 3, SQL_C_CHAR, szName, sizeof szName, nullptr);
    std::vector<std::string> vNames;
    while (SQL_SUCCEEDED(SQLFetch(statement.Get()))) {
      vNames.emplace_back(reinterpret_cast<const char*>(szName));
    }
    return vNames;
  }

  std::vector<Hold> Holds(const std::string& strTable, const Columns& columns) override {
    std::vector<std::string> vNames;
    for (const Column& column : columns) {
      vNames.push_back(column.strName);
    }
    OdbcStatement question(
        *connection, "SELECT " + Quoted(vNames) + " FROM " + Quoted(strTable) + " WHERE 0 = 1");
    question.GetColumns();
    std::vector<Hold> vHolds;
    for (const OdbcType& type : question.Types()) {
      vHolds.push_back(type.eHold);
    }
    return vHolds;
  }

  void Begin() override {
    SQLSetConnectAttr(connection->Get(), SQL_ATTR_AUTOCOMMIT,
                      Pointer(std::size_t{SQL_AUTOCOMMIT_OFF}), 0);
  }

  void Create(const std::string& strTable, const std::string& strDefinitions) override {
    Execute("CREATE TABLE " + strTable + " (" + strDefinitions + ")");
    strMade = strTable;
  }

  void Commit() override {
    connection->Check(EndTransaction(SQL_COMMIT));
    strMade.clear();
  }

 private:
  SQLRETURN EndTransaction(SQLSMALLINT eHow) {
    return SQLEndTran(SQL_HANDLE_DBC, connection->Get(), eHow);
  }

  // Some servers cannot take back the making of a table.
  void Undo() {
    try {
      Execute("DROP TABLE " + strMade);
      EndTransaction(SQL_COMMIT);
    } catch (const InputError&) {
      return;  // it was taken back
    }
  }

  const Handle environment = Handle(SQL_HANDLE_ENV, SQL_NULL_HANDLE);
  std::optional<Handle> connection;
  std::string strMade;  // a table that has to go when nothing is committed
};

}  // namespace

bool IsOdbc(const std::string& strPath) { return strPath.compare(0, kPrefix.size(), kPrefix) == 0; }

std::shared_ptr<Database> OpenOdbc(const std::string& strPath) {
  return std::make_shared<OdbcDatabase>(strPath);
}

}  // namespace qxrs

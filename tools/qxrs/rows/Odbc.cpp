// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Databases behind ODBC drivers. Values travel as text in both directions, rows that are written in
// batches, where the driver takes arrays of parameters.

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <cstring>
#include <optional>

#include "tools/qxrs/rows/Sql.h"
#include "tools/qxrs/rows/Values.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

constexpr std::string_view kPrefix = "odbc:";

constexpr std::size_t kBatchRows = 500;       // rows that are sent at a time, at most,
constexpr std::size_t kBatchBytes = 1 << 20;  // of no more bytes than this, or alone

SQLCHAR* Sql(const std::string& strText) {
  return reinterpret_cast<SQLCHAR*>(const_cast<char*>(strText.c_str()));
}

// A number, or an address, as an attribute.
template <typename Attribute>
SQLPOINTER Pointer(Attribute attribute) {
  return reinterpret_cast<SQLPOINTER>(attribute);
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

// The parameters of rows that wait for being sent. A driver wants the values of a column behind
// each other, in pieces of one size.
class Batch {
 public:
  bool IsFull() const { return nRows == kBatchRows || nBytes >= kBatchBytes; }
  std::size_t Rows() const { return nRows; }

  void Add(const std::vector<Value>& vValues) {
    vColumns.resize(vValues.size());
    for (std::size_t i = 0; i < vValues.size(); ++i) {
      InColumn& column = vColumns[i];
      const bool bNull = vValues[i].eKind == Kind::Null;
      const std::string_view strText = bNull ? std::string_view() : vValues[i].strText;
      column.strTexts += strText;
      column.nWidest = std::max(column.nWidest, strText.size());
      column.vLengths.push_back(bNull ? SQL_NULL_DATA : static_cast<SQLLEN>(strText.size()));
      nBytes += strText.size();
    }
    ++nRows;
  }

  // Makes all rows the parameters of a statement.
  void Bind(const Handle& statement) {
    SQLUSMALLINT nParameter = 0;
    for (InColumn& column : vColumns) {
      column.Spread();
      statement.Check(SQLBindParameter(
          statement.Get(), ++nParameter, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR, column.nWidest,
          0, column.vBytes.data(), static_cast<SQLLEN>(column.nWidest), column.vLengths.data()));
    }
  }

  void Clear() {
    for (InColumn& column : vColumns) {
      column.strTexts.clear();
      column.vLengths.clear();
      column.nWidest = 1;
    }
    nRows = nBytes = 0;
  }

 private:
  struct InColumn {
    std::string strTexts;  // one behind the other
    std::vector<SQLLEN> vLengths;
    std::size_t nWidest = 1;
    std::vector<char> vBytes;  // in pieces of that size

    void Spread() {
      vBytes.resize(vLengths.size() * nWidest);
      const char* pText = strTexts.data();
      char* pPiece = vBytes.data();
      for (const SQLLEN nLength : vLengths) {
        const auto nText = static_cast<std::size_t>(std::max<SQLLEN>(nLength, 0));
        std::memcpy(pPiece, pText, nText);
        pText += nText;
        pPiece += nWidest;
      }
    }
  };

  std::vector<InColumn> vColumns;
  std::size_t nRows = 0;
  std::size_t nBytes = 0;
};

class OdbcStatement : public Statement {
 public:
  explicit OdbcStatement(const Handle& connection) : handle(SQL_HANDLE_STMT, connection.Get()) {}

  const Handle& GetHandle() const { return handle; }

  // The types of the columns of the answer.
  std::vector<OdbcType> Types() {
    Columns columns = GetColumns();
    return vTypes;
  }

  Columns GetColumns() override {
    Columns columns;
    handle.Check(SQLExecute(handle.Get()));
    SQLSMALLINT nColumns = 0;
    SQLNumResultCols(handle.Get(), &nColumns);
    for (SQLSMALLINT i = 1; i <= nColumns; ++i) {
      SQLCHAR szName[256] = {};
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

  // The text of a column of the current row, counted from 0; false for a null.
  bool GetText(std::size_t nColumn, std::string& strText) {
    constexpr std::size_t kPiece = 4096;
    strText.clear();
    while (true) {
      char aPiece[kPiece];
      SQLLEN nLength = 0;
      const SQLRETURN nResult = SQLGetData(handle.Get(), static_cast<SQLUSMALLINT>(nColumn + 1),
                                           SQL_C_CHAR, aPiece, sizeof aPiece, &nLength);
      handle.Check(nResult);
      if (nResult == SQL_NO_DATA) return true;
      if (nLength == SQL_NULL_DATA) return false;
      const bool bCut = nLength == SQL_NO_TOTAL || nLength >= static_cast<SQLLEN>(sizeof aPiece);
      strText.append(aPiece, bCut ? sizeof aPiece - 1 : static_cast<std::size_t>(nLength));
      if (!bCut) return true;
    }
  }

  void Bind(const std::vector<Value>& vValues) override { batch.Add(vValues); }

  void Run(const std::vector<Value>& vValues) override {
    Bind(vValues);
    if (batch.IsFull() || !bArrays) Flush();
  }

  void Flush() override {
    if (batch.Rows() == 0) return;
    SQLULEN nDone = 0;
    std::vector<SQLUSMALLINT> vStates(batch.Rows(), SQL_PARAM_SUCCESS);
    if (bArrays) {
      SQLSetStmtAttr(handle.Get(), SQL_ATTR_PARAM_STATUS_PTR, vStates.data(), 0);
      SQLSetStmtAttr(handle.Get(), SQL_ATTR_PARAMS_PROCESSED_PTR, &nDone, 0);
      handle.Check(SQLSetStmtAttr(handle.Get(), SQL_ATTR_PARAMSET_SIZE, Pointer(batch.Rows()), 0));
    }
    batch.Bind(handle);
    handle.Check(SQLExecute(handle.Get()));
    const bool bFailed =
        std::find(vStates.begin(), vStates.end(), SQL_PARAM_ERROR) != vStates.end();
    if (bFailed || (bArrays && nDone != batch.Rows())) handle.Fail();
    batch.Clear();
  }

  // Prepares a statement, and finds out whether it takes many rows at a time.
  void Prepare(const std::string& strSql) {
    handle.Check(SQLPrepare(handle.Get(), Sql(strSql), SQL_NTS));
    SQLULEN nRows = 0;
    bArrays =
        SQL_SUCCEEDED(
            SQLSetStmtAttr(handle.Get(), SQL_ATTR_PARAMSET_SIZE, Pointer(kBatchRows), 0)) &&
        SQL_SUCCEEDED(SQLGetStmtAttr(handle.Get(), SQL_ATTR_PARAMSET_SIZE, &nRows, 0, nullptr)) &&
        nRows == kBatchRows;
    SQLSetStmtAttr(handle.Get(), SQL_ATTR_PARAMSET_SIZE, Pointer(std::size_t{1}), 0);
  }

 private:
  void FillCell(Cell& cell) {
    std::string& strText = vTexts[cell.nColumn];
    const std::optional<Kind> eKind = vTypes[cell.nColumn].eKind;
    const bool bNull = !GetText(cell.nColumn, strText);
    if (bNull) {
      cell.eKind = Kind::Null;
      cell.strText = {};
      return;
    }
    if (!eKind) throw InputError("column '" + vNames[cell.nColumn] + "': a blob is no text");
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

  const Handle handle;
  std::vector<OdbcType> vTypes;
  std::vector<std::string> vNames;
  std::vector<std::string> vTexts;  // the values of the current row
  Batch batch;
  bool bArrays = false;
};

class OdbcDatabase : public Database {
 public:
  explicit OdbcDatabase(const std::string& strPath) {
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
    auto pStatement = std::make_unique<OdbcStatement>(*connection);
    pStatement->Prepare(strSql);
    return pStatement;
  }

  std::vector<std::string> Tables() override {
    constexpr std::size_t kName = 2;  // the third column of the answer
    SQLCHAR szType[] = "TABLE";
    OdbcStatement statement(*connection);
    const Handle& handle = statement.GetHandle();
    handle.Check(SQLTables(handle.Get(), nullptr, 0, nullptr, 0, nullptr, 0, szType, SQL_NTS));
    std::vector<std::string> vNames;
    while (SQL_SUCCEEDED(SQLFetch(handle.Get()))) {
      statement.GetText(kName, vNames.emplace_back());
    }
    return vNames;
  }

  std::vector<Hold> Holds(const std::string& strTable, const Columns& columns) override {
    std::vector<std::string> vNames;
    for (const Column& column : columns) {
      vNames.push_back(column.strName);
    }
    OdbcStatement question(*connection);
    question.Prepare("SELECT " + Quoted(vNames) + " FROM " + Quoted(strTable) + " WHERE 0 = 1");
    std::vector<Hold> vHolds;
    for (const OdbcType& type : question.Types()) {
      vHolds.push_back(type.eHold);
    }
    return vHolds;
  }

  // Servers know integers and reals that are as large as ours by other names.
  std::string TypeOf(const Column& column, bool bInKey) const override {
    const std::string& strType = column.strType;
    if (!strType.empty() && strType != "INTEGER" && strType != "REAL") return strType;
    const Kind eKind = strType == "INTEGER" ? Kind::Integer
                       : strType == "REAL"  ? Kind::Real
                                            : column.eKind.value_or(Kind::Text);
    return eKind == Kind::Integer   ? "BIGINT"
           : eKind == Kind::Real    ? "DOUBLE PRECISION"
           : eKind == Kind::Boolean ? "BOOLEAN"
           : bInKey                 ? "VARCHAR(255)"
                                    : "TEXT";
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

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// SQLite databases.

#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <new>
#include <optional>
#include <set>

#include "tools/qxrs/rows/Sql.h"
#include "tools/qxrs/rows/Values.h"
#include "tools/qxrs/support/Errors.h"
#include "tools/qxrs/support/Output.h"

namespace qxrs {

namespace {

constexpr int kPatience = 5000;  // milliseconds to wait for another process's lock

[[noreturn]] void Fail(sqlite3* p, const std::string& strName) {
  throw InputError(strName + ": " + sqlite3_errmsg(p));
}

bool IsLike(const std::string& strType, std::initializer_list<const char*> patterns) {
  return std::any_of(patterns.begin(), patterns.end(), [&](const char* szPattern) {
    return sqlite3_strlike(szPattern, strType.c_str(), 0) == 0;
  });
}

struct NoCase {
  bool operator()(const std::string& strOne, const std::string& strOther) const {
    return sqlite3_stricmp(strOne.c_str(), strOther.c_str()) < 0;
  }
};
using TableColumns = std::map<std::string, Column, NoCase>;

// What the columns of a table are declared as.
TableColumns TableInfo(sqlite3* pDatabase, const std::string& strTable);

class SqliteStatement : public Statement {
 public:
  // The first statement of the text that szSql is in, which ends behind `*pszEnd`.
  SqliteStatement(sqlite3* pOpened, std::string strFile, const char* szSql, const char** pszEnd)
      : pDatabase(pOpened), strName(std::move(strFile)) {
    sqlite3_set_authorizer(pDatabase, NoteTable, &setTables);
    const int nResult = sqlite3_prepare_v2(pDatabase, szSql, -1, &p, pszEnd);
    sqlite3_set_authorizer(pDatabase, nullptr, nullptr);
    if (nResult == SQLITE_OK) return;
    const int nOffset = sqlite3_error_offset(pDatabase);
    if (nOffset < 0) Fail(pDatabase, strName);
    TextPosition position;
    position.Advance({szSql, static_cast<std::size_t>(nOffset)});
    throw Complaint("SQL text", position, sqlite3_errmsg(pDatabase));
  }
  SqliteStatement(const SqliteStatement&) = delete;
  SqliteStatement& operator=(const SqliteStatement&) = delete;
  ~SqliteStatement() override { sqlite3_finalize(p); }

  bool IsEmpty() const { return !p; }

  Columns GetColumns() override {
    Columns columns;
    int nKeys = 0;
    for (int i = 0; i < sqlite3_column_count(p); ++i) {
      Column column;
      const char* const szTable = sqlite3_column_table_name(p, i);
      if (szTable) column = TableInfo(pDatabase, szTable)[sqlite3_column_origin_name(p, i)];
      column.strName = sqlite3_column_name(p, i);
      nKeys += column.nKey != 0 ? 1 : 0;
      vBoolean.push_back(IsLike(column.strType, {"BOOLEAN", "BOOL"}));
      if (!columns.Add(column)) {
        throw InputError(RepeatedName(column.strName) + "; name it with AS");
      }
    }
    // The rows of a table have its keys; those of a join may repeat them, and have nulls.
    const bool bTable = setTables.size() == 1;
    const auto mapTable = bTable ? TableInfo(pDatabase, *setTables.begin()) : TableColumns();
    const auto nKeyParts = std::count_if(mapTable.begin(), mapTable.end(),
                                         [](const auto& entry) { return entry.second.nKey != 0; });
    for (std::size_t i = 0; i < columns.Count(); ++i) {
      columns[i].nKey = bTable && nKeys == nKeyParts ? columns[i].nKey : 0;
      columns[i].bNotNull = columns[i].bNotNull && bTable;
    }
    return columns;
  }

  bool Next(Row& row) override {
    const int nResult = sqlite3_step(p);
    if (nResult == SQLITE_DONE) return false;
    if (nResult != SQLITE_ROW) Fail(pDatabase, strName);
    ++nRow;
    const int nColumns = sqlite3_data_count(p);
    row.resize(static_cast<std::size_t>(nColumns));
    vTexts.resize(row.size());
    for (int i = 0; i < nColumns; ++i) {
      FillCell(i, row[static_cast<std::size_t>(i)]);
    }
    return true;
  }

  void Bind(const std::vector<Value>& vValues) override {
    sqlite3_reset(p);
    int nParameter = 0;
    for (const Value& value : vValues) {
      if (BindValue(++nParameter, value) != SQLITE_OK) Fail(pDatabase, strName);
    }
  }

 private:
  // The tables that a statement reads, noted while it is prepared.
  static int NoteTable(void* pTables, int nWhat, const char* szTable, const char*, const char*,
                       const char*) {
    if (nWhat == SQLITE_READ && szTable) {
      static_cast<std::set<std::string>*>(pTables)->insert(szTable);
    }
    return SQLITE_OK;
  }

  int BindValue(int nParameter, const Value& value) {
    switch (value.eKind) {
      case Kind::Null:
        return sqlite3_bind_null(p, nParameter);
      case Kind::Integer:
        return sqlite3_bind_int64(p, nParameter, value.nInteger);
      case Kind::Real:
        return sqlite3_bind_double(p, nParameter, value.fReal);
      default:
        // A text without a pointer would be a null.
        return sqlite3_bind_text64(p, nParameter, value.strText.data() ? value.strText.data() : "",
                                   value.strText.size(), SQLITE_STATIC, SQLITE_UTF8);
    }
  }

  void FillCell(int nColumn, Cell& cell) {
    cell.nColumn = static_cast<std::uint32_t>(nColumn);
    switch (sqlite3_column_type(p, nColumn)) {
      case SQLITE_NULL:
        cell.eKind = Kind::Null;
        cell.strText = {};
        break;
      case SQLITE_INTEGER:
        FillInteger(sqlite3_column_int64(p, nColumn), cell);
        break;
      case SQLITE_FLOAT:
        cell.eKind = Kind::Real;
        cell.strText = vTexts[cell.nColumn] = RealText(sqlite3_column_double(p, nColumn));
        break;
      case SQLITE_BLOB:
        throw InputError(strName + ": row " + std::to_string(nRow) + ", column '" +
                         sqlite3_column_name(p, nColumn) +
                         "': a blob is no text; select hex() of it");
      default:
        cell.eKind = Kind::Text;
        const auto* const pText = reinterpret_cast<const char*>(sqlite3_column_text(p, nColumn));
        if (!pText) throw std::bad_alloc();
        cell.strText = {pText, static_cast<std::size_t>(sqlite3_column_bytes(p, nColumn))};
    }
  }

  void FillInteger(sqlite3_int64 nValue, Cell& cell) {
    if (cell.nColumn < vBoolean.size() && vBoolean[cell.nColumn] && (nValue == 0 || nValue == 1)) {
      cell.eKind = Kind::Boolean;
      cell.strText = nValue == 1 ? "true" : "false";
      return;
    }
    char szText[24];  // 20 are needed
    cell.eKind = Kind::Integer;
    vTexts[cell.nColumn].assign(szText, std::to_chars(szText, szText + sizeof szText, nValue).ptr);
    cell.strText = vTexts[cell.nColumn];
  }

  sqlite3* const pDatabase;
  const std::string strName;
  sqlite3_stmt* p = nullptr;
  std::set<std::string> setTables;
  std::vector<bool> vBoolean;       // for each column, whether it is declared so
  std::vector<std::string> vTexts;  // the number that each column's cell has in the current row
  unsigned long long nRow = 0;
};

TableColumns TableInfo(sqlite3* pDatabase, const std::string& strTable) {
  const char* szEnd = nullptr;
  SqliteStatement question(pDatabase, "SQL",
                           "SELECT name, type, \"notnull\", pk FROM pragma_table_info(?)", &szEnd);
  question.Bind({{Kind::Text, 0, 0, strTable}});
  TableColumns mapColumns;
  for (Row row; question.Next(row);) {
    Column& column = mapColumns[std::string(row[0].strText)];
    column.strType = row[1].strText;
    column.bNotNull = row[2].strText != "0";
    column.nKey = static_cast<int>(ToInt64(row[3].strText).value_or(0));
  }
  return mapColumns;
}

class SqliteDatabase final : public Database {
 public:
  SqliteDatabase(const std::string& strPath, DatabaseMode eMode)
      : Database({"INTEGER", "REAL", "TEXT", "TEXT"}),
        strName(eMode == DatabaseMode::Scratch ? "SQL" : strPath) {
    const bool bNew = eMode == DatabaseMode::Write && access(strPath.c_str(), F_OK) != 0;
    if (bNew) file.emplace(strPath);
    const std::string& strOpened = bNew ? file->Path() : strPath;
    const bool bCreate = eMode == DatabaseMode::Write || eMode == DatabaseMode::Scratch;
    const int nFlags = eMode == DatabaseMode::Read
                           ? SQLITE_OPEN_READONLY
                           : SQLITE_OPEN_READWRITE | (bCreate ? SQLITE_OPEN_CREATE : 0);
    sqlite3* pOpened = nullptr;
    const int nResult =
        sqlite3_open_v2(strOpened.c_str(), &pOpened, nFlags | SQLITE_OPEN_NOMUTEX, nullptr);
    pHandle.reset(pOpened);
    if (nResult != SQLITE_OK) {
      throw InputError("cannot open " + strName + ": " + sqlite3_errstr(nResult));
    }
    sqlite3_busy_timeout(pOpened, kPatience);
    // SQLite looks into the file only when it has to; a file that is no database is refused here.
    Execute("PRAGMA schema_version");
    // Nobody sees these before they are complete: what protects them from a crash is of no use.
    if (bNew || eMode == DatabaseMode::Scratch) {
      Execute("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF");
    }
  }

  void Execute(const std::string& strSql) override {
    if (sqlite3_exec(pHandle.get(), strSql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
      Fail(pHandle.get(), strName);
    }
  }

  std::unique_ptr<Statement> Prepare(const std::string& strSql) override {
    const char* szEnd = nullptr;
    auto pStatement =
        std::make_unique<SqliteStatement>(pHandle.get(), strName, strSql.c_str(), &szEnd);
    if (pStatement->IsEmpty()) throw InputError("the SQL text holds no statement");
    while (*szEnd != '\0') {
      if (!SqliteStatement(pHandle.get(), strName, szEnd, &szEnd).IsEmpty()) {
        throw InputError("the SQL text holds more than one statement");
      }
    }
    return pStatement;
  }

  std::vector<std::string> Tables() override {
    const auto pNames = Prepare(
        "SELECT name FROM sqlite_schema WHERE type = 'table' AND name NOT LIKE 'sqlite^_%' "
        "ESCAPE '^'");
    std::vector<std::string> vNames;
    for (Row row; pNames->Next(row);) {
      vNames.emplace_back(row[0].strText);
    }
    return vNames;
  }

  std::vector<Hold> Holds(const std::string& strTable, const Columns& columns) override {
    std::vector<Hold> vHolds;
    TableColumns mapTable = TableInfo(pHandle.get(), strTable);
    for (const Column& column : columns) {
      const std::string& strType = mapTable[column.strName].strType;
      vHolds.push_back(IsLike(strType, {"%BOOL%"})                       ? Hold::Booleans
                       : IsLike(strType, {"%INT%"})                      ? Hold::Values
                       : IsLike(strType, {"%CHAR%", "%CLOB%", "%TEXT%"}) ? Hold::Texts
                       : IsLike(strType, {"%REAL%", "%FLOA%", "%DOUB%"}) ? Hold::Reals
                                                                         : Hold::Values);
    }
    return vHolds;
  }

  void Begin() override { Execute("BEGIN IMMEDIATE"); }

  void Create(const std::string& strTable, const std::string& strDefinitions) override {
    Execute("CREATE TABLE " + strTable + " (" + strDefinitions + ")");
  }

  void Commit() override {
    Execute("COMMIT");
    if (!file) return;
    pHandle.reset();
    file->Commit();
  }

 private:
  struct Close {
    void operator()(sqlite3* p) const { sqlite3_close(p); }
  };

  const std::string strName;
  std::optional<TemporaryFile> file;  // a database that is made
  std::unique_ptr<sqlite3, Close> pHandle;
};

}  // namespace

std::shared_ptr<Database> OpenDatabase(const std::string& strPath, DatabaseMode eMode) {
  if (IsOdbc(strPath)) return OpenOdbc(strPath);
  return std::make_shared<SqliteDatabase>(strPath, eMode);
}

}  // namespace qxrs

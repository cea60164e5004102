// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// SQLite.

#include "tools/qxrs/rows/Sqlite.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <new>
#include <optional>
#include <utility>

#include "tools/qxrs/support/Errors.h"
#include "tools/qxrs/support/TextPosition.h"

namespace qxrs {

// ---- Database -----------------------------------------------------------------------------------

namespace {

constexpr int kPatience = 5000;  // milliseconds to wait for another process's lock

}  // namespace

Database::Database(const std::string& strPath, Mode eMode) : strName(strPath) {
  const int nFlags =
      eMode == Mode::Read ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
  sqlite3* pOpened = nullptr;
  const int nResult = sqlite3_open_v2(strPath.c_str(), &pOpened, nFlags, nullptr);
  pHandle.reset(pOpened);
  if (nResult != SQLITE_OK) {
    throw InputError("cannot open " + strName + ": " + sqlite3_errstr(nResult));
  }
  sqlite3_busy_timeout(pOpened, kPatience);
  // SQLite looks into the file only when it has to; a file that is no database is refused here.
  Execute("PRAGMA schema_version");
}

Database::Statement Database::Prepare(const std::string& strSql) {
  std::size_t nEnd = 0;
  Statement pStatement = PrepareFirst(strSql, 0, &nEnd);
  if (!pStatement) {
    throw InputError("the SQL text holds no statement");
  }
  while (nEnd < strSql.size()) {
    if (PrepareFirst(strSql, nEnd, &nEnd)) {
      throw InputError("the SQL text holds more than one statement");
    }
  }
  return pStatement;
}

// The first statement from byte `nFrom` on; null when only white space and comments follow.
Database::Statement Database::PrepareFirst(const std::string& strSql, std::size_t nFrom,
                                           std::size_t* pnEnd) {
  sqlite3_stmt* pStatement = nullptr;
  const char* szEnd = nullptr;
  if (sqlite3_prepare_v2(pHandle.get(), strSql.c_str() + nFrom, -1, &pStatement, &szEnd) ==
      SQLITE_OK) {
    const auto nUsed = static_cast<std::size_t>(szEnd - strSql.c_str());
    *pnEnd = *szEnd == '\0' ? strSql.size() : nUsed;
    return Statement(pStatement);
  }
  const int nOffset = sqlite3_error_offset(pHandle.get());
  if (nOffset < 0) {
    Fail();
  }
  TextPosition position;
  position.Advance(strSql.substr(0, nFrom + static_cast<std::size_t>(nOffset)));
  throw InputError(Complaint("SQL text", position, sqlite3_errmsg(pHandle.get())));
}

void Database::Execute(const std::string& strSql) {
  if (sqlite3_exec(pHandle.get(), strSql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    Fail();
  }
}

bool Database::Step(sqlite3_stmt& statement) {
  const int nResult = sqlite3_step(&statement);
  if (nResult != SQLITE_ROW && nResult != SQLITE_DONE) {
    Fail();
  }
  return nResult == SQLITE_ROW;
}

void Database::Fail() const { throw InputError(strName + ": " + sqlite3_errmsg(pHandle.get())); }

// ---- Reading ------------------------------------------------------------------------------------

namespace {

bool IsDeclaredBoolean(const char* szType) {
  return szType &&
         (sqlite3_stricmp(szType, "BOOLEAN") == 0 || sqlite3_stricmp(szType, "BOOL") == 0);
}

std::string ShortestText(double fValue) {
  char szText[32];  // 24 are needed: -2.2250738585072014e-308
  const auto result = std::to_chars(szText, szText + sizeof szText, fValue);
  return {szText, result.ptr};
}

bool FitsLong(sqlite3_int64 nValue, LongSize eSize) {
  if (eSize == LongSize::Bits32) {
    return nValue >= std::numeric_limits<std::int32_t>::min() &&
           nValue <= std::numeric_limits<std::int32_t>::max();
  }
  return nValue >= std::numeric_limits<long>::min() && nValue <= std::numeric_limits<long>::max();
}

}  // namespace

SqlSource::SqlSource(const std::string& strPath, const std::string& strSql, LongSize eLong,
                     Progress& progressBar)
    : strName(strPath),
      database(strPath, Database::Mode::Read),
      pStatement(database.Prepare(strSql)),
      eLongSize(eLong),
      progress(progressBar) {
  const int nColumns = sqlite3_column_count(pStatement.get());
  if (nColumns == 0) {
    throw InputError("the SQL statement gives no rows");
  }
  for (int i = 0; i < nColumns; ++i) {
    vColumns.emplace_back(sqlite3_column_name(pStatement.get(), i));
    vBoolean.push_back(IsDeclaredBoolean(sqlite3_column_decltype(pStatement.get(), i)));
  }
  if (const auto strReason = RepeatedColumn(vColumns)) {
    throw InputError(*strReason + "; name it with AS");
  }
}

bool SqlSource::Next(Row& row) {
  if (!database.Step(*pStatement)) {
    return false;
  }
  ++nRow;
  progress.Add(1);
  row.clear();
  vTexts.clear();
  for (int i = 0; i < sqlite3_column_count(pStatement.get()); ++i) {
    row.push_back(MakeCell(i));
  }
  return true;
}

Cell SqlSource::MakeCell(int nColumn) {
  Cell cell{vColumns[static_cast<std::size_t>(nColumn)], CQXRecordSet::QX_TEXT, ""};
  switch (sqlite3_column_type(pStatement.get(), nColumn)) {
    case SQLITE_NULL:
      cell.eType = CQXRecordSet::QX_NULL;
      return cell;
    case SQLITE_INTEGER:
      return MakeIntegerCell(nColumn, cell);
    case SQLITE_FLOAT:
      vTexts.push_back(ShortestText(sqlite3_column_double(pStatement.get(), nColumn)));
      cell.strText = vTexts.back();
      return cell;
    case SQLITE_BLOB:
      Refuse(nColumn, "a blob is no text; select hex() of it");
    default:
      break;
  }
  const unsigned char* pText = sqlite3_column_text(pStatement.get(), nColumn);
  if (!pText) {
    throw std::bad_alloc();
  }
  const int nBytes = sqlite3_column_bytes(pStatement.get(), nColumn);
  cell.strText = {reinterpret_cast<const char*>(pText), static_cast<std::size_t>(nBytes)};
  if (cell.strText.find('\0') != std::string_view::npos) {
    Refuse(nColumn, "a NUL byte, which a text of a record set cannot hold");
  }
  return cell;
}

Cell SqlSource::MakeIntegerCell(int nColumn, Cell cell) {
  const sqlite3_int64 nValue = sqlite3_column_int64(pStatement.get(), nColumn);
  vTexts.push_back(std::to_string(nValue));
  cell.strText = vTexts.back();
  if (vBoolean[static_cast<std::size_t>(nColumn)] && (nValue == 0 || nValue == 1)) {
    cell.eType = CQXRecordSet::QX_BOOL;
  } else if (FitsLong(nValue, eLongSize)) {
    cell.eType = CQXRecordSet::QX_LONG;
  }
  return cell;
}

void SqlSource::Refuse(int nColumn, const std::string& strReason) const {
  throw InputError(strName + ": row " + std::to_string(nRow) + ", column '" +
                   vColumns[static_cast<std::size_t>(nColumn)] + "': " + strReason);
}

// ---- Writing ------------------------------------------------------------------------------------

namespace {

// An identifier in double quotes.
std::string Quoted(const std::string& strName) {
  std::string strResult = "\"";
  for (const char c : strName) {
    strResult.append(c == '"' ? 2 : 1, c);
  }
  return strResult + '"';
}

// The number of an integer cell; nothing when SQLite's 64 bits do not hold it.
std::optional<sqlite3_int64> Number(const Cell& cell) {
  sqlite3_int64 nValue = 0;
  const char* const pEnd = cell.strText.data() + cell.strText.size();
  const auto result = std::from_chars(cell.strText.data(), pEnd, nValue);
  return result.ec == std::errc() && result.ptr == pEnd ? std::optional(nValue) : std::nullopt;
}

std::string_view DeclaredType(const Cell& cell) {
  if (cell.eType == CQXRecordSet::QX_BOOL) {
    return "BOOLEAN";
  }
  return cell.eType == CQXRecordSet::QX_LONG && Number(cell) ? "INTEGER" : "TEXT";
}

// For each column the type that suits all of its cells.
std::vector<std::string_view> DeclaredTypes(GatheredRows& rows, const ColumnIndex& columns) {
  std::vector<std::string_view> vTypes(columns.Names().size());
  rows.Rewind();
  for (Row row; rows.Next(row);) {
    for (const Cell& cell : row) {
      if (cell.eType != CQXRecordSet::QX_NULL) {
        std::string_view& strType = vTypes[columns.Find(cell.strColumn, 0)];
        const std::string_view strSeen = DeclaredType(cell);
        strType = strType.empty() || strType == strSeen ? strSeen : "TEXT";
      }
    }
  }
  std::replace(vTypes.begin(), vTypes.end(), std::string_view(), std::string_view("TEXT"));
  return vTypes;
}

std::string CreateStatement(const std::string& strTable, GatheredRows& rows,
                            const ColumnIndex& columns) {
  const std::vector<std::string_view> vTypes = DeclaredTypes(rows, columns);
  std::string strSql;
  for (std::size_t i = 0; i < vTypes.size(); ++i) {
    strSql += (i == 0 ? "" : ", ") + Quoted(columns.Names()[i]) + " " + std::string(vTypes[i]);
  }
  return "CREATE TABLE " + Quoted(strTable) + " (" + strSql + ")";
}

std::string InsertStatement(const std::string& strTable, const ColumnIndex& columns) {
  std::string strNames;
  std::string strMarks;
  for (const std::string& strName : columns.Names()) {
    strNames += (strNames.empty() ? "" : ", ") + Quoted(strName);
    strMarks += strMarks.empty() ? "?" : ", ?";
  }
  return "INSERT INTO " + Quoted(strTable) + " (" + strNames + ") VALUES (" + strMarks + ")";
}

void Bind(sqlite3_stmt& statement, std::size_t nColumn, const Cell& cell) {
  const int nParameter = static_cast<int>(nColumn) + 1;
  const auto nNumber = Number(cell);
  const bool bNumber = cell.eType == CQXRecordSet::QX_LONG || cell.eType == CQXRecordSet::QX_BOOL;
  if (cell.eType == CQXRecordSet::QX_NULL) {
    sqlite3_bind_null(&statement, nParameter);
  } else if (bNumber && nNumber) {
    sqlite3_bind_int64(&statement, nParameter, *nNumber);
  } else if (sqlite3_bind_text64(&statement, nParameter, cell.strText.data(), cell.strText.size(),
                                 SQLITE_STATIC, SQLITE_UTF8) != SQLITE_OK) {
    throw InputError("a text is too long for SQLite");
  }
}

void Insert(Database& database, const std::string& strTable, GatheredRows& rows,
            const ColumnIndex& columns) {
  const auto pInsert = database.Prepare(InsertStatement(strTable, columns));
  rows.Rewind();
  for (Row row; rows.Next(row);) {
    for (const Cell& cell : row) {
      Bind(*pInsert, columns.Find(cell.strColumn, 0), cell);
    }
    database.Step(*pInsert);
    sqlite3_reset(pInsert.get());
    sqlite3_clear_bindings(pInsert.get());
  }
}

}  // namespace

void WriteSqlTable(const SqlTarget& target, GatheredRows& rows) {
  const ColumnIndex columns(*rows.Columns());
  if (columns.Names().empty()) {
    throw InputError("there are no columns to make a table of");
  }
  Database database(target.strPath, Database::Mode::Write);
  // A failure below closes the database, and that undoes what was begun.
  database.Execute("BEGIN IMMEDIATE");
  if (target.eExisting == SqlTarget::Existing::Replace) {
    database.Execute("DROP TABLE IF EXISTS " + Quoted(target.strTable));
  }
  if (target.eExisting != SqlTarget::Existing::Append) {
    database.Execute(CreateStatement(target.strTable, rows, columns));
  }
  Insert(database, target.strTable, rows, columns);
  database.Execute("COMMIT");
}

}  // namespace qxrs

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// SQLite databases.

#include "tools/qxrs/rows/Sqlite.h"
#include "tools/qxrs/support/Errors.h"
#include "tools/qxrs/support/TextPosition.h"

namespace qxrs {

namespace {

constexpr int kPatience = 5000;  // milliseconds to wait for another process's lock

int OpenFlags(Database::Mode eMode) {
  return eMode == Database::Mode::Read ? SQLITE_OPEN_READONLY
                                       : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
}

}  // namespace

std::string QuotedName(const std::string& strName) {
  std::string strResult = "\"";
  for (const char c : strName) {
    strResult.append(c == '"' ? 2 : 1, c);
  }
  return strResult + '"';
}

Database::Database(const std::string& strPath, Mode eMode, const std::string& strFile)
    : strName(eMode == Mode::Scratch ? "SQL" : strPath) {
  sqlite3* pOpened = nullptr;
  const std::string& strOpened = strFile.empty() ? strPath : strFile;
  const int nResult = sqlite3_open_v2(eMode == Mode::Scratch ? "" : strOpened.c_str(), &pOpened,
                                      OpenFlags(eMode), nullptr);
  pHandle.reset(pOpened);
  if (nResult != SQLITE_OK) {
    throw InputError("cannot open " + strName + ": " + sqlite3_errstr(nResult));
  }
  sqlite3_busy_timeout(pOpened, kPatience);
  // SQLite looks into the file only when it has to; a file that is no database is refused here.
  Execute("PRAGMA schema_version");
  // What is lost with the process needs no protection from a crash.
  if (eMode == Mode::Scratch) Execute("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF");
}

Database::Statement Database::Prepare(const std::string& strSql) {
  std::size_t nEnd = 0;
  Statement pStatement = PrepareFirst(strSql, 0, &nEnd);
  if (!pStatement) throw InputError("the SQL text holds no statement");
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
  if (nOffset < 0) Fail();
  TextPosition position;
  position.Advance(strSql.substr(0, nFrom + static_cast<std::size_t>(nOffset)));
  throw InputError(Complaint("SQL text", position, sqlite3_errmsg(pHandle.get())));
}

void Database::Execute(const std::string& strSql) {
  if (sqlite3_exec(pHandle.get(), strSql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) Fail();
}

bool Database::Step(sqlite3_stmt& statement) {
  const int nResult = sqlite3_step(&statement);
  if (nResult != SQLITE_ROW && nResult != SQLITE_DONE) Fail();
  return nResult == SQLITE_ROW;
}

std::vector<std::string> Database::Names(const std::string& strSql) {
  const Statement pStatement = Prepare(strSql);
  std::vector<std::string> vNames;
  while (Step(*pStatement)) {
    vNames.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(pStatement.get(), 0)));
  }
  return vNames;
}

void Database::Describe(const char* szTable, const char* szName, Column& column) {
  const Statement pStatement = Prepare(
      "SELECT type, \"notnull\", pk FROM pragma_table_info(?) WHERE name = ? COLLATE NOCASE");
  sqlite3_bind_text(pStatement.get(), 1, szTable, -1, SQLITE_STATIC);
  sqlite3_bind_text(pStatement.get(), 2, szName, -1, SQLITE_STATIC);
  if (Step(*pStatement)) {
    column.strType = reinterpret_cast<const char*>(sqlite3_column_text(pStatement.get(), 0));
    column.bNotNull = sqlite3_column_int(pStatement.get(), 1) != 0;
    column.nKey = sqlite3_column_int(pStatement.get(), 2);
  }
}

void Database::Fail() const { throw InputError(strName + ": " + sqlite3_errmsg(pHandle.get())); }

}  // namespace qxrs

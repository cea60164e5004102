// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Writing rows into a table.

#include <unistd.h>

#include <algorithm>
#include <new>
#include <utility>

#include "tools/qxrs/rows/Sqlite.h"
#include "tools/qxrs/rows/Values.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

constexpr const char* kRounded = "a number has more digits than the table's reals keep";
constexpr const char* kHalfPair = "half a pair of surrogates, which is no character, became U+FFFD";

bool Exists(const std::string& strPath) { return access(strPath.c_str(), F_OK) == 0; }

std::string TypeOf(const Column& column) {
  if (!column.strType.empty()) return column.strType;
  switch (column.eKind.value_or(Kind::Text)) {
    case Kind::Integer:
      return "INTEGER";
    case Kind::Real:
      return "REAL";
    case Kind::Boolean:
      return "BOOLEAN";
    default:
      return "TEXT";
  }
}

// What a column of that type makes of its values.
SqlSink::Hold HoldOf(const std::string& strType) {
  if (sqlite3_strlike("%BOOL%", strType.c_str(), 0) == 0) return SqlSink::Hold::Booleans;
  for (const char* szPart : {"%CHAR%", "%CLOB%", "%TEXT%"}) {
    if (sqlite3_strlike(szPart, strType.c_str(), 0) == 0) return SqlSink::Hold::Texts;
  }
  return SqlSink::Hold::Values;
}

// The columns of the primary key, in its order.
std::vector<std::string> KeyOf(const Columns& columns) {
  std::vector<const Column*> vParts;
  for (const Column& column : columns) {
    if (column.nKey != 0) vParts.push_back(&column);
  }
  std::sort(vParts.begin(), vParts.end(),
            [](const Column* p, const Column* q) { return p->nKey < q->nKey; });
  std::vector<std::string> vNames(vParts.size());
  std::transform(vParts.begin(), vParts.end(), vNames.begin(),
                 [](const Column* p) { return p->strName; });
  return vNames;
}

std::string NameList(const std::vector<std::string>& vNames) {
  std::string strList;
  for (const std::string& strName : vNames) {
    strList += (strList.empty() ? "" : ", ") + QuotedName(strName);
  }
  return strList;
}

}  // namespace

std::string ColumnDefinitions(const Columns& columns, const std::vector<std::string>& vWantedKey) {
  std::string strSql;
  for (const Column& column : columns) {
    strSql += (strSql.empty() ? "" : ", ") + QuotedName(column.strName) + " " + TypeOf(column) +
              (column.bNotNull ? " NOT NULL" : "");
  }
  const std::vector<std::string> vKey = vWantedKey.empty() ? KeyOf(columns) : vWantedKey;
  return strSql + (vKey.empty() ? "" : ", PRIMARY KEY (" + NameList(vKey) + ")");
}

std::string InsertStatement(const std::string& strTable, const Columns& columns) {
  std::vector<std::string> vNames;
  std::string strMarks;
  for (const Column& column : columns) {
    vNames.push_back(column.strName);
    strMarks += strMarks.empty() ? "?" : ", ?";
  }
  return "INSERT INTO " + QuotedName(strTable) + " (" + NameList(vNames) + ") VALUES (" + strMarks +
         ")";
}

SqlSink::SqlSink(SqlTarget tableToWrite, Warnings& lossesSeen)
    : target(std::move(tableToWrite)), warnings(lossesSeen) {
  if (Exists(target.strPath)) {
    pDatabase = std::make_shared<Database>(target.strPath, Database::Mode::Write);
    return;
  }
  if (target.eExisting == SqlTarget::Existing::Append) {
    throw InputError("cannot open " + target.strPath + ": there is no such file to append to");
  }
  file.emplace(target.strPath);
  pDatabase = std::make_shared<Database>(target.strPath, Database::Mode::Write, file->Path());
  // Nobody sees the file before it is complete: what protects it from a crash is of no use.
  pDatabase->Execute("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF");
}

SqlSink::SqlSink(std::shared_ptr<Database> pOpened, SqlTarget tableToWrite, Warnings& lossesSeen)
    : target(std::move(tableToWrite)), warnings(lossesSeen), pDatabase(std::move(pOpened)) {}

RowSink::Needs SqlSink::GetNeeds() const {
  return target.eExisting == SqlTarget::Existing::Append ? Needs::Columns : Needs::Kinds;
}

void SqlSink::Begin(const Columns& columns, bool bAllColumns) {
  pColumns = &columns;
  bAllKnown = bAllColumns;
  nColumns = columns.Count();
  if (nColumns == 0) throw InputError("there are no columns to make a table of");
  // A failure from here on closes the database, and that undoes what was begun.
  pDatabase->Execute("BEGIN IMMEDIATE");
  if (target.eExisting == SqlTarget::Existing::Replace) {
    pDatabase->Execute("DROP TABLE IF EXISTS " + QuotedName(target.strTable));
  }
  if (target.eExisting != SqlTarget::Existing::Append) {
    pDatabase->Execute("CREATE TABLE " + QuotedName(target.strTable) + " (" +
                       ColumnDefinitions(columns, target.vKey) + ")");
  }
  pInsert = pDatabase->Prepare(InsertStatement(target.strTable, columns));
  for (const Column& column : columns) {
    Column declared;
    pDatabase->Describe(target.strTable.c_str(), column.strName.c_str(), declared);
    vHold.push_back(HoldOf(declared.strType));
  }
}

void SqlSink::Write(const Row& row) {
  ++nRow;
  vTexts.clear();
  if (row.size() != nColumns || !bAllKnown) sqlite3_clear_bindings(pInsert.get());
  for (const Cell& cell : row) {
    if (cell.nColumn < nColumns) {
      Bind(cell);
    } else {
      warnings.Add("a column that the first row does not have was left out", nRow,
                   (*pColumns)[cell.nColumn].strName);
    }
  }
  pDatabase->Step(*pInsert);
  sqlite3_reset(pInsert.get());
}

void SqlSink::Bind(const Cell& cell) {
  const int nParameter = static_cast<int>(cell.nColumn) + 1;
  const Hold eHold = vHold[cell.nColumn];
  const bool bWord = cell.strText == "true" || cell.strText == "false";
  if ((cell.eKind == Kind::Boolean && eHold != Hold::Texts) ||
      (cell.eKind == Kind::Text && bWord && eHold == Hold::Booleans)) {
    sqlite3_bind_int(pInsert.get(), nParameter, cell.strText == "true" ? 1 : 0);
    return;
  }
  switch (cell.eKind) {
    case Kind::Null:
      sqlite3_bind_null(pInsert.get(), nParameter);
      return;
    case Kind::Integer:
    case Kind::Real:
      BindNumber(cell, nParameter);
      return;
    default:
      BindText(cell, nParameter);
  }
}

// A number that the table's own numbers do not hold is stored as text, where the column is one of
// texts; elsewhere SQLite makes the nearest number of it.
void SqlSink::BindNumber(const Cell& cell, int nParameter) {
  const bool bTexts = vHold[cell.nColumn] == Hold::Texts;
  if (cell.eKind == Kind::Integer) {
    if (const auto nValue = ToInt64(cell.strText)) {
      sqlite3_bind_int64(pInsert.get(), nParameter, *nValue);
      return;
    }
  } else if (!bTexts) {
    if (!FitsDouble(cell.strText)) warnings.Add(kRounded, nRow, (*pColumns)[cell.nColumn].strName);
    sqlite3_bind_double(pInsert.get(), nParameter, ToDouble(cell.strText));
    return;
  }
  if (!bTexts) warnings.Add(kRounded, nRow, (*pColumns)[cell.nColumn].strName);
  BindText(cell, nParameter);
}

void SqlSink::BindText(const Cell& cell, int nParameter) {
  std::string_view strText = cell.strText;
  if (cell.bEscaped) {
    bool bWhole = true;
    strText = ShownText(cell, vTexts.emplace_back(), &bWhole);
    if (!bWhole) warnings.Add(kHalfPair, nRow, (*pColumns)[cell.nColumn].strName);
  }
  // A text without a pointer would be a null.
  const char* const pText = strText.data() ? strText.data() : "";
  if (sqlite3_bind_text64(pInsert.get(), nParameter, pText, strText.size(), SQLITE_STATIC,
                          SQLITE_UTF8) != SQLITE_OK) {
    throw InputError("a text is too long for SQLite");
  }
}

void SqlSink::End() {
  pInsert.reset();
  pDatabase->Execute("COMMIT");
  if (file) {
    pDatabase.reset();
    file->Commit();
  }
}

}  // namespace qxrs

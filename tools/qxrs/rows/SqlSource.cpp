// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading the rows of a query.

#include <algorithm>
#include <charconv>
#include <new>
#include <set>

#include "tools/qxrs/rows/Sqlite.h"
#include "tools/qxrs/rows/Values.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

// The tables that a statement reads, noted while it is prepared.
int NoteTable(void* pTables, int nWhat, const char* szTable, const char*, const char*,
              const char*) {
  if (nWhat == SQLITE_READ && szTable) {
    static_cast<std::set<std::string>*>(pTables)->insert(szTable);
  }
  return SQLITE_OK;
}

bool IsBoolean(const std::string& strType) {
  return sqlite3_stricmp(strType.c_str(), "BOOLEAN") == 0 ||
         sqlite3_stricmp(strType.c_str(), "BOOL") == 0;
}

}  // namespace

SqlSource::SqlSource(std::shared_ptr<Database> pOpened, const std::string& strPath,
                     const std::string& strSql, Progress& progressBar)
    : strName(strPath), pDatabase(std::move(pOpened)), progress(progressBar) {
  std::set<std::string> setTables;
  sqlite3_set_authorizer(pDatabase->Handle(), NoteTable, &setTables);
  pStatement = pDatabase->Prepare(strSql);
  sqlite3_set_authorizer(pDatabase->Handle(), nullptr, nullptr);
  TakeColumns();
  if (setTables.size() != 1 || !HasWholeKey(*setTables.begin())) {
    for (std::size_t i = 0; i < columns.Count(); ++i) {
      columns[i].nKey = 0;
      columns[i].bNotNull = columns[i].bNotNull && setTables.size() == 1;
    }
  }
  vTexts.resize(columns.Count());
}

// The rows of a table have its keys; those of a join may repeat them, and have nulls.
bool SqlSource::HasWholeKey(const std::string& strTable) const {
  const auto pCount = pDatabase->Prepare("SELECT sum(pk > 0) FROM pragma_table_info(?)");
  sqlite3_bind_text(pCount.get(), 1, strTable.c_str(), -1, SQLITE_STATIC);
  pDatabase->Step(*pCount);
  return sqlite3_column_int(pCount.get(), 0) ==
         std::count_if(columns.begin(), columns.end(),
                       [](const Column& column) { return column.nKey != 0; });
}

void SqlSource::TakeColumns() {
  sqlite3_stmt* const p = pStatement.get();
  const int nColumns = sqlite3_column_count(p);
  if (nColumns == 0) throw InputError("the SQL statement gives no rows");
  for (int i = 0; i < nColumns; ++i) {
    Column column;
    column.strName = sqlite3_column_name(p, i);
    const char* const szTable = sqlite3_column_table_name(p, i);
    if (szTable) pDatabase->Describe(szTable, sqlite3_column_origin_name(p, i), column);
    vBoolean.push_back(IsBoolean(column.strType));
    const std::string strColumn = column.strName;
    if (!columns.Add(std::move(column))) {
      throw InputError("the column name '" + strColumn +
                       "' occurs more than once; name it with AS");
    }
  }
}

bool SqlSource::Next(Row& row) {
  if (!pDatabase->Step(*pStatement)) return false;
  ++nRow;
  progress.Add(1);
  row.resize(columns.Count());
  for (std::size_t i = 0; i < row.size(); ++i) {
    row[i].nColumn = static_cast<std::uint32_t>(i);
    FillCell(static_cast<int>(i), row[i]);
  }
  return true;
}

void SqlSource::FillCell(int nColumn, Cell& cell) {
  sqlite3_stmt* const p = pStatement.get();
  cell.eKind = Kind::Text;
  switch (sqlite3_column_type(p, nColumn)) {
    case SQLITE_NULL:
      cell.eKind = Kind::Null;
      cell.strText = {};
      return;
    case SQLITE_INTEGER: {
      const sqlite3_int64 nValue = sqlite3_column_int64(p, nColumn);
      if (vBoolean[cell.nColumn] && (nValue == 0 || nValue == 1)) {
        cell.eKind = Kind::Boolean;
        cell.strText = nValue == 1 ? "true" : "false";
        return;
      }
      char szText[24];  // 20 are needed
      cell.eKind = Kind::Integer;
      vTexts[cell.nColumn].assign(szText,
                                  std::to_chars(szText, szText + sizeof szText, nValue).ptr);
      cell.strText = vTexts[cell.nColumn];
      return;
    }
    case SQLITE_FLOAT:
      cell.eKind = Kind::Real;
      cell.strText = vTexts[cell.nColumn] = RealText(sqlite3_column_double(p, nColumn));
      return;
    case SQLITE_BLOB:
      throw InputError(strName + ": row " + std::to_string(nRow) + ", column '" +
                       columns[cell.nColumn].strName + "': a blob is no text; select hex() of it");
    default:
      break;
  }
  const unsigned char* const pText = sqlite3_column_text(p, nColumn);
  if (!pText) throw std::bad_alloc();
  cell.strText = {reinterpret_cast<const char*>(pText),
                  static_cast<std::size_t>(sqlite3_column_bytes(p, nColumn))};
}

}  // namespace qxrs

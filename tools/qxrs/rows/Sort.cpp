// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Sorting by SQLite.

#include "tools/qxrs/rows/Sort.h"

#include <algorithm>

#include "tools/qxrs/rows/Spool.h"
#include "tools/qxrs/rows/Values.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

void BindValue(sqlite3_stmt& statement, int nParameter, const Cell* pCell, std::string& strBuffer) {
  if (!pCell || pCell->eKind == Kind::Null) {
    sqlite3_bind_null(&statement, nParameter);
    return;
  }
  switch (pCell->eKind) {
    case Kind::Boolean:
      sqlite3_bind_int(&statement, nParameter, pCell->strText == "true" ? 1 : 0);
      return;
    case Kind::Integer:
      if (const auto nValue = ToInt64(pCell->strText)) {
        sqlite3_bind_int64(&statement, nParameter, *nValue);
        return;
      }
      [[fallthrough]];
    case Kind::Real:
      sqlite3_bind_double(&statement, nParameter, ToDouble(pCell->strText));
      return;
    default: {
      const std::string_view strText = ShownText(*pCell, strBuffer);
      const char* const pText = strText.data() ? strText.data() : "";
      sqlite3_bind_text64(&statement, nParameter, pText, strText.size(), SQLITE_STATIC,
                          SQLITE_UTF8);
    }
  }
}

SortedRows::SortedRows(RowSource& source, const std::vector<std::string>& vKeys, bool bDescending)
    : database("", Database::Mode::Scratch) {
  std::string strKeys;
  std::string strMarks;
  std::string strOrder;
  for (std::size_t i = 0; i < vKeys.size(); ++i) {
    const std::string strKey = "k" + std::to_string(i);
    strKeys += strKey + ", ";
    strMarks += "?, ";
    strOrder += strKey + (bDescending ? " DESC, " : ", ");
  }
  // What is lost with the process needs no protection from a crash.
  database.Execute("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; CREATE TABLE r (" +
                   strKeys + "packed BLOB); BEGIN");
  const auto pInsert = database.Prepare("INSERT INTO r VALUES (" + strMarks + "?)");
  const int nPacked = static_cast<int>(vKeys.size()) + 1;
  std::vector<std::string> vBuffers(vKeys.size());
  std::string strPacked;
  for (Row row; source.Next(row);) {
    for (std::size_t i = 0; i < vKeys.size(); ++i) {
      const std::size_t nColumn = source.GetColumns().Find(vKeys[i]);
      const auto it = std::find_if(row.begin(), row.end(),
                                   [&](const Cell& cell) { return cell.nColumn == nColumn; });
      BindValue(*pInsert, static_cast<int>(i) + 1, it == row.end() ? nullptr : &*it, vBuffers[i]);
    }
    strPacked.clear();
    PackRow(row, strPacked);
    sqlite3_bind_blob64(pInsert.get(), nPacked, strPacked.data(), strPacked.size(), SQLITE_STATIC);
    database.Step(*pInsert);
    sqlite3_reset(pInsert.get());
  }
  database.Execute("COMMIT");
  columns = source.GetColumns();
  for (const std::string& strKey : vKeys) {
    if (columns.Find(strKey) == Columns::kNone) {
      throw UsageError("there is no column '" + strKey + "'");
    }
  }
  pSelect = database.Prepare("SELECT packed FROM r ORDER BY " + strOrder + "rowid");
}

bool SortedRows::Next(Row& row) {
  if (!database.Step(*pSelect)) return false;
  const std::string_view strPacked(
      static_cast<const char*>(sqlite3_column_blob(pSelect.get(), 0)),
      static_cast<std::size_t>(sqlite3_column_bytes(pSelect.get(), 0)));
  UnpackRow(strPacked.substr(sizeof(std::uint32_t)), row);
  return true;
}

}  // namespace qxrs

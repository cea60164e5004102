// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Sorting and finding by SQLite.

#include "tools/qxrs/rows/Sort.h"

#include <algorithm>

#include "tools/qxrs/rows/Spool.h"
#include "tools/qxrs/rows/Values.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

// Makes the value of a cell a parameter. A number that SQLite does not hold is the nearest that it
// does.
void BindValue(sqlite3_stmt& statement, int nParameter, const Cell& cell, std::string& strBuffer) {
  const auto nValue = cell.eKind == Kind::Integer ? ToInt64(cell.strText) : std::nullopt;
  if (cell.eKind == Kind::Null) {
    sqlite3_bind_null(&statement, nParameter);
  } else if (cell.eKind == Kind::Boolean) {
    sqlite3_bind_int(&statement, nParameter, cell.strText == "true" ? 1 : 0);
  } else if (nValue) {
    sqlite3_bind_int64(&statement, nParameter, *nValue);
  } else if (cell.eKind == Kind::Real || cell.eKind == Kind::Integer) {
    sqlite3_bind_double(&statement, nParameter, ToDouble(cell.strText));
  } else {
    strBuffer = ShownText(cell, strBuffer);
    sqlite3_bind_text64(&statement, nParameter, strBuffer.data(), strBuffer.size(), SQLITE_STATIC,
                        SQLITE_UTF8);
  }
}

// The row of a column that holds one, packed.
void Unpack(sqlite3_stmt& statement, Row& row) {
  const auto* const pPacked = static_cast<const char*>(sqlite3_column_blob(&statement, 0));
  const auto nSize = static_cast<std::size_t>(sqlite3_column_bytes(&statement, 0));
  UnpackRow({pPacked + sizeof(std::uint32_t), nSize - sizeof(std::uint32_t)}, row);
}

}  // namespace

SortedRows::SortedRows(RowSource& source, const std::vector<std::string>& vKey, Order eOrder)
    : vKeys(vKey), vBuffers(vKey.size()), database("", Database::Mode::Scratch) {
  std::string strNames;
  std::string strMarks;
  std::string strOrder;
  std::string strEqual;
  for (std::size_t i = 0; i < vKeys.size(); ++i) {
    const std::string strName = "k" + std::to_string(i);
    strNames += strName + ", ";
    strMarks += "?, ";
    strOrder += strName + (eOrder == Order::Descending ? " DESC, " : ", ");
    strEqual += (i == 0 ? "" : " AND ") + strName + " IS ?";
  }
  database.Execute("CREATE TABLE r (" + strNames + "packed BLOB); BEGIN");
  const auto pInsert = database.Prepare("INSERT INTO r VALUES (" + strMarks + "?)");
  std::string strPacked;
  for (Row row; source.Next(row);) {
    BindKey(*pInsert, row, source.GetColumns());
    strPacked.clear();
    PackRow(row, strPacked);
    sqlite3_bind_blob64(pInsert.get(), static_cast<int>(vKeys.size()) + 1, strPacked.data(),
                        strPacked.size(), SQLITE_STATIC);
    database.Step(*pInsert);
    sqlite3_reset(pInsert.get());
  }
  columns = source.GetColumns();
  for (const std::string& strKey : vKeys) {
    if (columns.Find(strKey) == Columns::kNone) {
      throw UsageError("there is no column '" + strKey + "'");
    }
  }
  if (eOrder == Order::AsTheyCame) {
    strOrder.clear();
    database.Execute("CREATE INDEX i ON r (" + strNames.substr(0, strNames.size() - 2) + ")");
    pTake = database.Prepare("DELETE FROM r WHERE rowid = (SELECT min(rowid) FROM r WHERE " +
                             strEqual + ") RETURNING packed");
  }
  pSelect = database.Prepare("SELECT packed FROM r ORDER BY " + strOrder + "rowid");
}

void SortedRows::BindKey(sqlite3_stmt& statement, const Row& row, const Columns& columnsOfRow) {
  for (std::size_t i = 0; i < vKeys.size(); ++i) {
    const std::size_t nColumn = columnsOfRow.Find(vKeys[i]);
    const auto it = std::find_if(row.begin(), row.end(),
                                 [&](const Cell& cell) { return cell.nColumn == nColumn; });
    BindValue(statement, static_cast<int>(i) + 1, it == row.end() ? Cell() : *it, vBuffers[i]);
  }
}

bool SortedRows::Next(Row& row) {
  if (!database.Step(*pSelect)) return false;
  Unpack(*pSelect, row);
  return true;
}

bool SortedRows::Take(const Row& row, const Columns& columnsOfRow, Row& rowFound) {
  sqlite3_reset(pTake.get());
  BindKey(*pTake, row, columnsOfRow);
  if (!database.Step(*pTake)) return false;
  Unpack(*pTake, rowFound);
  return true;
}

}  // namespace qxrs

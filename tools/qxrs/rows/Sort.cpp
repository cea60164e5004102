// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Sorting and finding by SQLite.

#include "tools/qxrs/rows/Sort.h"

#include "tools/qxrs/rows/Spool.h"
#include "tools/qxrs/rows/Values.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

// A number that SQLite does not hold is the nearest that it does.
void SetValue(const Cell& cell, std::string& strBuffer, Value& value) {
  const auto nValue = cell.eKind == Kind::Integer ? ToInt64(cell.strText) : std::nullopt;
  value.eKind = cell.eKind;
  if (cell.eKind == Kind::Boolean || nValue) {
    value.eKind = Kind::Integer;
    value.nInteger = nValue.value_or(cell.strText == "true" ? 1 : 0);
  } else if (cell.eKind == Kind::Real || cell.eKind == Kind::Integer) {
    value.eKind = Kind::Real;
    value.fReal = ToDouble(cell.strText);
  } else {
    value.strText = strBuffer = ShownText(cell, strBuffer);
  }
}

}  // namespace

SortedRows::SortedRows(RowSource& source, const std::vector<std::string>& vKey, Order eOrder)
    : vKeys(vKey), vBuffers(vKey.size()), pDatabase(OpenDatabase("", DatabaseMode::Scratch)) {
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
  pDatabase->Execute("CREATE TABLE r (" + strNames + "packed TEXT); BEGIN");
  const auto pInsert = pDatabase->Prepare("INSERT INTO r VALUES (" + strMarks + "?)");
  std::string strPacked;
  for (Row row; source.Next(row);) {
    SetKey(row, source.GetColumns());
    strPacked.clear();
    PackRow(row, strPacked);
    Value& packed = vValues.emplace_back();
    packed.eKind = Kind::Text;
    packed.strText = strPacked;
    pInsert->Run(vValues);
  }
  columns = source.GetColumns();
  for (const std::string& strKey : vKeys) {
    if (columns.Find(strKey) == Columns::kNone) {
      throw UsageError("there is no column '" + strKey + "'");
    }
  }
  if (eOrder == Order::AsTheyCame) {
    strOrder.clear();
    pDatabase->Execute("CREATE INDEX i ON r (" + strNames.substr(0, strNames.size() - 2) + ")");
    pTake = pDatabase->Prepare("DELETE FROM r WHERE rowid = (SELECT min(rowid) FROM r WHERE " +
                               strEqual + ") RETURNING packed");
  }
  pSelect = pDatabase->Prepare("SELECT packed FROM r ORDER BY " + strOrder + "rowid");
}

void SortedRows::SetKey(const Row& row, const Columns& columnsOfRow) {
  vValues.assign(vKeys.size(), {});
  for (std::size_t i = 0; i < vKeys.size(); ++i) {
    const Cell* const pCell = Find(row, columnsOfRow.Find(vKeys[i]));
    if (pCell) SetValue(*pCell, vBuffers[i], vValues[i]);
  }
}

bool SortedRows::Unpack(Statement& statement, Row& row) {
  if (!statement.Next(rowPacked)) return false;
  UnpackRow(rowPacked[0].strText, row);
  return true;
}

bool SortedRows::Take(const Row& row, const Columns& columnsOfRow, Row& rowFound) {
  SetKey(row, columnsOfRow);
  pTake->Bind(vValues);
  return Unpack(*pTake, rowFound);
}

}  // namespace qxrs

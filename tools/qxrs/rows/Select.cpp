// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Selecting columns and rows.

#include "tools/qxrs/rows/Select.h"

#include <algorithm>

#include "tools/qxrs/rows/Spool.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

SelectedColumns::SelectedColumns(std::unique_ptr<RowSource> pRows,
                                 const std::vector<std::string>& vNames)
    : pSource(std::move(pRows)), vSeen(vNames.size()) {
  const Columns& all = pSource->GetColumns();
  for (const std::string& strName : vNames) {
    const std::size_t nColumn = all.Find(strName);
    Column column;
    if (nColumn != Columns::kNone) column = all[nColumn];
    column.strName = strName;
    columns.Add(std::move(column));
  }
  Match();
  if (pSource->AllColumnsKnown()) RefuseUnseen();
}

// Takes in the columns that the source has now.
void SelectedColumns::Match() {
  const Columns& all = pSource->GetColumns();
  for (std::size_t i = vPlaces.size(); i < all.Count(); ++i) {
    vPlaces.push_back(columns.Find(all[i].strName));
    if (vPlaces[i] != Columns::kNone) vSeen[vPlaces[i]] = true;
  }
}

void SelectedColumns::RefuseUnseen() const {
  const auto it = std::find(vSeen.begin(), vSeen.end(), false);
  if (it != vSeen.end()) {
    throw InputError("there is no column '" +
                     columns[static_cast<std::size_t>(it - vSeen.begin())].strName + "'");
  }
}

bool SelectedColumns::Next(Row& row) {
  if (!pSource->Next(rowAll)) {
    RefuseUnseen();
    return false;
  }
  Match();
  vCells.assign(columns.Count(), nullptr);
  for (const Cell& cell : rowAll) {
    if (vPlaces[cell.nColumn] != Columns::kNone) vCells[vPlaces[cell.nColumn]] = &cell;
  }
  row.clear();
  for (std::size_t i = 0; i < vCells.size(); ++i) {
    if (vCells[i]) {
      row.push_back(*vCells[i]);
      row.back().nColumn = static_cast<std::uint32_t>(i);
    }
  }
  return true;
}

LastRows::LastRows(RowSource& source, unsigned long long nRows) {
  for (Row row; source.Next(row);) {
    std::string strPacked;
    PackRow(row, strPacked);
    if (vRows.size() < nRows) {
      vRows.push_back(std::move(strPacked));
    } else {
      vRows[nOldest] = std::move(strPacked);
      nOldest = (nOldest + 1) % vRows.size();
    }
  }
  columns = source.GetColumns();
}

bool LastRows::Next(Row& row) {
  if (nGiven == vRows.size()) return false;
  const std::string& strPacked = vRows[(nOldest + nGiven++) % vRows.size()];
  UnpackRow(std::string_view(strPacked).substr(sizeof(std::uint32_t)), row);
  return true;
}

}  // namespace qxrs

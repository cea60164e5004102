// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// CQXRecordSet::Dump(): the table as text for people.

#include <string>

#include "recordset/QXRecordSet.h"
#include "recordset/Table.h"

using recordset::Cell;
using recordset::Column;
using recordset::Row;
using recordset::Table;

std::string CQXRecordSet::Dump() {
  std::string strDump;
  if (lRowsCount <= 0) return strDump;
  Table& table = EnsureTable();
  for (long i = 0; i < lRowsCount; ++i) {
    const long lRow = i + 1;
    strDump.append("Row ").append(std::to_string(lRow)).append("\n");
    const Row* const pRow = table.rows.FindRow(lRow);
    const bool bHasCells = pRow != nullptr && table.rows.HasCells(lRow, *pRow);
    for (const Column* const pColumn : table.ColumnsByName()) {
      strDump.append("\tField (").append(pColumn->Name()).append("):");
      if (bHasCells) {
        const Cell* const pCell = table.rows.FindCell(lRow, *pRow, pColumn->Index());
        strDump.append(" ");
        if (pCell != nullptr) strDump.append(pCell->pText, pCell->Length());
      }
      strDump.append("\n");
    }
  }
  return strDump;
}

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The table as text for people, and wide text through the portability layer.

#include <climits>
#include <cstring>
#include <cwchar>
#include <memory>
#include <string>

#include "portable/CPortable.h"
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

std::wstring CQXRecordSet::UTF8ToWide(const std::string& text) {
  if (text.size() > UINT_MAX) return {};
  const std::unique_ptr<wchar_t[]> pWide(
      CPortable::mbstowcs(text.data(), static_cast<unsigned>(text.size())));
  return pWide != nullptr ? std::wstring(pWide.get()) : std::wstring();
}

std::string CQXRecordSet::WideToUTF8(const std::wstring& text) {
  if (text.size() > UINT_MAX) return {};
  const std::unique_ptr<char[]> pText(
      CPortable::wcstombs(text.data(), static_cast<unsigned>(text.size())));
  return pText != nullptr ? std::string(pText.get()) : std::string();
}

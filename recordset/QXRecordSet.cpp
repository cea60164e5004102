// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// CQXRecordSet: making, copying and clearing, columns, and cells one by one. The contents are kept
// by recordset::Table; here they meet names, nulls and the state of the record set.

#include "recordset/QXRecordSet.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "recordset/Table.h"
#include "text/Digits.h"
#include "text/ReadDecimal.h"

using recordset::Table;

// ---- Making, copying, clearing ------------------------------------------------------------------

CQXRecordSet::CQXRecordSet() = default;

CQXRecordSet::CQXRecordSet(const std::string& text) { SetString(text); }

CQXRecordSet::CQXRecordSet(const char* text) { SetString(text); }

CQXRecordSet::CQXRecordSet(const CQXRecordSet& other)
    : lRowsCount(other.lRowsCount),
      bModified(other.bModified),
      params(other.params),
      strText(other.strText),
      pTable(CopyOf(other.pTable.get())) {}

CQXRecordSet::CQXRecordSet(CQXRecordSet&& other) noexcept
    : lRowsCount(std::exchange(other.lRowsCount, 0)),
      bModified(std::exchange(other.bModified, false)),
      params(std::move(other.params)),
      strText(std::move(other.strText)),
      pTable(std::move(other.pTable)) {
  other.params.clear();
  other.strText.clear();
}

CQXRecordSet::~CQXRecordSet() { Table::Recycle(std::move(pTable), strText); }

void CQXRecordSet::operator=(const CQXRecordSet& other) {
  if (this != &other) {
    pTable = CopyOf(other.pTable.get());
    lRowsCount = other.lRowsCount;
  }
  AfterAssignment();
}

void CQXRecordSet::operator=(CQXRecordSet&& other) noexcept {
  if (this != &other) {
    lRowsCount = std::exchange(other.lRowsCount, 0);
    pTable = std::move(other.pTable);
    other.bModified = false;
    other.params.clear();
    other.strText.clear();
  }
  AfterAssignment();
}

void CQXRecordSet::AfterAssignment() noexcept {
  bModified = true;
  params.clear();
  strText.clear();
  if (pTable != nullptr) pTable->bTextIsCurrent = false;
}

bool CQXRecordSet::operator=(const char* text) { return SetString(text); }

void CQXRecordSet::Clear() {
  lRowsCount = 0;
  if (pTable != nullptr) pTable->Reset();
  bModified = false;
  params.clear();
  strText.clear();
}

Table& CQXRecordSet::EnsureTable() { return pTable != nullptr ? *pTable : NewTable(); }

Table& CQXRecordSet::NewTable() {
  pTable = Table::Make();
  return *pTable;
}

std::unique_ptr<Table> CQXRecordSet::CopyOf(const Table* pSource) {
  if (pSource == nullptr) return nullptr;
  auto pCopy = Table::Make();
  pCopy->Merge(*pSource);
  return pCopy;
}

// ---- Columns and counts -------------------------------------------------------------------------

long CQXRecordSet::GetColumnIndex(const char* name) {
  const std::uint32_t nColumn = name != nullptr && pTable != nullptr ? pTable->FindColumn(name) : 0;
  return nColumn != 0 ? static_cast<long>(nColumn) : -1;
}

long CQXRecordSet::AddColumn(const char* name) {
  if (name == nullptr) return -1;
  return static_cast<long>(EnsureTable().EnsureColumn(name));
}

const char* CQXRecordSet::GetColumnName(long position) {
  if (position < 0 || position >= GetColumnCount()) return "";
  return pTable->ColumnsByName()[static_cast<unsigned long>(position)]->name.Text();
}

long CQXRecordSet::GetColumnCount() {
  return pTable != nullptr ? static_cast<long>(pTable->columns.Count()) : 0;
}

long CQXRecordSet::GetRowsCount() { return lRowsCount; }

// ---- Writing cells ------------------------------------------------------------------------------

void CQXRecordSet::SetText(const char* name, std::string_view text, long row, QX_TYPE type) {
  if (name == nullptr) return;
  Table& table = EnsureTable();
  table.SetCell(row, table.EnsureColumn(name), text.data(), text.size(), type);
  lRowsCount = std::max(lRowsCount, row);
  bModified = true;
}

void CQXRecordSet::SetValue(const char* name, const char* text, long row, QX_TYPE type) {
  if (text != nullptr) SetText(name, text, row, type);
}

void CQXRecordSet::SetValue(const char* name, const std::string& value, long row) {
  SetText(name, value.c_str(), row, QX_TEXT);
}

void CQXRecordSet::SetValue(const char* name, bool value, long row) {
  SetText(name, value ? "1" : "0", row, QX_BOOL);
}

void CQXRecordSet::SetValue(const char* name, long value, long row) {
  SetText(name, JSON::DecimalText<long>(value).View(), row, QX_LONG);
}

void CQXRecordSet::SetValue(const char* name, int value, long row) {
  SetValue(name, static_cast<long>(value), row);
}

void CQXRecordSet::SetValue(const char* name, CQXRecordSet* value, long row) {
  if (value != nullptr) SetValue(name, value->GetString().c_str(), row, QX_RECORDSET);
}

void CQXRecordSet::SetValue(const char* name, CQXRecordSet& value, long row) {
  SetValue(name, &value, row);
}

// ---- Reading cells ------------------------------------------------------------------------------

// Hosts ask for one cell after the other, usually in the expected order of columns: that case is
// decided first, without a call but the comparison of names.
const char* CQXRecordSet::GetValueAsString(const char* name, long row) {
  if (name == nullptr || pTable == nullptr) return "";
  if (const auto* const pColumn = pTable->asked.Accept(name)) {
    const recordset::Cell* const pCell = pTable->rows.FindInGrid(row, pColumn->Index());
    if (pCell != nullptr && pCell->Exists()) return pCell->pText;
  }
  return FindValue(name, row);
}

// The same for a column that is not the one expected, or a cell that is not where most cells are.
const char* CQXRecordSet::FindValue(const char* name, long row) {
  const recordset::Column* const pColumn = pTable->FindOtherColumn(name);
  return pColumn != nullptr ? pTable->ReadCell(row, pColumn->Index()).pText : "";
}

void CQXRecordSet::GetValueAsStringUTF8(std::string& out, const char* name, long row) {
  out = GetValueAsString(name, row);
}

long CQXRecordSet::GetValueAsLong(const char* name, long row) {
  return JSON::ReadDecimal<long>(GetValueAsString(name, row));
}

bool CQXRecordSet::GetValueAsBool(const char* name, long row) {
  return GetValueAsLong(name, row) != 0;
}

CQXRecordSet CQXRecordSet::GetValueAsRecordSet(const char* name, long row) {
  CQXRecordSet nested;
  nested.SetString(GetValueAsString(name, row));
  return nested;
}

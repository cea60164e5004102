// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Setters for values that are neither `long` nor `int`: integers of any width and sign, and texts
// without a NUL behind them.

#include "recordset/Access.h"
#include "recordset/QXRecordSet.h"
#include "text/Bytes.h"
#include "text/Digits.h"

using recordset::Access;

void CQXRecordSet::SetValue(const char* name, std::string_view value, long row) {
  SetText(name, JSON::UpToNul(value), row, QX_TEXT);
}

void CQXRecordSet::SetValue(const char* name, unsigned value, long row) {
  SetValue(name, static_cast<unsigned long long>(value), row);
}

void CQXRecordSet::SetValue(const char* name, unsigned long value, long row) {
  SetValue(name, static_cast<unsigned long long>(value), row);
}

void CQXRecordSet::SetValue(const char* name, long long value, long row) {
  const Access::Exact digits(value);
  SetText(name, digits.Text(), row, digits.eType);
}

void CQXRecordSet::SetValue(const char* name, unsigned long long value, long row) {
  const Access::Exact digits(value);
  SetText(name, digits.Text(), row, digits.eType);
}

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// CBeforeAfterRecord: fields are the cells of row 1, and every one counts as changed.

#include <string>

#include "recordset/QXRecordSet.h"

static constexpr long kRecordRow = 1;

CBeforeAfterRecord::CBeforeAfterRecord() = default;

CBeforeAfterRecord::~CBeforeAfterRecord() = default;

void CBeforeAfterRecord::operator=(const CQXRecordSet& other) { CQXRecordSet::operator=(other); }

void CBeforeAfterRecord::operator=(const CBeforeAfterRecord& other) {
  CQXRecordSet::operator=(other);
}

// ---- Writing ------------------------------------------------------------------------------------

void CBeforeAfterRecord::SetFieldValues(const char* name, bool /*before*/, bool after) {
  SetValue(name, after, kRecordRow);
}

void CBeforeAfterRecord::SetFieldValues(const char* name, long /*before*/, long after) {
  SetValue(name, after, kRecordRow);
}

void CBeforeAfterRecord::SetFieldValues(const char* name, std::string& /*before*/,
                                        std::string& after) {
  SetValue(name, after, kRecordRow);
}

// ---- Reading ------------------------------------------------------------------------------------

void CBeforeAfterRecord::GetFieldValues(const char* name, std::string& /*before*/,
                                        std::string& after) {
  after = GetValueAsString(name, kRecordRow);
}

void CBeforeAfterRecord::GetFieldValuesUTF8(const char* name, std::string& before,
                                            std::string& after) {
  GetFieldValues(name, before, after);
}

void CBeforeAfterRecord::GetFieldValues(const char* name, long& /*before*/, long& after) {
  after = GetValueAsLong(name, kRecordRow);
}

void CBeforeAfterRecord::GetFieldValues(const char* name, bool& /*before*/, bool& after) {
  after = GetValueAsBool(name, kRecordRow);
}

// ---- Changes ------------------------------------------------------------------------------------

bool CBeforeAfterRecord::IsChanged(const char* /*name*/) { return true; }

bool CBeforeAfterRecord::IsChanged() { return GetColumnCount() != 0; }

int CBeforeAfterRecord::GetChangeCount() { return static_cast<int>(GetColumnCount()); }

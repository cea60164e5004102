// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The options that CSV and TSV share.

#ifndef QXRECORDSET_TOOLS_FIELDOPTIONS_H
#define QXRECORDSET_TOOLS_FIELDOPTIONS_H

#include "tools/qxrs/Command.h"
#include "tools/qxrs/rows/FieldTypes.h"

namespace qxrs {

void AddFieldTypeOptions(CLI::App& command, FieldTypes& types);
void AddNullOption(CLI::App& command, std::string& strNull);
void AddDelimiterOption(CLI::App& command, char& chDelimiter);
void AddColumnsOption(CLI::App& command, std::vector<std::string>& vColumns);

// Throws UsageError when one name is given twice.
void RefuseRepeated(const std::vector<std::string>& vColumns);

// Record set text from `input`: all columns, or those of the option --columns.
std::unique_ptr<RowSource> ReadRecordSet(Input& input, const std::vector<std::string>& vColumns);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_FIELDOPTIONS_H

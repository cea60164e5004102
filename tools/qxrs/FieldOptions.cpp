// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The options that CSV and TSV share.

#include "tools/qxrs/FieldOptions.h"

#include "tools/qxrs/rows/Columns.h"
#include "tools/qxrs/rows/JsonSources.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

void AddFieldTypeOptions(CLI::App& command, FieldTypes& types) {
  command.add_flag("-i,--infer", types.bInfer,
                   "recognise integers, true, false and missing fields (null); otherwise all "
                   "fields are texts");
  command.add_option("--null", types.strNull, "a field that reads TEXT is null")->type_name("TEXT");
  command
      .add_option("--names", types.vColumnNames,
                  "the columns' names, separated by commas; the first line is a row, too")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->type_name("NAMES");
  AddLongSizeOption(command, types.eLong);
}

void AddNullOption(CLI::App& command, std::string& strNull) {
  command.add_option("--null", strNull, "write TEXT for null; the default is nothing")
      ->type_name("TEXT");
}

void AddDelimiterOption(CLI::App& command, char& chDelimiter) {
  command.add_option("-d,--delimiter", chDelimiter, "between two fields")
      ->type_name("CHARACTER")
      ->capture_default_str()
      ->check([](const std::string& strText) {
        const bool bUsable =
            strText.size() == 1 && strText.find_first_of("\"\r\n") == std::string::npos;
        return bUsable ? std::string() : "not one character that can stand between fields";
      });
}

void AddColumnsOption(CLI::App& command, std::vector<std::string>& vColumns) {
  command
      .add_option("-c,--columns", vColumns,
                  "only these columns, in this order; names separated by commas")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->type_name("NAMES");
}

void RefuseRepeated(const std::vector<std::string>& vColumns) {
  if (const auto strReason = RepeatedColumn(vColumns)) {
    throw UsageError(*strReason);
  }
}

std::unique_ptr<RowSource> ReadRecordSet(Input& input, const std::vector<std::string>& vColumns) {
  RefuseRepeated(vColumns);
  auto pSource = std::make_unique<RecordSetSource>(input);
  if (vColumns.empty()) {
    return pSource;
  }
  return SelectColumns(std::move(pSource), vColumns);
}

}  // namespace qxrs

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The options that CSV and TSV share.

#include "tools/qxrs/FieldOptions.h"

#include <string_view>

#include "tools/qxrs/rows/Columns.h"
#include "tools/qxrs/rows/JsonSources.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

constexpr const char* kNamesForm = "separated by commas; one with a comma in it stands in quotes";

// Takes a name off the front of a line of CSV.
std::string TakeName(std::string_view& strLine) {
  if (strLine.empty() || strLine.front() != '"') {
    std::string strName(strLine.substr(0, strLine.find(',')));
    strLine.remove_prefix(strName.size());
    return strName;
  }
  std::string strName;
  for (bool bFirst = true; bFirst || (!strLine.empty() && strLine.front() == '"'); bFirst = false) {
    strName += bFirst ? "" : "\"";
    const std::size_t nQuote = strLine.find('"', 1);
    if (nQuote == std::string_view::npos) {
      throw CLI::ValidationError("a name in quotes has no end");
    }
    strName += strLine.substr(1, nQuote - 1);
    strLine.remove_prefix(nQuote + 1);
  }
  return strName;
}

void AppendNames(std::string_view strLine, std::vector<std::string>& vNames) {
  vNames.push_back(TakeName(strLine));
  while (!strLine.empty()) {
    if (strLine.front() != ',') {
      throw CLI::ValidationError("text behind a name in quotes");
    }
    strLine.remove_prefix(1);
    vNames.push_back(TakeName(strLine));
  }
}

void AddNamesOption(CLI::App& command, const std::string& strOption, const std::string& strWhat,
                    std::vector<std::string>& vNames) {
  command
      .add_option_function<std::vector<std::string>>(
          strOption,
          [&vNames](const std::vector<std::string>& vLines) {
            for (const std::string& strLine : vLines) {
              AppendNames(strLine, vNames);
            }
          },
          strWhat)
      ->allow_extra_args(false)
      ->type_name("NAMES");
}

}  // namespace

void AddFieldTypeOptions(CLI::App& command, FieldTypes& types) {
  command.add_flag("-i,--infer", types.bInfer,
                   "recognise integers, true, false and missing fields (null); otherwise all "
                   "fields are texts");
  command.add_option("--null", types.strNull, "a field that reads TEXT is null")->type_name("TEXT");
  AddNamesOption(
      command, "--names",
      "the columns' names, when the first line is a row, too; " + std::string(kNamesForm),
      types.vColumnNames);
  AddLongSizeOption(command, types.eLong);
}

void AddNullOption(CLI::App& command, std::string& strNull) {
  command.add_option("--null", strNull, "write TEXT for null; the default is nothing")
      ->type_name("TEXT");
}

void AddDelimiterOption(CLI::App& command, char& chDelimiter) {
  command.add_option("-d,--delimiter", chDelimiter, "between two fields; \\t is a tab")
      ->type_name("CHARACTER")
      ->capture_default_str()
      ->transform([](const std::string& strText) { return strText == "\\t" ? "\t" : strText; })
      ->check([](const std::string& strText) {
        const bool bUsable =
            strText.size() == 1 && strText.find_first_of("\"\r\n") == std::string::npos;
        return bUsable ? std::string() : "not one character that can stand between fields";
      });
}

void AddColumnsOption(CLI::App& command, std::vector<std::string>& vColumns) {
  AddNamesOption(command, "-c,--columns",
                 "only these columns, in this order; names are " + std::string(kNamesForm),
                 vColumns);
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

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs convert, and the commands for which one of the two formats is fixed: from-csv to to-sql.

#include "tools/qxrs/Command.h"

namespace qxrs {

namespace {

struct Conversion {
  const char* szName;
  Format eFrom;
  Format eTo;
};

constexpr Conversion kConversions[] = {{"from-csv", Format::Csv, Format::RecordSet},
                                       {"from-tsv", Format::Tsv, Format::RecordSet},
                                       {"from-json", Format::Json, Format::RecordSet},
                                       {"from-jsonl", Format::Jsonl, Format::RecordSet},
                                       {"to-csv", Format::RecordSet, Format::Csv},
                                       {"to-tsv", Format::RecordSet, Format::Tsv},
                                       {"to-json", Format::RecordSet, Format::Json},
                                       {"to-jsonl", Format::RecordSet, Format::Jsonl}};

void AddConversion(CLI::App& app, Action& action, const Conversion& conversion) {
  const auto [command, rows] = AddCommand<RowOptions>(app, action, conversion.szName, Convert);
  command.add_option("FILE", rows.read.strInput);
  // What is read from a file of another format is told by the file's name.
  if (conversion.eTo == Format::RecordSet) rows.read.eFrom = conversion.eFrom;
  rows.write.eTo = conversion.eTo;
  AddRowOptions(command, rows, conversion.eFrom, conversion.eTo);
  AddOutput(command, rows.write.strOutput);
}

// ---- Databases ----------------------------------------------------------------------------------

int RunFromSql(const RowOptions& options) {
  RowOptions all = options;
  if (all.read.strQuery == "-") {
    Progress progress(When::Never);
    all.read.strQuery = Input("-", progress).ReadAll();
    if (all.read.strQuery.find_first_not_of(" \t\n\r") == std::string::npos) {
      throw InputError("the SQL text holds no statement");
    }
  }
  return Convert(all);
}

void AddFromSql(CLI::App& app, Action& action) {
  const auto [command, rows] = AddCommand(app, action, "from-sql", RunFromSql);
  command.add_option("DATABASE", rows.read.strInput)->required();
  rows.read.eFrom = Format::Sql;
  rows.read.strQuery = "-";
  command.add_option("SQL", rows.read.strQuery);
  rows.write.eTo = Format::RecordSet;
  AddRowOptions(command, rows, Format::Sql, Format::RecordSet);
  AddOutput(command, rows.write.strOutput);
}

void AddToSql(CLI::App& app, Action& action) {
  const auto [command, rows] = AddCommand<RowOptions>(app, action, "to-sql", Convert);
  command.add_option("DATABASE", rows.write.sql.strPath)->required();
  command.add_option("TABLE", rows.write.sql.strTable)->required();
  command.add_option("FILE", rows.read.strInput);
  rows.write.eTo = Format::Sql;
  AddRowOptions(command, rows, Format::RecordSet, Format::Sql);
}

// ---- Any format to any other --------------------------------------------------------------------

// The name of a table, from that of a file: without folder and endings.
std::string Stem(std::string strPath) {
  strPath.erase(0, strPath.rfind('/') + 1);
  return strPath.substr(0, strPath.find('.', 1));
}

int RunConvert(const RowOptions& options) {
  RowOptions all = options;
  if (!all.read.eFrom && !FormatOfFile(all.read.strInput)) {
    throw UsageError("--from has to name the format of '" + all.read.strInput + "'");
  }
  if (!all.write.eTo && !FormatOfFile(all.write.strOutput)) {
    throw UsageError("--to has to name the format of '" + all.write.strOutput + "'");
  }
  if (all.write.sql.strTable.empty()) {
    all.write.sql.strTable =
        !all.read.strTable.empty() ? all.read.strTable : Stem(all.read.strInput);
  }
  return Convert(all);
}

void AddConvert(CLI::App& app, Action& action) {
  const auto [command, rows] = AddCommand(app, action, "convert", RunConvert);
  command.add_option("INPUT", rows.read.strInput)->required();
  command.add_option("OUTPUT", rows.write.strOutput)->required();
  AddRowOptions(command, rows, std::nullopt, std::nullopt);
  command.add_option("--to-table", rows.write.sql.strTable);
}

}  // namespace

void AddConversions(CLI::App& app, Action& action) {
  AddConvert(app, action);
  for (const Conversion& conversion : kConversions) {
    AddConversion(app, action, conversion);
    if (conversion.eFrom == Format::Jsonl) AddFromSql(app, action);
  }
  AddToSql(app, action);
}

}  // namespace qxrs

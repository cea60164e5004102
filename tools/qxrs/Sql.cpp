// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs sql: questions in SQL about any inputs.

#include "tools/qxrs/Command.h"

namespace qxrs {

namespace {

struct Options {
  RowOptions rows;
  std::vector<std::string> vInputs;  // NAME=FILE
};

void LoadInput(const std::string& strInput, const ReadOptions& howToRead,
               const std::shared_ptr<Database>& pDatabase, Progress& progress, Warnings& warnings) {
  const std::size_t nEquals = strInput.find('=');
  if (nEquals == std::string::npos || nEquals == 0) {
    throw UsageError("'" + strInput + "' is not NAME=FILE");
  }
  ReadOptions read = howToRead;
  read.strQuery.clear();
  read.strInput = strInput.substr(nEquals + 1);
  const OpenedRows rows = OpenRows(read, progress, warnings);
  SqlTarget target;
  target.strTable = strInput.substr(0, nEquals);
  Copy(*rows.pRows, *OpenTable(pDatabase, target, warnings), false);
}

int Run(const Options& options) {
  Progress progress(options.rows.eProgress);
  Warnings warnings(options.rows.bStrict);
  const std::shared_ptr<Database> pDatabase = OpenDatabase("", DatabaseMode::Scratch);
  for (const std::string& strInput : options.vInputs) {
    LoadInput(strInput, options.rows.read, pDatabase, progress, warnings);
  }
  const auto pAnswer = OpenQuery(pDatabase, options.rows.read.strQuery, progress);
  WriteRows(*pAnswer, options.rows.write, progress, warnings);
  return kExitDone;
}

}  // namespace

void AddSql(CLI::App& app, Action& action) {
  const auto [command, options] = AddCommand(app, action, "sql", Run);
  command.add_option("SQL", options.rows.read.strQuery)->required();
  command.add_option("NAME=FILE", options.vInputs);
  AddRowOptions(command, options.rows, Format::Csv, std::nullopt);
  command.remove_option(command.get_option("--columns"));  // the question names them
  AddOutput(command, options.rows.write.strOutput);
}

}  // namespace qxrs

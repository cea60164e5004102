// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs to-sql: record set text to a table of an SQLite database.

#include "tools/qxrs/FieldOptions.h"
#include "tools/qxrs/rows/Sqlite.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

struct Options {
  FileOptions files;
  SqlTarget target;
  std::vector<std::string> vColumns;
};

int Run(const Options& options) {
  Progress progress(options.files.eProgress);
  Input input(options.files.strInput, progress);
  const auto pSource = ReadRecordSet(input, options.vColumns);
  GatheredRows rows(*pSource);
  WriteSqlTable(options.target, rows);
  return kExitDone;
}

}  // namespace

void AddToSql(CLI::App& app, Action& action) {
  const auto pOptions = std::make_shared<Options>();
  CLI::App* pCommand = AddCommand(
      app, {"to-sql", "Write record set text into a table of an SQLite database.",
            "  qxrs from-csv --infer countries.csv | qxrs to-sql world.db countries\n"
            "  qxrs to-sql --append world.db countries more.json",
            "The database is made when it is missing, and the table is there whole or not at all.\n"
            "Columns of integers are declared INTEGER, columns of booleans BOOLEAN, all others\n"
            "TEXT. Nested record sets are stored as JSON text, missing cells as NULL."});
  pCommand->add_option("DATABASE", pOptions->target.strPath, "the database file")
      ->type_name("")
      ->required();
  pCommand->add_option("TABLE", pOptions->target.strTable, "the table's name")
      ->type_name("")
      ->required();
  AddInputOption(*pCommand, pOptions->files, "the record set text");
  AddColumnsOption(*pCommand, pOptions->vColumns);
  SqlTarget& target = pOptions->target;
  CLI::Option* pReplace = pCommand->add_flag_callback(
      "--replace", [&target] { target.eExisting = SqlTarget::Existing::Replace; },
      "replace a table of that name");
  pCommand
      ->add_flag_callback(
          "--append", [&target] { target.eExisting = SqlTarget::Existing::Append; },
          "add the rows to the table of that name")
      ->excludes(pReplace);
  AddProgressOptions(*pCommand, pOptions->files);
  SetAction<Options>(*pCommand, action, pOptions, Run);
}

}  // namespace qxrs

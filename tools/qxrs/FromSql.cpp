// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs from-sql: the rows of an SQLite query to record set text.

#include "tools/qxrs/Command.h"
#include "tools/qxrs/rows/JsonSinks.h"
#include "tools/qxrs/rows/Sqlite.h"

namespace qxrs {

namespace {

struct Options {
  FileOptions files;  // the input is the SQL text, when strSql is "-"
  std::string strDatabase;
  std::string strSql = "-";
  LongSize eLong = LongSize::Native;
};

std::string ReadSql(const Options& options) {
  if (options.strSql != "-") {
    return options.strSql;
  }
  Progress progress(When::Never);
  return Input("-", progress).ReadAll();
}

int Run(const Options& options) {
  Progress progress(options.files.eProgress, Progress::Unit::Rows);
  Output output(options.files.strOutput, progress);
  SqlSource source(options.strDatabase, ReadSql(options), options.eLong, progress);
  RecordSetSink sink(output);
  return Convert(source, sink, output);
}

}  // namespace

void AddFromSql(CLI::App& app, Action& action) {
  const auto pOptions = std::make_shared<Options>();
  CLI::App* pCommand = AddCommand(
      app,
      {"from-sql", "Make record set text from a query of an SQLite database.",
       "  qxrs from-sql world.db \"SELECT name, capital FROM countries WHERE eu\"\n"
       "  qxrs from-sql world.db < report.sql | qxrs table",
       "Integers, texts and NULL keep their type, and columns declared BOOLEAN give booleans.\n"
       "A record set holds no reals: they become texts of their shortest form, 0.5 or 1e+300.\n"
       "Integers that a long cannot hold become texts. Blobs are refused; select hex() of\n"
       "them. The database is opened for reading only. Rows stream."});
  pCommand->add_option("DATABASE", pOptions->strDatabase, "the database file")
      ->type_name("")
      ->required();
  pCommand
      ->add_option("SQL", pOptions->strSql, "one statement that gives rows; - is standard input")
      ->type_name("")
      ->capture_default_str();
  AddLongSizeOption(*pCommand, pOptions->eLong);
  AddOutputOptions(*pCommand, pOptions->files);
  SetAction<Options>(*pCommand, action, pOptions, Run);
}

}  // namespace qxrs

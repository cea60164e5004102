// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs from-csv: CSV to record set text.

#include "tools/qxrs/FieldOptions.h"
#include "tools/qxrs/rows/Csv.h"
#include "tools/qxrs/rows/JsonSinks.h"

namespace qxrs {

namespace {

struct Options {
  FileOptions files;
  FieldTypes types;
  char chDelimiter = ',';
};

int Run(const Options& options) {
  RefuseRepeated(options.types.vColumnNames);
  Files files(options.files);
  CsvSource source(files.input, options.chDelimiter, options.types);
  RecordSetSink sink(files.output);
  return Convert(source, sink, files.output);
}

}  // namespace

void AddFromCsv(CLI::App& app, Action& action) {
  const auto pOptions = std::make_shared<Options>();
  CLI::App* pCommand = AddCommand(
      app, {"from-csv", "Make record set text from CSV.",
            "  qxrs from-csv planets.csv\n"
            "  qxrs from-csv --infer --delimiter ';' export.csv -o export.json",
            "The first line names the columns. Fields that hold a delimiter, a quote or a line\n"
            "break stand in double quotes; spaces belong to the field. Rows stream: memory does\n"
            "not grow with the file."});
  AddInputOption(*pCommand, pOptions->files, "the CSV text");
  AddDelimiterOption(*pCommand, pOptions->chDelimiter);
  AddFieldTypeOptions(*pCommand, pOptions->types);
  AddOutputOptions(*pCommand, pOptions->files);
  SetAction<Options>(*pCommand, action, pOptions, Run);
}

}  // namespace qxrs

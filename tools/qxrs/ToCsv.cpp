// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs to-csv and to-tsv: record set text to CSV and TSV.

#include "tools/qxrs/FieldOptions.h"
#include "tools/qxrs/rows/Csv.h"
#include "tools/qxrs/rows/Tsv.h"

namespace qxrs {

namespace {

struct Options {
  FileOptions files;
  std::vector<std::string> vColumns;
  std::string strNull;
  char chDelimiter = ',';
};

constexpr const char* kWhatIsWritten =
    "Booleans are written true and false, nested record sets as JSON text; a cell that a row does\n"
    "not have is written like null. All rows are read before the first is written, to know all\n"
    "columns; with --columns rows stream.";

int RunCsv(const Options& options) {
  Files files(options.files);
  const auto pSource = WithKnownColumns(ReadRecordSet(files.input, options.vColumns));
  CsvSink sink(files.output, options.chDelimiter, options.strNull);
  return Convert(*pSource, sink, files.output);
}

int RunTsv(const Options& options) {
  Files files(options.files);
  const auto pSource = WithKnownColumns(ReadRecordSet(files.input, options.vColumns));
  TsvSink sink(files.output, options.strNull);
  return Convert(*pSource, sink, files.output);
}

}  // namespace

void AddToCsv(CLI::App& app, Action& action) {
  const auto pOptions = std::make_shared<Options>();
  CLI::App* pCommand = AddCommand(
      app, {"to-csv", "Make CSV from record set text.",
            "  qxrs to-csv planets.json\n"
            "  qxrs from-sql world.db \"SELECT * FROM countries\" | qxrs to-csv -o c.csv",
            kWhatIsWritten});
  AddInputOption(*pCommand, pOptions->files, "the record set text");
  AddColumnsOption(*pCommand, pOptions->vColumns);
  AddDelimiterOption(*pCommand, pOptions->chDelimiter);
  AddNullOption(*pCommand, pOptions->strNull);
  AddOutputOptions(*pCommand, pOptions->files);
  SetAction<Options>(*pCommand, action, pOptions, RunCsv);
}

void AddToTsv(CLI::App& app, Action& action) {
  const auto pOptions = std::make_shared<Options>();
  CLI::App* pCommand =
      AddCommand(app, {"to-tsv", "Make TSV from record set text.",
                       "  qxrs to-tsv planets.json\n"
                       "  qxrs to-tsv --null '\\N' --columns name,rings planets.json | sort",
                       kWhatIsWritten});
  AddInputOption(*pCommand, pOptions->files, "the record set text");
  AddColumnsOption(*pCommand, pOptions->vColumns);
  AddNullOption(*pCommand, pOptions->strNull);
  AddOutputOptions(*pCommand, pOptions->files);
  SetAction<Options>(*pCommand, action, pOptions, RunTsv);
}

}  // namespace qxrs

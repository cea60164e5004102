// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs from-tsv: TSV to record set text.

#include "tools/qxrs/FieldOptions.h"
#include "tools/qxrs/rows/JsonSinks.h"
#include "tools/qxrs/rows/Tsv.h"

namespace qxrs {

namespace {

struct Options {
  FileOptions files;
  FieldTypes types;
};

int Run(const Options& options) {
  RefuseRepeated(options.types.vColumnNames);
  Files files(options.files);
  TsvSource source(files.input, options.types);
  RecordSetSink sink(files.output);
  return Convert(source, sink, files.output);
}

}  // namespace

void AddFromTsv(CLI::App& app, Action& action) {
  const auto pOptions = std::make_shared<Options>();
  CLI::App* pCommand = AddCommand(
      app,
      {"from-tsv", "Make record set text from TSV.",
       "  qxrs from-tsv planets.tsv\n"
       "  qxrs from-tsv --infer --null '\\N' < dump.tsv | qxrs table",
       "The first line names the columns. Fields stand between tabs, without quotes; \\t, \\n,\n"
       "\\r and \\\\ in a field are a tab, line breaks and a backslash. Rows stream."});
  AddInputOption(*pCommand, pOptions->files, "the TSV text");
  AddFieldTypeOptions(*pCommand, pOptions->types);
  AddOutputOptions(*pCommand, pOptions->files);
  SetAction<Options>(*pCommand, action, pOptions, Run);
}

}  // namespace qxrs

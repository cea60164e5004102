// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs to-json and to-jsonl: record set text to an array of objects and to JSON Lines.

#include "tools/qxrs/FieldOptions.h"
#include "tools/qxrs/rows/JsonSinks.h"

namespace qxrs {

namespace {

struct Options {
  FileOptions files;
  std::vector<std::string> vColumns;
};

template <typename Sink>
int Run(const Options& options) {
  Files files(options.files);
  const auto pSource = ReadRecordSet(files.input, options.vColumns);
  Sink sink(files.output);
  return Convert(*pSource, sink, files.output);
}

template <typename Sink>
void Add(CLI::App& app, Action& action, const CommandText& text) {
  const auto pOptions = std::make_shared<Options>();
  CLI::App* pCommand = AddCommand(app, text);
  AddInputOption(*pCommand, pOptions->files, "the record set text");
  AddColumnsOption(*pCommand, pOptions->vColumns);
  AddOutputOptions(*pCommand, pOptions->files);
  SetAction<Options>(*pCommand, action, pOptions, Run<Sink>);
}

}  // namespace

void AddToJson(CLI::App& app, Action& action) {
  Add<JsonArraySink>(app, action,
                     {"to-json", "Make a JSON array of objects from record set text.",
                      "  qxrs to-json countries.rs\n"
                      "  qxrs to-json --columns name,capital countries.rs -o countries.json",
                      "Each row is an object with the cells it has, null included. Rows stream."});
}

void AddToJsonl(CLI::App& app, Action& action) {
  Add<JsonLinesSink>(app, action,
                     {"to-jsonl", "Make JSON Lines from record set text.",
                      "  qxrs to-jsonl countries.rs\n"
                      "  qxrs to-jsonl countries.rs | grep '\"eu\":true'",
                      "Each row is an object with the cells it has, null included. Rows stream."});
}

}  // namespace qxrs

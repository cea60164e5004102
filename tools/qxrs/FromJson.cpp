// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs from-json and from-jsonl: arrays of objects and JSON Lines to record set text.

#include "tools/qxrs/Command.h"
#include "tools/qxrs/rows/JsonSinks.h"
#include "tools/qxrs/rows/JsonSources.h"

namespace qxrs {

namespace {

struct Options {
  FileOptions files;
  LongSize eLong = LongSize::Native;
};

constexpr const char* kWhatIsLost =
    "A record set holds no reals and arrays: in a row they become texts, as they are written, and\n"
    "so do integers that a long cannot hold. Inside a nested object reals and arrays become null.\n"
    "Rows stream: memory does not grow with the input.";

template <typename Source>
int Run(const Options& options) {
  Files files(options.files);
  Source source(files.input, options.eLong);
  RecordSetSink sink(files.output);
  return Convert(source, sink, files.output);
}

template <typename Source>
void Add(CLI::App& app, Action& action, const CommandText& text, const char* szInput) {
  const auto pOptions = std::make_shared<Options>();
  CLI::App* pCommand = AddCommand(app, text);
  AddInputOption(*pCommand, pOptions->files, szInput);
  AddLongSizeOption(*pCommand, pOptions->eLong);
  AddOutputOptions(*pCommand, pOptions->files);
  SetAction<Options>(*pCommand, action, pOptions, Run<Source>);
}

}  // namespace

void AddFromJson(CLI::App& app, Action& action) {
  Add<JsonArraySource>(app, action,
                       {"from-json", "Make record set text from a JSON array of objects.",
                        "  qxrs from-json planets.json\n"
                        "  qxrs from-json < planets.json | qxrs to-csv -o planets.csv",
                        kWhatIsLost},
                       "the JSON text");
}

void AddFromJsonl(CLI::App& app, Action& action) {
  Add<JsonLinesSource>(app, action,
                       {"from-jsonl", "Make record set text from JSON Lines.",
                        "  qxrs from-jsonl events.jsonl\n"
                        "  tail -n 100 events.jsonl | qxrs from-jsonl | qxrs table",
                        kWhatIsLost},
                       "the JSON Lines, one object on each");
}

}  // namespace qxrs

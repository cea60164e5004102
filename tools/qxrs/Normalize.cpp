// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs normalize and dump: record set text as the library writes and dumps it.

#include "tools/qxrs/Command.h"
#include "tools/qxrs/support/DisplayText.h"
#include "tools/qxrs/support/Document.h"

namespace qxrs {

namespace {

struct Options {
  FileOptions files;
  bool bStrict = false;
};

int RunNormalize(const Options& options) {
  Files files(options.files);
  Warnings warnings(options.bStrict);
  CQXRecordSet records = LoadRecordSet(files.input.ReadAll(), files.input.Name(), &warnings);
  files.output.Write(records.GetString());
  files.output.Write("\n");
  files.output.Commit();
  warnings.Report();
  return 0;
}

int RunDump(const FileOptions& options) {
  Files files(options);
  const std::string strDump =
      LoadRecordSet(files.input.ReadAll(), files.input.Name(), nullptr).Dump();
  files.output.Write(files.output.IsTerminal() ? PrintableLines(strDump) : strDump);
  files.output.Commit();
  return 0;
}

}  // namespace

void AddNormalize(CLI::App& app, Action& action) {
  const auto [command, options] = AddCommand(
      app, action,
      {"normalize", "Load record set text and write it as the library does.",
       "  qxrs normalize hand-written.rs\n"
       "  qxrs from-sql world.db \"SELECT * FROM c\" | qxrs normalize -o c.rs",
       "The result is what a host has after loading and writing: no white space, members\n"
       "sorted by name, reals and arrays gone, a text that is an object's text an object.\n"
       "What is lost is counted in warnings."},
      RunNormalize);
  AddFileOptions(command, options.files, "the record set text");
  AddStrict(command, options.bStrict);
}

void AddDump(CLI::App& app, Action& action) {
  const auto [command, options] =
      AddCommand(app, action,
                 {"dump", "Write record set text field by field, as a host's log has it.",
                  "  qxrs dump planets.rs\n"
                  "  qxrs from-csv planets.csv | qxrs dump | less"},
                 RunDump);
  AddFileOptions(command, options, "the record set text");
}

}  // namespace qxrs

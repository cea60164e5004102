// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs normalize and dump: record set text as the library writes and dumps it.

#include "tools/qxrs/Command.h"
#include "tools/qxrs/Losses.h"
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
  const std::string strText = files.input.ReadAll();
  CQXRecordSet records = LoadRecordSet(strText, files.input.Name());
  CountLosses(strText, warnings);
  files.output.Write(records.GetString());
  files.output.Write("\n");
  files.output.Commit();
  warnings.Report();
  return 0;
}

int RunDump(const FileOptions& options) {
  Files files(options);
  const std::string strText = files.input.ReadAll();
  const std::string strDump = LoadRecordSet(strText, files.input.Name()).Dump();
  files.output.Write(files.output.IsTerminal() ? PrintableLines(strDump) : strDump);
  files.output.Commit();
  return 0;
}

}  // namespace

void AddNormalize(CLI::App& app, Action& action) {
  const auto pOptions = std::make_shared<Options>();
  CLI::App* pCommand = AddCommand(
      app, {"normalize", "Load record set text and write it as the library does.",
            "  qxrs normalize hand-written.rs\n"
            "  qxrs from-sql world.db \"SELECT * FROM c\" | qxrs normalize -o c.rs",
            "The result is what a host has after loading and writing: no white space, members\n"
            "sorted by name, reals and arrays gone, a text that is an object's text an object.\n"
            "What is lost is counted in warnings."});
  AddFileOptions(*pCommand, pOptions->files, "the record set text");
  AddStrictOption(*pCommand, pOptions->bStrict);
  SetAction<Options>(*pCommand, action, pOptions, RunNormalize);
}

void AddDump(CLI::App& app, Action& action) {
  const auto pOptions = std::make_shared<FileOptions>();
  CLI::App* pCommand =
      AddCommand(app, {"dump", "Write record set text field by field, as a host's log has it.",
                       "  qxrs dump planets.rs\n"
                       "  qxrs from-csv planets.csv | qxrs dump | less"});
  AddFileOptions(*pCommand, *pOptions, "the record set text");
  SetAction<FileOptions>(*pCommand, action, pOptions, RunDump);
}

}  // namespace qxrs

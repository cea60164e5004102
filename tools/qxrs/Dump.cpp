// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs dump: record set text as the library dumps it.

#include "tools/qxrs/Command.h"
#include "tools/qxrs/support/Document.h"

namespace qxrs {

namespace {

int Run(const FileOptions& options) {
  Files files(options);
  const std::string strText = files.input.ReadAll();
  files.output.Write(LoadRecordSet(strText, files.input.Name()).Dump());
  files.output.Commit();
  return 0;
}

}  // namespace

void AddDump(CLI::App& app, Action& action) {
  const auto pOptions = std::make_shared<FileOptions>();
  CLI::App* pCommand = AddCommand(
      app, {"dump", "Write record set text row by row and field by field, as a host's log has it.",
            "  qxrs dump planets.json\n"
            "  qxrs from-csv planets.csv | qxrs dump | less"});
  AddInputOption(*pCommand, *pOptions, "the record set text");
  AddOutputOptions(*pCommand, *pOptions);
  SetAction<FileOptions>(*pCommand, action, pOptions, Run);
}

}  // namespace qxrs

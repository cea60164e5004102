// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs normalize: record set text as the library writes it.

#include "tools/qxrs/Command.h"
#include "tools/qxrs/support/Document.h"

namespace qxrs {

namespace {

int Run(const FileOptions& options) {
  Files files(options);
  const std::string strText = files.input.ReadAll();
  CQXRecordSet records = LoadRecordSet(strText, files.input.Name());
  files.output.Write(records.GetString());
  files.output.Write("\n");
  files.output.Commit();
  return 0;
}

}  // namespace

void AddNormalize(CLI::App& app, Action& action) {
  const auto pOptions = std::make_shared<FileOptions>();
  CLI::App* pCommand = AddCommand(
      app, {"normalize", "Load record set text and write it as the library does.",
            "  qxrs normalize hand-written.json\n"
            "  qxrs from-sql world.db \"SELECT * FROM countries\" | qxrs normalize -o c.json",
            "The result is what a host has after loading and writing: no white space, members\n"
            "sorted by name, reals and arrays gone, a text that is an object's text an object."});
  AddInputOption(*pCommand, *pOptions, "the record set text");
  AddOutputOptions(*pCommand, *pOptions);
  SetAction<FileOptions>(*pCommand, action, pOptions, Run);
}

}  // namespace qxrs

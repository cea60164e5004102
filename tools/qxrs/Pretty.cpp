// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs pretty: JSON text broken into lines.

#include "json/JSON.h"
#include "tools/qxrs/Command.h"
#include "tools/qxrs/support/Document.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

int Run(const FileOptions& options) {
  Files files(options);
  const std::string strText = files.input.ReadAll();
  JSON::Message message;
  ParseOrThrow(message, strText, files.input.Name());
  if (strText.find('\0') != std::string::npos) {
    throw InputError(files.input.Name() + ": a NUL byte, where a host's text would end");
  }
  std::string strPretty;
  files.output.Write(JSON_PrettyPrint(strText.c_str(), strPretty));
  files.output.Write("\n");
  files.output.Commit();
  return 0;
}

}  // namespace

void AddPretty(CLI::App& app, Action& action) {
  const auto pOptions = std::make_shared<FileOptions>();
  CLI::App* pCommand = AddCommand(
      app, {"pretty", "Break JSON text into indented lines, as a host's log has it.",
            "  qxrs pretty planets.json\n"
            "  qxrs from-csv planets.csv | qxrs pretty | less",
            "For reading: the library's printer knows no strings, so that brackets and commas\n"
            "inside texts break the line, too. It adds to the white space that is there already."});
  AddInputOption(*pCommand, *pOptions, "the JSON text");
  AddOutputOptions(*pCommand, *pOptions);
  SetAction<FileOptions>(*pCommand, action, pOptions, Run);
}

}  // namespace qxrs

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs pretty: JSON text broken into lines.

#include "json/JSON.h"
#include "tools/qxrs/Command.h"
#include "tools/qxrs/rows/Json.h"
#include "tools/qxrs/support/Document.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

struct Options {
  FileOptions files;
  bool bCompact = false;
  bool bHost = false;
};

std::string HostText(const std::string& strText, const std::string& strName) {
  if (strText.find('\0') != std::string::npos) {
    throw InputError(strName + ": a NUL byte, where a host's text would end");
  }
  std::string strPretty;
  return JSON_PrettyPrint(strText.c_str(), strPretty);
}

int Run(const Options& options) {
  Files files(options.files);
  const std::string strText = files.input.ReadAll();
  const std::string& strName = files.input.Name();
  JSON::Message message;
  ParseOrThrow(message, strText, strName);
  files.output.Write(options.bHost ? HostText(strText, strName)
                                   : StrictJson(strText, !options.bCompact, strName));
  files.output.Write("\n");
  files.output.Commit();
  return kExitDone;
}

}  // namespace

void AddPretty(CLI::App& app, Action& action) {
  const auto [command, options] =
      AddCommand(app, action,
                 {"pretty", "Write JSON text in indented lines.",
                  "  qxrs pretty planets.rs\n"
                  "  qxrs from-csv planets.csv | qxrs pretty | less",
                  "The result is strict JSON, whatever leniency of the parser the text uses."},
                 Run);
  CLI::Option* pCompact =
      command.add_flag("--compact", options.bCompact, "on one line, without white space");
  command
      .add_flag("--host", options.bHost,
                "by the library's printer, as a host's log has it: it knows no strings, so that "
                "brackets and commas inside texts break the line, too")
      ->excludes(pCompact);
  AddFileOptions(command, options.files, "the JSON text");
}

}  // namespace qxrs

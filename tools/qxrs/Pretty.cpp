// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs pretty: JSON text broken into lines.

#include "json/JSON.h"
#include "tools/qxrs/Command.h"
#include "tools/qxrs/rows/JsonWalk.h"
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
  JSON::Message message;
  ParseOrThrow(message, strText, files.input.Name());
  std::string strPretty;
  if (options.bHost) {
    strPretty = HostText(strText, files.input.Name());
  } else {
    JsonWalk walk(strText.data() + strText.size());
    walk.WriteTo(strPretty,
                 options.bCompact ? JsonWalk::Style::Compact : JsonWalk::Style::Indented);
    const char* const pBegin = strText.data() + strText.find_first_not_of(kWhiteSpace);
    const char* const pEnd = walk.Read(pBegin);
    if (!pEnd ||
        strText.find_first_not_of(kWhiteSpace, static_cast<std::size_t>(pEnd - strText.data())) !=
            std::string::npos) {
      throw InputError(files.input.Name() + ": " +
                       (pEnd ? "text behind the document" : walk.Reason()));
    }
  }
  files.output.Write(strPretty + "\n");
  files.output.Commit();
  return kExitDone;
}

}  // namespace

void AddPretty(CLI::App& app, Action& action) {
  const auto pOptions = std::make_shared<Options>();
  CLI::App* pCommand = AddCommand(
      app, {"pretty", "Write JSON text in indented lines.",
            "  qxrs pretty planets.rs\n"
            "  qxrs from-csv planets.csv | qxrs pretty | less",
            "The result is strict JSON, whatever leniency of the parser the text uses."});
  CLI::Option* pCompact =
      pCommand->add_flag("--compact", pOptions->bCompact, "on one line, without white space");
  pCommand
      ->add_flag("--host", pOptions->bHost,
                 "by the library's printer, as a host's log has it: it knows no strings, so that "
                 "brackets and commas inside texts break the line, too")
      ->excludes(pCompact);
  AddFileOptions(*pCommand, pOptions->files, "the JSON text");
  SetAction<Options>(*pCommand, action, pOptions, Run);
}

}  // namespace qxrs

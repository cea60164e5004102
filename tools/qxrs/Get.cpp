// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs get: one value of a JSON document.

#include "tools/qxrs/Command.h"
#include "tools/qxrs/support/Document.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

struct Options {
  FileOptions files;
  std::string strPath;
  bool bJson = false;
};

std::string ResultText(const JSON::JSONValue& value, bool bJson) {
  if (value.eType == JSON::jtString && !bJson) {
    return {value.pText, static_cast<std::size_t>(value.nLength)};
  }
  std::string strText;
  value.Serialize(strText);
  return strText;
}

int Run(const Options& options) {
  Files files(options.files);
  JSON::Message message;
  ParseOrThrow(message, files.input.ReadAll(), files.input.Name());
  const JSON::JSONValue& value = message.Path(options.strPath.c_str());
  if (value.eType == JSON::jtNone) {
    throw InputError(files.input.Name() + ": there is nothing at '" + options.strPath + "'");
  }
  files.output.Write(ResultText(value, options.bJson) + "\n");
  files.output.Commit();
  return 0;
}

}  // namespace

void AddGet(CLI::App& app, Action& action) {
  const auto pOptions = std::make_shared<Options>();
  CLI::App* pCommand = AddCommand(
      app, {"get", "Write one value of a JSON document.",
            "  qxrs get rows.2.name planets.json\n"
            "  qxrs get --json rows.0 < planets.json",
            "A path is made of names, and of ordinals from 0 in arrays, joined by dots. In an\n"
            "array a segment that is no number means element 0."});
  pCommand->add_option("PATH", pOptions->strPath, "where the value is")->type_name("")->required();
  AddInputOption(*pCommand, pOptions->files, "the JSON text");
  pCommand->add_flag("-j,--json", pOptions->bJson,
                     "write a text in quotes and escaped, not as it is");
  AddOutputOptions(*pCommand, pOptions->files);
  SetAction<Options>(*pCommand, action, pOptions, Run);
}

}  // namespace qxrs

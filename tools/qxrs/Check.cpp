// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs check: whether the library accepts JSON text, and if not, where and why not.

#include <unistd.h>

#include <iostream>

#include "tools/qxrs/Command.h"
#include "tools/qxrs/support/Document.h"
#include "tools/qxrs/support/Errors.h"
#include "tools/qxrs/support/TextPosition.h"

namespace qxrs {

namespace {

struct Options {
  std::vector<std::string> vInputs{"-"};
  bool bQuiet = false;
  When eColor = When::Auto;
};

std::string Count(int nCount, const char* szWhat) {
  return std::to_string(nCount) + " " + szWhat + (nCount == 1 ? "" : "s");
}

std::string Acceptance(const JSON::Message& message, const std::string& strText) {
  std::string strResult = message.eType == JSON::jtObject
                              ? "an object of " + Count(message.Size(), "member")
                              : "an array of " + Count(message.Size(), "element");
  const auto nRead = static_cast<std::size_t>(message.pCursor - message.pStart);
  if (strText.find_first_not_of(kWhiteSpace, nRead) != std::string::npos) {
    strResult += "; the " + Count(static_cast<int>(strText.size() - nRead), "byte") +
                 " behind it are ignored";
  }
  return strResult;
}

bool Check(const std::string& strPath, const Options& options) {
  Progress progress(When::Never);
  Input input(strPath, progress);
  const std::string strText = input.ReadAll();
  JSON::Message message;
  const auto refusal = Parse(message, strText);
  if (!refusal) {
    if (!options.bQuiet) {
      std::cout << input.Name() << ": accepted: " << Acceptance(message, strText) << '\n';
    }
    return true;
  }
  TextPosition position;
  position.Advance(std::string_view(strText).substr(0, refusal->nOffset));
  std::cerr << "qxrs: " << Complaint(input.Name(), position, refusal->strReason) << '\n'
            << Caret(strText, refusal->nOffset, UseColor(options.eColor, STDERR_FILENO));
  return false;
}

int Run(const Options& options) {
  bool bAccepted = true;
  for (const std::string& strPath : options.vInputs) {
    bAccepted = Check(strPath, options) && bAccepted;
  }
  std::cout.flush();
  if (!std::cout) {
    throw InputError("cannot write standard output");
  }
  return bAccepted ? kExitDone : kExitFailed;
}

}  // namespace

void AddCheck(CLI::App& app, Action& action) {
  const auto pOptions = std::make_shared<Options>();
  CLI::App* pCommand = AddCommand(
      app, {"check", "Tell whether the library accepts JSON text; show where and why not.",
            "  qxrs check planets.json\n"
            "  qxrs from-csv planets.csv | qxrs check --quiet && echo fine",
            "Lines and columns count from 1, columns in bytes. The library accepts more than\n"
            "strict JSON: docs/json-accepted.md lists it.",
            "0 accepted, 1 refused or a file that fails, 2 wrong usage"});
  pCommand->add_option("FILE", pOptions->vInputs, "the JSON texts; - is standard input")
      ->type_name("")
      ->default_str("-");
  pCommand->add_flag("-q,--quiet", pOptions->bQuiet, "say nothing about a text that is accepted");
  AddColorOption(*pCommand, pOptions->eColor);
  SetAction<Options>(*pCommand, action, pOptions, Run);
}

}  // namespace qxrs

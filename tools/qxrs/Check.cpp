// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs check: whether the library accepts JSON text, and if not, where and why not.

#include <unistd.h>

#include <algorithm>
#include <iostream>

#include "tools/qxrs/Command.h"
#include "tools/qxrs/support/DisplayText.h"
#include "tools/qxrs/support/Document.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

struct Options {
  std::vector<std::string> vInputs{"-"};
  bool bQuiet = false;
  bool bStrict = false;
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

// The line of `strText` around `nOffset` and a caret under that byte, as two lines. A long line is
// cut to the neighbourhood.
std::string Caret(std::string_view strText, std::size_t nOffset, bool bColor) {
  constexpr std::size_t kReach = 35;  // bytes shown on either side
  const std::size_t nLine = nOffset == 0 ? 0 : strText.rfind('\n', nOffset - 1) + 1;
  std::size_t nBegin = nOffset - nLine > kReach ? nOffset - kReach : nLine;
  std::size_t nEnd = std::min({strText.find('\n', nOffset), nOffset + kReach, strText.size()});
  const auto IsContinuation = [&](std::size_t i) {
    return i < strText.size() && (static_cast<unsigned char>(strText[i]) & 0xC0) == 0x80;
  };
  while (nBegin < nOffset && IsContinuation(nBegin)) {
    ++nBegin;
  }
  while (nEnd > nOffset && IsContinuation(nEnd)) {
    --nEnd;
  }
  const DisplayText before = MakeDisplayText(strText.substr(nBegin, nOffset - nBegin));
  const DisplayText behind = MakeDisplayText(strText.substr(nOffset, nEnd - nOffset));
  return "  " + before.strText + behind.strText + "\n  " + std::string(before.nWidth, ' ') +
         Styled("^", Style::Red, bColor) + "\n";
}

bool Check(const std::string& strPath, const Options& options) {
  Progress progress(When::Never);
  Input input(strPath, progress);
  const std::string strText = input.ReadAll();
  JSON::Message message;
  try {
    ParseOrThrow(message, strText, input.Name());
  } catch (const InputError& error) {
    std::cerr << "qxrs: " << MakeDisplayText(error.what()).strText << '\n'
              << Caret(strText, message.Error().nOffset, UseColor(options.eColor, STDERR_FILENO));
    return false;
  }
  Warnings warnings(options.bStrict);
  if (!options.bQuiet) {
    std::cout << input.Name() << ": accepted: " << Acceptance(message, strText) << std::endl;
  }
  if (message.eType == JSON::jtObject) LoadRecordSet(strText, input.Name(), &warnings);
  warnings.Report();
  return true;
}

int Run(const Options& options) {
  bool bAccepted = true;
  for (const std::string& strPath : options.vInputs) {
    bAccepted = Check(strPath, options) && bAccepted;
  }
  std::cout.flush();
  if (!std::cout) throw InputError("cannot write standard output");
  return bAccepted ? kExitDone : kExitFailed;
}

}  // namespace

void AddCheck(CLI::App& app, Action& action) {
  const auto [command, options] = AddCommand(
      app, action,
      {"check", "Tell whether the library accepts JSON text; show where and why not.",
       "  qxrs check planets.json\n"
       "  qxrs from-csv planets.csv | qxrs check --quiet && echo fine",
       "Lines and columns count from 1, columns in bytes. The library accepts more than\n"
       "strict JSON: docs/json-accepted.md lists it. Warnings tell what a record set that loads\n"
       "the text does not keep.",
       "0 accepted, 1 refused or a file that fails, 2 wrong usage"},
      Run);
  AddValue(command, "FILE", options.vInputs, "", "the JSON texts; - is standard input");
  command.add_flag("-q,--quiet", options.bQuiet, "say nothing about a text that is accepted");
  AddStrict(command, options.bStrict);
  AddColor(command, options.eColor);
}

}  // namespace qxrs

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs completion and qxrs manual: the tool describes itself to the shell and to man. Both texts
// are made from the options as they are parsed, so that they cannot fall behind.

#include <sstream>

#include "tools/qxrs/Command.h"

namespace qxrs {

namespace {

int WriteText(const std::string& strText) {
  Progress progress(When::Never);
  Output output("-", progress);
  output.Write(strText);
  output.Commit();
  return 0;
}

// ---- Completion ---------------------------------------------------------------------------------

// What may follow a command line, one word on each line: subcommands and options. Nothing where a
// file is due.
std::string Candidates(const CLI::App& app, const std::string& strLine) {
  const CLI::App* pCommand = &app;
  std::string strLast;
  std::istringstream line(strLine);
  for (std::string strWord; std::getline(line, strWord, ' '); strLast = strWord) {
    for (const CLI::App* pInner : Commands(*pCommand)) {
      if (pInner->get_name() == strWord) pCommand = pInner;
    }
  }
  strLast = strLine.empty() || strLine.back() == ' ' ? "" : strLast;
  std::string strResult;
  for (const CLI::App* pInner : Commands(*pCommand)) {
    strResult += pInner->get_name() + "\n";
  }
  if (strResult.empty() && strLast.substr(0, 1) != "-") return "";
  for (const CLI::Option* pOption : pCommand->get_options()) {
    for (const std::string& strName : pOption->get_lnames()) {
      strResult += "--" + strName + "\n";
    }
  }
  return strResult;
}

int WriteCompletion(const CLI::App& app, const std::vector<std::string>& vWords) {
  const std::string strShell = vWords.empty() ? "bash" : vWords.front();
  if (strShell == "words") return WriteText(Candidates(app, vWords.back()));
  const std::string strScript = HelpSection("script for " + strShell);
  if (strScript.empty()) throw UsageError("there is no completion for '" + strShell + "'");
  return WriteText(strScript.substr(1));
}

// ---- Manual -------------------------------------------------------------------------------------

// Text for troff: hyphens that are to be typed, and no line that reads as a request.
std::string Troff(const std::string& strText) {
  std::string strResult;
  for (const char c : strText) {
    const bool bLineStart = strResult.empty() || strResult.back() == '\n';
    if (bLineStart && (c == '.' || c == '\'')) strResult += "\\&";
    strResult += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
  }
  return strResult;
}

std::string ManualOption(const CLI::Option& option) {
  const bool bPositional = option.get_positional();
  std::string strNames = option.get_name(bPositional, !bPositional);
  for (std::size_t n = 0; (n = strNames.find(',', n)) != std::string::npos; n += 2) {
    strNames.insert(n + 1, " ");
  }
  const std::string strType = option.get_expected_max() == 0 ? "" : option.get_type_name();
  return ".TP\n\\fB" + Troff(strNames) + "\\fR" +
         (strType.empty() ? "" : " \\fI" + Troff(strType) + "\\fR") + "\n" +
         Troff(option.get_description()) + "\n";
}

std::string ManualSection(const CLI::App& app, const std::string& strPath) {
  std::string strText = ".SS " + Troff(strPath) + "\n" + Troff(app.get_description()) + "\n";
  for (const CLI::Option* pOption : app.get_options()) {
    strText += ManualOption(*pOption);
  }
  strText += ".PP\n.nf\n" + Troff(app.get_footer()) + "\n.fi\n";
  for (const CLI::App* pCommand : Commands(app)) {
    strText += ManualSection(*pCommand, strPath + " " + pCommand->get_name());
  }
  return strText;
}

std::string Manual(const CLI::App& app) {
  std::string strText = ".TH QXRS 1 \"\" \"qxrs " QXRS_VERSION "\" \"User Commands\"" +
                        HelpSection("head of the manual") + Troff(app.get_description()) +
                        "\n.PP\n.nf\n" + Troff(app.get_footer()) + "\n.fi\n.SH COMMANDS\n";
  for (const CLI::App* pCommand : Commands(app)) {
    strText += ManualSection(*pCommand, pCommand->get_name());
  }
  return strText + HelpSection("end of the manual").substr(1);
}

}  // namespace

void AddDescriptions(CLI::App& app, Action& action) {
  const auto pWords = std::make_shared<std::vector<std::string>>();
  CLI::App& completion = *app.add_subcommand("completion");
  completion.add_option("SHELL", *pWords);
  completion.callback([&app, &action, pWords] {
    action = [&app, pWords] { return WriteCompletion(app, *pWords); };
  });
  app.add_subcommand("manual")->callback(
      [&app, &action] { action = [&app] { return WriteText(Manual(app)); }; });
}

}  // namespace qxrs

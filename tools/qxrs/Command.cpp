// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What the subcommands share on the command line.

#include "tools/qxrs/Command.h"

namespace qxrs {

namespace {

constexpr std::size_t kOptionWidth = 26;  // columns for the options' names in --help
constexpr std::size_t kTextWidth = 66;    // columns for what is said about them

// `strText` in lines of at most kTextWidth bytes.
std::string Wrapped(std::string strText) {
  std::size_t nLine = 0;
  while (strText.size() - nLine > kTextWidth) {
    const std::size_t nBreak = strText.rfind(' ', nLine + kTextWidth);
    if (nBreak == std::string::npos || nBreak <= nLine) {
      break;
    }
    strText[nBreak] = '\n';
    nLine = nBreak + 1;
  }
  return strText;
}

// The options' names without notes on what they exclude, and texts in lines that fit a terminal.
class HelpFormatter : public CLI::Formatter {
 public:
  HelpFormatter() { column_width(kOptionWidth); }

  std::string make_option_opts(const CLI::Option* pOption) const override {
    const std::string strType = pOption->get_type_name();
    return strType.empty() || pOption->get_expected_max() == 0 ? "" : " " + strType;
  }

  std::string make_option_desc(const CLI::Option* pOption) const override {
    return Wrapped(pOption->get_description());
  }

  std::string make_subcommand(const CLI::App* pCommand) const override {
    std::stringstream stream;
    CLI::detail::format_help(stream, pCommand->get_name(), Wrapped(pCommand->get_description()),
                             kOptionWidth);
    return stream.str();
  }
};

}  // namespace

void SetHelpStyle(CLI::App& app) { app.formatter(std::make_shared<HelpFormatter>()); }

std::string CheckCount(const std::string& strText) {
  const bool bDigits = strText.find_first_not_of("0123456789") == std::string::npos;
  const bool bZero = strText.find_first_not_of('0') == std::string::npos;
  return bDigits && !bZero ? "" : "'" + strText + "' is not a number above 0";
}

CLI::App* AddCommand(CLI::App& app, const CommandText& text) {
  CLI::App* pCommand = app.add_subcommand(text.szName, text.szPurpose);
  std::string strFooter = text.szDetails;
  strFooter += strFooter.empty() ? "" : "\n\n";
  strFooter +=
      std::string("Examples:\n") + text.szExamples + "\n\nExit status: " + text.szExitStatus;
  pCommand->footer(strFooter);
  return pCommand;
}

void AddInputOption(CLI::App& command, FileOptions& options, const char* szWhat) {
  command.add_option("FILE", options.strInput, std::string(szWhat) + "; - is standard input")
      ->type_name("")
      ->capture_default_str();
}

void AddOutputOptions(CLI::App& command, FileOptions& options) {
  command.add_option("-o,--output", options.strOutput, "write to FILE instead of standard output")
      ->type_name("FILE")
      ->default_str("");
  AddProgressOptions(command, options);
}

void AddProgressOptions(CLI::App& command, FileOptions& options) {
  command.add_flag_callback(
      "--progress", [&options] { options.eProgress = When::Always; },
      "show progress on standard error, whatever that is and however short the work; the default "
      "is for long work on a terminal");
  command.add_flag_callback(
      "--no-progress", [&options] { options.eProgress = When::Never; }, "show no progress");
}

void AddColorOption(CLI::App& command, When& eColor) {
  command
      .add_option_function<std::string>(
          "--color",
          [&eColor](const std::string& strWhen) {
            eColor = strWhen == "auto"     ? When::Auto
                     : strWhen == "always" ? When::Always
                                           : When::Never;
          },
          "auto (the default: on a terminal, unless NO_COLOR is set), always or never")
      ->type_name("WHEN")
      ->check(CLI::IsMember({"auto", "always", "never"}).description(""));
}

void AddLongSizeOption(CLI::App& command, LongSize& eLong) {
  command.add_flag_callback(
      "--32-bit", [&eLong] { eLong = LongSize::Bits32; },
      "make texts of integers that a 32-bit host would cut");
}

}  // namespace qxrs

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs completion and qxrs manual: the tool describes itself to the shell and to man. Both texts
// are made from the options as they are parsed, so that they cannot fall behind.

#include <cctype>

#include "tools/qxrs/Command.h"

namespace qxrs {

namespace {

std::vector<const CLI::App*> Commands(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App*) { return true; });
}

int WriteText(const std::string& strText) {
  Progress progress(When::Never);
  Output output("-", progress);
  output.Write(strText);
  output.Commit();
  return 0;
}

// ---- Completion ---------------------------------------------------------------------------------

// What may follow the words of a command: its subcommands and its options.
std::string Words(const CLI::App& app) {
  std::string strWords;
  for (const CLI::App* pCommand : Commands(app)) {
    strWords += pCommand->get_name() + " ";
  }
  for (const CLI::Option* pOption : app.get_options()) {
    for (const std::string& strName : pOption->get_lnames()) {
      strWords += "--" + strName + " ";
    }
  }
  return strWords.substr(0, strWords.size() - 1);
}

std::string CompletionCases(const CLI::App& app, const std::string& strPath) {
  std::string strCases = "    '" + strPath + "') words='" + Words(app) + "' ;;\n";
  for (const CLI::App* pCommand : Commands(app)) {
    strCases += CompletionCases(*pCommand, strPath + " " + pCommand->get_name());
  }
  return strCases;
}

// Every command's words in a case of their own; the command is the longest run of words for which
// there is one. Behind it, what does not begin with a dash is a file.
std::string CompletionScript(const CLI::App& app) {
  return R"(# Completion of qxrs for bash, made by: qxrs completion

_qxrs_words() {
  case $1 in
)" + CompletionCases(app, "qxrs") +
         R"(    *) return 1 ;;
  esac
}

_qxrs() {
  local current=${COMP_WORDS[COMP_CWORD]} command=qxrs words='' i
  for ((i = 1; i < COMP_CWORD; i++)); do
    if _qxrs_words "$command ${COMP_WORDS[i]}"; then
      command+=" ${COMP_WORDS[i]}"
    fi
  done
  _qxrs_words "$command"
  if [[ $current == -* || $command == qxrs || $command == 'qxrs params' ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
  else
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  fi
}

complete -o filenames -F _qxrs qxrs
)";
}

// ---- Manual -------------------------------------------------------------------------------------

// Text for troff: hyphens that are to be typed, and no line that reads as a request.
std::string Troff(const std::string& strText) {
  std::string strResult;
  for (const char c : strText) {
    const bool bLineStart = strResult.empty() || strResult.back() == '\n';
    if (bLineStart && (c == '.' || c == '\'')) strResult += "\\&";
    if (c == '\\') {
      strResult += "\\e";
    } else {
      strResult += c == '-' ? "\\-" : std::string(1, c);
    }
  }
  return strResult;
}

std::string Upper(std::string strText) {
  for (char& c : strText) {
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return strText;
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
  std::string strText = ".TH " + Upper(app.get_name()) +
                        " 1 \"\" \"qxrs " QXRS_VERSION
                        "\" \"User Commands\"\n"
                        ".SH NAME\nqxrs \\- tables on the command line\n"
                        ".SH SYNOPSIS\n\\fBqxrs\\fR \\fICOMMAND\\fR [\\fIOPTIONS\\fR] "
                        "[\\fIARGUMENTS\\fR]\n"
                        ".SH DESCRIPTION\n" +
                        Troff(app.get_description()) + "\n.PP\n.nf\n" + Troff(app.get_footer()) +
                        "\n.fi\n.SH COMMANDS\n";
  for (const CLI::App* pCommand : Commands(app)) {
    strText += ManualSection(*pCommand, pCommand->get_name());
  }
  return strText +
         ".SH ENVIRONMENT\n.TP\n.B NO_COLOR\nWhen set and not empty, terminals get no colours "
         "unless \\fB\\-\\-color\\fR asks for them.\n";
}

}  // namespace

void AddDescriptions(CLI::App& app, Action& action) {
  CLI::App* pCommand =
      AddCommand(app, {"completion", "Write the completion of qxrs for bash.",
                       "  source <(qxrs completion)\n"
                       "  qxrs completion > ~/.local/share/bash-completion/completions/qxrs"});
  pCommand->callback(
      [&app, &action] { action = [&app] { return WriteText(CompletionScript(app)); }; });
  CLI::App* pManual = AddCommand(app, {"manual", "Write the manual page of qxrs.",
                                       "  qxrs manual > qxrs.1\n"
                                       "  qxrs manual | man -l -"});
  pManual->callback([&app, &action] { action = [&app] { return WriteText(Manual(app)); }; });
}

}  // namespace qxrs

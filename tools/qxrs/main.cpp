// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs: record sets on the command line.

#include <clocale>
#include <cstdio>
#include <iostream>
#include <new>

#include "tools/qxrs/Command.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

constexpr const char* kFooter =
    "Every command reads a file or standard input and writes standard output.\n"
    "qxrs COMMAND --help tells more and shows examples.\n\n"
    "Examples:\n"
    "  qxrs from-csv --infer planets.csv | qxrs table\n"
    "  qxrs from-sql world.db \"SELECT * FROM countries\" | qxrs to-csv -o countries.csv\n\n"
    "Exit status: 0 done, 1 bad input or a file that fails, 2 wrong usage";

void AddCommands(CLI::App& app, Action& action) {
  AddTable(app, action);
  AddFromCsv(app, action);
  AddFromTsv(app, action);
  AddFromJson(app, action);
  AddFromJsonl(app, action);
  AddFromSql(app, action);
  AddToCsv(app, action);
  AddToTsv(app, action);
  AddToJson(app, action);
  AddToJsonl(app, action);
  AddToSql(app, action);
  AddDiff(app, action);
  AddStats(app, action);
  AddNormalize(app, action);
  AddDump(app, action);
  AddPretty(app, action);
  AddGet(app, action);
  AddCheck(app, action);
  AddParams(app, action);
  AddCompletion(app, action);
  AddManual(app, action);
}

int Complain(const std::string& strMessage, int nStatus) {
  std::cerr << "qxrs: " << strMessage << '\n';
  return nStatus;
}

std::string UsageMessage(const CLI::App& app, const CLI::Error& error) {
  std::string strCommand = app.get_name();
  for (const CLI::App* pApp = &app; !pApp->get_subcommands().empty();) {
    pApp = pApp->get_subcommands().front();
    strCommand += " " + pApp->get_name();
  }
  return std::string(error.what()) + " (see " + strCommand + " --help)";
}

int Run(const Action& action) {
  try {
    return action();
  } catch (const InputError& error) {
    return Complain(error.what(), kExitFailed);
  } catch (const UsageError& error) {
    return Complain(error.what(), kExitUsage);
  } catch (const std::bad_alloc&) {
    return Complain("out of memory", kExitFailed);
  }
}

int Main(int nArguments, char** pszArguments) {
  CLI::App app(
      "Record sets on the command line: tables as JSON text, converted, shown and compared.",
      "qxrs");
  SetHelpStyle(app);
  app.set_version_flag("--version", "qxrs " QXRS_VERSION, "write the version and exit");
  app.require_subcommand(1);
  app.footer(kFooter);
  Action action;
  AddCommands(app, action);
  try {
    app.parse(nArguments, pszArguments);
  } catch (const CLI::Success& request) {
    return app.exit(request);  // --help or --version
  } catch (const CLI::ParseError& error) {
    return Complain(UsageMessage(app, error), kExitUsage);
  }
  return Run(action);
}

}  // namespace

}  // namespace qxrs

int main(int nArguments, char** pszArguments) {
  // Character widths are those of UTF-8, whatever the user's locale; numbers stay as they are.
  std::setlocale(LC_CTYPE, "C.UTF-8");
  try {
    return qxrs::Main(nArguments, pszArguments);
  } catch (...) {
    return qxrs::kExitFailed;  // not even memory for a message
  }
}

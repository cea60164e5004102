// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs: record sets on the command line.

#include <algorithm>
#include <clocale>
#include <iostream>
#include <map>
#include <new>
#include <numeric>
#include <utility>

#include "tools/qxrs/Command.h"

namespace qxrs {

namespace {

constexpr void (*kCommands[])(CLI::App&, Action&) = {AddConversions, AddParts,  AddSql,
                                                     AddDiff,        AddStats,  AddCheck,
                                                     AddGet,         AddParams, AddDescriptions};

// What a file or a database is called may move the cursor of a terminal.
int Complain(const std::string& strMessage, int nStatus) {
  std::cerr << "qxrs: " << MakeDisplayText(strMessage).strText << '\n';
  return nStatus;
}

// How many letters have to be changed, added or left out to make one word of the other.
std::size_t Distance(const std::string& strOne, const std::string& strOther) {
  std::vector<std::size_t> vCosts(strOther.size() + 1);
  std::iota(vCosts.begin(), vCosts.end(), 0);
  for (std::size_t i = 0; i < strOne.size(); ++i) {
    std::size_t nDiagonal = std::exchange(vCosts[0], i + 1);
    for (std::size_t j = 0; j < strOther.size(); ++j) {
      const std::size_t nChange = nDiagonal + (strOne[i] == strOther[j] ? 0 : 1);
      nDiagonal = vCosts[j + 1];
      vCosts[j + 1] = std::min({nChange, nDiagonal + 1, vCosts[j] + 1});
    }
  }
  return vCosts.back();
}

// What to say about a word that is no command.
std::string UnknownCommand(const CLI::App& app, const std::string& strWord) {
  constexpr std::size_t kAlike = 3;  // words that differ by more are not suggested
  std::map<std::size_t, std::string> mapNames;
  for (const CLI::App* pCommand : Commands(app)) {
    mapNames.emplace(Distance(strWord, pCommand->get_name()), pCommand->get_name());
  }
  const auto& [nDistance, strBest] = *mapNames.begin();
  return "there is no command '" + strWord + "'" +
         (nDistance > kAlike ? "" : "; did you mean " + strBest + "?") + " (see qxrs --help)";
}

std::string UsageMessage(const CLI::App& app, const CLI::Error& error) {
  std::string strCommand = app.get_name();
  for (const CLI::App* pApp = &app; !pApp->get_subcommands().empty();) {
    pApp = pApp->get_subcommands().front();
    strCommand += " " + pApp->get_name();
  }
  return std::string(error.what()) + " (see " + strCommand + " --help)";
}

// --help and --version, which CLI11 writes to std::cout.
int Answer(const CLI::App& app, const CLI::Success& request) {
  const int nStatus = app.exit(request);
  std::cout.flush();
  return std::cout ? nStatus : Complain("cannot write standard output", kExitFailed);
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
  CLI::App app("", "qxrs");
  app.set_version_flag("--version", "qxrs " QXRS_VERSION, "write the version and exit");
  app.require_subcommand(1);
  Action action;
  for (const auto pAdd : kCommands) {
    pAdd(app, action);
  }
  Describe(app);
  try {
    app.parse(nArguments, pszArguments);
  } catch (const CLI::Success& request) {
    return Answer(app, request);
  } catch (const CLI::ParseError& error) {
    if (app.get_subcommands().empty() && nArguments > 1 && pszArguments[1][0] != '-') {
      return Complain(UnknownCommand(app, pszArguments[1]), kExitUsage);
    }
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

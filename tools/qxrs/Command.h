// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// How a subcommand joins the tool. Each has a function Add...(), which describes its options and,
// when it is the one on the command line, hands main() the action.

#ifndef QXRECORDSET_TOOLS_COMMAND_H
#define QXRECORDSET_TOOLS_COMMAND_H

#include <CLI/CLI.hpp>

#include "tools/qxrs/Formats.h"

namespace qxrs {

// What a command does; the result is the exit status. InputError and UsageError leave it.
using Action = std::function<int()>;

inline std::vector<const CLI::App*> Commands(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App*) { return true; });
}

// What help.txt says behind a heading, from the line feed there on; nothing when there is no such
// heading.
std::string HelpSection(const std::string& strHeading);

// Gives `app` and its subcommands the texts of help.txt, and lays out --help.
void Describe(CLI::App& app);

// A subcommand, and what its options set; both live as long as the one it was added to.
template <typename Options>
struct Command {
  CLI::App& command;
  Options& options;
};

// Adds a subcommand whose action is `pRun` with its options.
template <typename Options>
Command<Options> AddCommand(CLI::App& app, Action& action, const char* szName,
                            int (*pRun)(const Options&)) {
  const auto pOptions = std::make_shared<Options>();
  CLI::App& command = *app.add_subcommand(szName);
  command.callback([=, &action] { action = [=] { return pRun(*pOptions); }; });
  return {command, *pOptions};
}

// ---- Single options -----------------------------------------------------------------------------

// An option without a value, which makes `value` what `chosen` is.
template <typename Value>
CLI::Option* AddChoice(CLI::App& command, const char* szNames, Value& value, Value chosen) {
  return command.add_flag_callback(szNames, [&value, chosen] { value = chosen; });
}

// An option whose value is a number above 0.
void AddCount(CLI::App& command, const char* szNames, unsigned& nCount);

// Names of columns, separated by commas, for an option that may be given several times.
CLI::Option* AddNames(CLI::App& command, const char* szOption, std::vector<std::string>& vNames);

void AddProgress(CLI::App& command, When& eProgress);
void AddColor(CLI::App& command, When& eColor);

// ---- What commands have in common ---------------------------------------------------------------

// Where a command for one document reads and writes.
struct FileOptions {
  std::string strInput = "-";
  std::string strOutput = "-";
  When eProgress = When::Auto;
};

void AddFileOptions(CLI::App& command, FileOptions& options);

// How rows are read or written: what concerns one format when that is fixed, else all of it, the
// option that names the format included.
void AddReadOptions(CLI::App& command, ReadOptions& options, std::optional<Format> eFixed);

// Both, and what else the commands that pass rows on have in common, but for the files.
void AddRowOptions(CLI::App& command, RowOptions& options, std::optional<Format> eReads,
                   std::optional<Format> eWrites);

// The opened files of a command for one document, and the progress bar between them.
struct Files {
  explicit Files(const FileOptions& options)
      : progress(options.eProgress),
        input(options.strInput, progress),
        output(options.strOutput, progress) {}

  Progress progress;
  Input input;
  Output output;
};

void AddConversions(CLI::App& app, Action& action);
void AddParts(CLI::App& app, Action& action);  // table, head, tail and sort
void AddSql(CLI::App& app, Action& action);
void AddStats(CLI::App& app, Action& action);
void AddDiff(CLI::App& app, Action& action);
void AddCheck(CLI::App& app, Action& action);  // normalize and dump, too
void AddGet(CLI::App& app, Action& action);    // pretty, too
void AddParams(CLI::App& app, Action& action);
void AddDescriptions(CLI::App& app, Action& action);  // completion and manual

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_COMMAND_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// How a subcommand joins the tool. Each has a function Add...(), which describes its options and,
// when it is the one on the command line, hands main() the action.

#ifndef QXRECORDSET_TOOLS_COMMAND_H
#define QXRECORDSET_TOOLS_COMMAND_H

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tools/qxrs/Formats.h"
#include "tools/qxrs/support/Input.h"
#include "tools/qxrs/support/Output.h"
#include "tools/qxrs/support/Progress.h"
#include "tools/qxrs/support/Terminal.h"

namespace qxrs {

// What a command does; the result is the exit status. InputError and UsageError leave it.
using Action = std::function<int()>;

// The text of --help beside the options.
struct CommandText {
  const char* szName;
  const char* szPurpose;
  const char* szExamples;      // two command lines
  const char* szDetails = "";  // more to know, or nothing
  const char* szExitStatus = "0 done, 1 bad input or a file that fails, 2 wrong usage";
};

// How --help is laid out, for `app` and the subcommands that are added later.
void SetHelpStyle(CLI::App& app);

// For CLI::Option::check: what is wrong with a text that has to be a number above 0.
std::string CheckCount(const std::string& strText);

// Adds a subcommand without options.
CLI::App* AddCommand(CLI::App& app, const CommandText& text);

// Makes `pRun` with these options the action when `command` is on the command line.
template <typename Options>
void SetAction(CLI::App& command, Action& action, std::shared_ptr<const Options> pOptions,
               int (*pRun)(const Options&)) {
  command.callback([=, &action] { action = [=] { return pRun(*pOptions); }; });
}

// Where a command for one document reads and writes.
struct FileOptions {
  std::string strInput = "-";
  std::string strOutput = "-";
  When eProgress = When::Auto;
};

void AddInputOption(CLI::App& command, std::string& strInput, const char* szWhat);
void AddRequired(CLI::App& command, const char* szName, std::string& strText, const char* szWhat);
void AddOutputOption(CLI::App& command, std::string& strOutput);
void AddProgressOptions(CLI::App& command, When& eProgress);
void AddFileOptions(CLI::App& command, FileOptions& options, const char* szWhat);  // all of these
void AddColorOption(CLI::App& command, When& eColor);
void AddStrictOption(CLI::App& command, bool& bStrict);

// Names of columns, separated by commas, for an option that may be given several times.
CLI::Option* AddNamesOption(CLI::App& command, const std::string& strOption,
                            const std::string& strWhat, std::vector<std::string>& vNames);

// How rows are read or written: what concerns one format when that is fixed, else all of it, the
// option that names the format included.
void AddReadOptions(CLI::App& command, ReadOptions& options, std::optional<Format> eFixed);
void AddWriteOptions(CLI::App& command, WriteOptions& options, std::optional<Format> eFixed);

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
void AddTable(CLI::App& app, Action& action);
void AddParts(CLI::App& app, Action& action);  // head, tail and sort
void AddSql(CLI::App& app, Action& action);
void AddStats(CLI::App& app, Action& action);
void AddDiff(CLI::App& app, Action& action);
void AddNormalize(CLI::App& app, Action& action);
void AddDump(CLI::App& app, Action& action);
void AddPretty(CLI::App& app, Action& action);
void AddGet(CLI::App& app, Action& action);
void AddCheck(CLI::App& app, Action& action);
void AddParams(CLI::App& app, Action& action);
void AddDescriptions(CLI::App& app, Action& action);  // completion and manual

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_COMMAND_H

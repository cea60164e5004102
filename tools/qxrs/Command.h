// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// How a subcommand joins the tool. Each has a source file of its own with one function Add...(),
// which describes its options and, when it is the one on the command line, hands main() the action.

#ifndef QXRECORDSET_TOOLS_COMMAND_H
#define QXRECORDSET_TOOLS_COMMAND_H

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <string>

#include "tools/qxrs/rows/Integers.h"
#include "tools/qxrs/rows/Rows.h"
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

// Where a command reads and writes.
struct FileOptions {
  std::string strInput = "-";
  std::string strOutput = "-";
  When eProgress = When::Auto;
};

void AddInputOption(CLI::App& command, FileOptions& options, const char* szWhat);
void AddProgressOptions(CLI::App& command, FileOptions& options);
void AddOutputOptions(CLI::App& command, FileOptions& options);  // -o and those of progress
void AddColorOption(CLI::App& command, When& eColor);
void AddLongSizeOption(CLI::App& command, LongSize& eLong);

// The opened files of a command, and the progress bar between them.
struct Files {
  explicit Files(const FileOptions& options)
      : progress(options.eProgress),
        input(options.strInput, progress),
        output(options.strOutput, progress) {}

  Progress progress;
  Input input;
  Output output;
};

// Passes the rows of `source` to `sink`, and what that wrote to its place.
inline int Convert(RowSource& source, RowSink& sink, Output& output) {
  Copy(source, sink);
  output.Commit();
  return 0;
}

void AddFromCsv(CLI::App& app, Action& action);
void AddFromTsv(CLI::App& app, Action& action);
void AddFromJson(CLI::App& app, Action& action);
void AddFromJsonl(CLI::App& app, Action& action);
void AddFromSql(CLI::App& app, Action& action);
void AddToCsv(CLI::App& app, Action& action);
void AddToTsv(CLI::App& app, Action& action);
void AddToJson(CLI::App& app, Action& action);
void AddToJsonl(CLI::App& app, Action& action);
void AddToSql(CLI::App& app, Action& action);
void AddTable(CLI::App& app, Action& action);
void AddStats(CLI::App& app, Action& action);
void AddDiff(CLI::App& app, Action& action);
void AddNormalize(CLI::App& app, Action& action);
void AddDump(CLI::App& app, Action& action);
void AddPretty(CLI::App& app, Action& action);
void AddGet(CLI::App& app, Action& action);
void AddCheck(CLI::App& app, Action& action);
void AddParams(CLI::App& app, Action& action);
void AddCompletion(CLI::App& app, Action& action);
void AddManual(CLI::App& app, Action& action);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_COMMAND_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What the subcommands share on the command line.

#include "tools/qxrs/Command.h"

#include <algorithm>

namespace qxrs {

namespace {

constexpr std::size_t kOptionWidth = 26;  // columns for the options' names in --help
constexpr std::size_t kTextWidth = 52;    // columns for what is said about them
constexpr std::size_t kFooterWidth = 72;  // columns for what follows; man indents it by seven

// `strText` in lines of at most `nWidth` bytes.
std::string Wrapped(std::string strText, std::size_t nWidth) {
  std::replace(strText.begin(), strText.end(), '\n', ' ');
  std::size_t nLine = 0;
  while (strText.size() - nLine > nWidth) {
    const std::size_t nBreak = strText.rfind(' ', nLine + nWidth);
    if (nBreak == std::string::npos || nBreak <= nLine) break;
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
    return Wrapped(pOption->get_description(), kTextWidth);
  }

  std::string make_subcommand(const CLI::App* pCommand) const override {
    std::stringstream stream;
    CLI::detail::format_help(stream, pCommand->get_name(),
                             Wrapped(pCommand->get_description(), kTextWidth), kOptionWidth);
    return stream.str();
  }
};

}  // namespace

void SetHelpStyle(CLI::App& app) { app.formatter(std::make_shared<HelpFormatter>()); }

CLI::App& AddCommand(CLI::App& app, const CommandText& text) {
  CLI::App& command = *app.add_subcommand(text.szName, text.szPurpose);
  std::string strFooter = Wrapped(text.szDetails, kFooterWidth);
  strFooter += strFooter.empty() ? "" : "\n\n";
  strFooter +=
      std::string("Examples:\n") + text.szExamples + "\n\nExit status: " + text.szExitStatus;
  command.footer(strFooter);
  return command;
}

// ---- Single options -----------------------------------------------------------------------------

void AddCount(CLI::App& command, const char* szNames, unsigned& nCount, const char* szType,
              const char* szWhat) {
  AddValue(command, szNames, nCount, szType, szWhat)->check([](const std::string& strText) {
    const bool bDigits = strText.find_first_not_of("0123456789") == std::string::npos;
    const bool bZero = strText.find_first_not_of('0') == std::string::npos;
    return bDigits && !bZero ? "" : "'" + strText + "' is not a number above 0";
  });
}

void AddRequired(CLI::App& command, const char* szName, std::string& strText, const char* szWhat) {
  AddValue(command, szName, strText, "", szWhat)->required();
}

void AddInput(CLI::App& command, std::string& strInput, const char* szWhat) {
  AddValue(command, "FILE", strInput, "", std::string(szWhat) + "; - is standard input");
}

void AddOutput(CLI::App& command, std::string& strOutput) {
  AddValue(command, "-o,--output", strOutput, "FILE",
           "write to FILE instead of standard output; .gz and .zst are compressed");
}

void AddProgress(CLI::App& command, When& eProgress) {
  AddChoice(command, "--progress", eProgress, When::Always,
            "show progress on standard error, whatever that is and however short the work; the "
            "default is for long work on a terminal");
  AddChoice(command, "--no-progress", eProgress, When::Never, "show no progress");
}

void AddColor(CLI::App& command, When& eColor) {
  const auto Set = [&eColor](const std::string& strWhen) {
    eColor = strWhen == "auto" ? When::Auto : strWhen == "always" ? When::Always : When::Never;
  };
  command
      .add_option_function<std::string>(
          "--color", Set,
          "auto (the default: on a terminal, unless NO_COLOR is set), always or never")
      ->type_name("WHEN")
      ->check(CLI::IsMember({"auto", "always", "never"}).description(""));
}

void AddStrict(CLI::App& command, bool& bStrict) {
  command.add_flag("--strict", bStrict, "make an error of what would be a warning");
}

void AddFileOptions(CLI::App& command, FileOptions& options, const char* szWhat) {
  AddInput(command, options.strInput, szWhat);
  AddOutput(command, options.strOutput);
  AddProgress(command, options.eProgress);
}

namespace {

// Names stand like the fields of a line of CSV.
void AppendNames(const std::string& strLine, std::vector<std::string>& vNames) {
  Progress noProgress(When::Never);
  Input input(strLine, "names", noProgress);
  CsvReading reading;
  reading.chDelimiter = ',';
  try {
    const auto pRow = OpenCsvRows(input, reading);
    for (const Column& column : pRow->GetColumns()) {
      vNames.push_back(column.strName);
    }
  } catch (const InputError& error) {
    throw CLI::ValidationError(error.what());
  }
}

}  // namespace

CLI::Option* AddNames(CLI::App& command, const char* szOption, std::vector<std::string>& vNames,
                      const std::string& strWhat) {
  const auto Append = [&vNames](const std::vector<std::string>& vLines) {
    for (const std::string& strLine : vLines) {
      AppendNames(strLine, vNames);
    }
  };
  return command
      .add_option_function<std::vector<std::string>>(
          szOption, Append, strWhat + "; separated by commas, one with a comma in it in quotes")
      ->allow_extra_args(false)
      ->type_name("NAMES");
}

// ---- Reading and writing rows -------------------------------------------------------------------

namespace {

void AddFormat(CLI::App& command, const char* szOption, std::optional<Format>& eFormat,
               const char* szWhat) {
  const auto Set = [&eFormat](const std::string& strName) {
    eFormat = FormatNamed(strName);
    if (!eFormat) throw CLI::ValidationError("there is no format '" + strName + "'");
  };
  command.add_option_function<std::string>(szOption, Set, szWhat)->type_name("FORMAT");
}

CLI::Option* AddDelimiter(CLI::App& command, const char* szOption, char& chDelimiter,
                          const char* szWhat) {
  return AddValue(command, szOption, chDelimiter, "CHARACTER", szWhat)
      ->transform([](const std::string& strText) { return strText == "\\t" ? "\t" : strText; })
      ->check([](const std::string& strText) {
        const bool bUsable =
            strText.size() == 1 && strText.find_first_of("\"\r\n") == std::string::npos;
        return bUsable ? std::string() : "not one character that can stand between fields";
      });
}

// Whether options for a format are wanted: those of all formats are, when none is fixed.
bool Concerns(std::optional<Format> eFixed, std::initializer_list<Format> formats) {
  return !eFixed || std::find(formats.begin(), formats.end(), *eFixed) != formats.end();
}

void AddCsvWriting(CLI::App& command, WriteOptions& options, std::optional<Format> eFixed) {
  const bool bCsv = Concerns(eFixed, {Format::Csv});
  if (bCsv) {
    AddDelimiter(command, eFixed ? "-d,--delimiter" : "--to-delimiter", options.csv.chDelimiter,
                 "between the fields that are written; \\t is a tab")
        ->each([&options](const std::string&) { options.bOwnDelimiter = true; });
  }
  AddValue(command, eFixed ? "--null" : "--to-null", options.csv.strNull, "TEXT",
           "write TEXT for null; the default is nothing");
  command.add_flag("--crlf", options.csv.bCrLf, "end lines as other systems do");
  command.add_flag("--bom", options.csv.bMark, "write a byte order mark in front");
  if (bCsv) command.add_flag("--quote-all", options.csv.bQuoteAll, "put every field in quotes");
}

void AddTableWriting(CLI::App& command, SqlTarget& target) {
  AddNames(command, "--key", target.vKey, "the primary key of a table that is made");
  CLI::Option* pReplace = AddChoice(command, "--replace", target.eExisting,
                                    SqlTarget::Existing::Replace, "replace a table of that name");
  AddChoice(command, "--append", target.eExisting, SqlTarget::Existing::Append,
            "add the rows to the table of that name")
      ->excludes(pReplace);
}

void AddWriteOptions(CLI::App& command, WriteOptions& options, std::optional<Format> eFixed) {
  if (!eFixed) {
    AddFormat(command, "--to", options.eTo,
              "the format of the output: rs, json, jsonl, csv, tsv, sql or table; the default is "
              "what the file's name ends in, else rs");
  }
  if (Concerns(eFixed, {Format::Csv, Format::Tsv})) AddCsvWriting(command, options, eFixed);
  if (Concerns(eFixed, {Format::RecordSet})) {
    AddChoice(command, "--texts", options.eTexts, HostTexts::Host64,
              "make texts of what hosts lose: reals, arrays, integers that a long cannot hold");
    AddChoice(command, "--32-bit", options.eTexts, HostTexts::Host32,
              "the same for hosts of 32 bits");
  }
  if (Concerns(eFixed, {Format::Sql})) AddTableWriting(command, options.sql);
  if (eFixed != Format::Sql && eFixed != Format::Table) {
    command.add_flag("--unbuffered", options.bUnbuffered,
                     "write each row as soon as it is read; the columns of CSV and TSV are those "
                     "of the first row");
  }
  if (Concerns(eFixed, {Format::Table})) {
    AddCount(command, "-w,--width", options.nWidth, "COLUMNS",
             "cut a table to lines of COLUMNS; the default is the width of the terminal, if there "
             "is one");
    AddColor(command, options.eColor);
  }
}

}  // namespace

void AddReadOptions(CLI::App& command, ReadOptions& options, std::optional<Format> eFixed) {
  if (Concerns(eFixed, {Format::RecordSet})) {
    AddFormat(command, "--from", options.eFrom,
              "the format of the input: rs (record set text), json, jsonl, csv, tsv or sql; the "
              "default is what the file's name ends in, else rs or json");
  }
  if (Concerns(eFixed, {Format::Csv})) {
    AddDelimiter(command, "-d,--delimiter", options.csv.chDelimiter,
                 "between the fields of CSV; \\t is a tab; the default is what the first line "
                 "has: a comma, a semicolon or a tab");
  }
  if (Concerns(eFixed, {Format::RecordSet, Format::Csv, Format::Tsv})) {
    command.add_flag("-i,--infer", options.bInfer,
                     "make integers, reals and booleans of columns of texts that all read like "
                     "that");
  }
  if (Concerns(eFixed, {Format::Csv, Format::Tsv})) {
    AddValue(command, "--null", options.csv.strNull, "TEXT",
             "a field that reads TEXT is null, too");
    AddNames(command, "--names", options.csv.vNames,
             "the names of the columns, when the first line is a row, too");
  }
  if (!eFixed) {
    AddValue(command, "--query", options.strQuery, "SQL",
             "the rows of a database: those of this query");
    AddValue(command, "--table", options.strTable, "TABLE", "or those of this table");
  }
  AddNames(command, "-c,--columns", options.vColumns, "only these columns, in this order");
}

void AddRowOptions(CLI::App& command, RowOptions& options, std::optional<Format> eReads,
                   std::optional<Format> eWrites) {
  AddReadOptions(command, options.read, eReads);
  AddWriteOptions(command, options.write, eWrites);
  AddStrict(command, options.bStrict);
  AddProgress(command, options.eProgress);
}

}  // namespace qxrs

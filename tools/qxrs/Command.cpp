// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What the subcommands share on the command line.

#include "tools/qxrs/Command.h"

#include <algorithm>

#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

constexpr const char* kStrict = "make an error of what would be a warning";

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

std::string CheckCount(const std::string& strText) {
  const bool bDigits = strText.find_first_not_of("0123456789") == std::string::npos;
  const bool bZero = strText.find_first_not_of('0') == std::string::npos;
  return bDigits && !bZero ? "" : "'" + strText + "' is not a number above 0";
}

CLI::App* AddCommand(CLI::App& app, const CommandText& text) {
  CLI::App* pCommand = app.add_subcommand(text.szName, text.szPurpose);
  std::string strFooter = Wrapped(text.szDetails, kFooterWidth);
  strFooter += strFooter.empty() ? "" : "\n\n";
  strFooter +=
      std::string("Examples:\n") + text.szExamples + "\n\nExit status: " + text.szExitStatus;
  pCommand->footer(strFooter);
  return pCommand;
}

void AddInputOption(CLI::App& command, std::string& strInput, const char* szWhat) {
  command.add_option("FILE", strInput, std::string(szWhat) + "; - is standard input")
      ->type_name("")
      ->capture_default_str();
}

void AddRequired(CLI::App& command, const char* szName, std::string& strText, const char* szWhat) {
  command.add_option(szName, strText, szWhat)->type_name("")->required();
}

void AddOutputOption(CLI::App& command, std::string& strOutput) {
  command
      .add_option("-o,--output", strOutput,
                  "write to FILE instead of standard output; .gz and .zst are compressed")
      ->type_name("FILE")
      ->default_str("");
}

void AddProgressOptions(CLI::App& command, When& eProgress) {
  command.add_flag_callback(
      "--progress", [&eProgress] { eProgress = When::Always; },
      "show progress on standard error, whatever that is and however short the work; the default "
      "is for long work on a terminal");
  command.add_flag_callback(
      "--no-progress", [&eProgress] { eProgress = When::Never; }, "show no progress");
}

void AddFileOptions(CLI::App& command, FileOptions& options, const char* szWhat) {
  AddInputOption(command, options.strInput, szWhat);
  AddOutputOption(command, options.strOutput);
  AddProgressOptions(command, options.eProgress);
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

void AddStrictOption(CLI::App& command, bool& bStrict) {
  command.add_flag("--strict", bStrict, kStrict);
}

// ---- Names of columns ---------------------------------------------------------------------------

namespace {

// Names stand like the fields of a line of CSV.
void AppendNames(const std::string& strLine, std::vector<std::string>& vNames) {
  Progress noProgress(When::Never);
  Input input(strLine, "names", noProgress);
  CsvReading reading;
  reading.chDelimiter = ',';
  try {
    const CsvSource names(input, reading);
    for (const Column& column : names.GetColumns()) {
      vNames.push_back(column.strName);
    }
  } catch (const InputError& error) {
    throw CLI::ValidationError(error.what());
  }
}

}  // namespace

CLI::Option* AddNamesOption(CLI::App& command, const std::string& strOption,
                            const std::string& strWhat, std::vector<std::string>& vNames) {
  return command
      .add_option_function<std::vector<std::string>>(
          strOption,
          [&vNames](const std::vector<std::string>& vLines) {
            for (const std::string& strLine : vLines) {
              AppendNames(strLine, vNames);
            }
          },
          strWhat + "; separated by commas, one with a comma in it in quotes")
      ->allow_extra_args(false)
      ->type_name("NAMES");
}

// ---- Reading and writing rows -------------------------------------------------------------------

namespace {

void AddFormatOption(CLI::App& command, const char* szOption, std::optional<Format>& eFormat,
                     const std::string& strWhat) {
  command
      .add_option_function<std::string>(
          szOption,
          [&eFormat](const std::string& strName) {
            eFormat = FormatNamed(strName);
            if (!eFormat) throw CLI::ValidationError("there is no format '" + strName + "'");
          },
          strWhat)
      ->type_name("FORMAT");
}

CLI::Option* AddDelimiterOption(CLI::App& command, const char* szOption, char& chDelimiter,
                                const char* szWhat) {
  return command.add_option(szOption, chDelimiter, szWhat)
      ->type_name("CHARACTER")
      ->default_str("")
      ->transform([](const std::string& strText) { return strText == "\\t" ? "\t" : strText; })
      ->check([](const std::string& strText) {
        const bool bUsable =
            strText.size() == 1 && strText.find_first_of("\"\r\n") == std::string::npos;
        return bUsable ? std::string() : "not one character that can stand between fields";
      });
}

bool IsDelimited(std::optional<Format> eFixed) {
  return !eFixed || eFixed == Format::Csv || eFixed == Format::Tsv;
}

}  // namespace

void AddReadOptions(CLI::App& command, ReadOptions& options, std::optional<Format> eFixed) {
  const bool bAny = eFixed.value_or(Format::RecordSet) == Format::RecordSet;
  if (bAny) {
    AddFormatOption(command, "--from", options.eFrom,
                    "the format of the input: rs (record set text), json, jsonl, csv, tsv or sql; "
                    "the default is what the file's name ends in, else rs or json");
  }
  if (!eFixed || eFixed == Format::Csv) {
    AddDelimiterOption(command, "-d,--delimiter", options.csv.chDelimiter,
                       "between the fields of CSV; \\t is a tab; the default is what the first "
                       "line has: a comma, a semicolon or a tab");
  }
  if (bAny || IsDelimited(eFixed)) {
    command.add_flag("-i,--infer", options.bInfer,
                     "make integers, reals and booleans of columns of texts that all read like "
                     "that");
  }
  if (IsDelimited(eFixed)) {
    command.add_option("--null", options.csv.strNull, "a field that reads TEXT is null, too")
        ->type_name("TEXT");
    AddNamesOption(command, "--names",
                   "the names of the columns, when the first line is a row, too",
                   options.csv.vNames);
  }
  if (!eFixed) {
    command.add_option("--query", options.strQuery, "the rows of a database: those of this query")
        ->type_name("SQL");
    command.add_option("--table", options.strTable, "or those of this table")->type_name("TABLE");
  }
  AddNamesOption(command, "-c,--columns", "only these columns, in this order", options.vColumns);
}

void AddWriteOptions(CLI::App& command, WriteOptions& options, std::optional<Format> eFixed) {
  if (!eFixed) {
    AddFormatOption(command, "--to", options.eTo,
                    "the format of the output: rs, json, jsonl, csv, tsv, sql or table; the "
                    "default is what the file's name ends in, else rs");
  }
  if (IsDelimited(eFixed)) {
    const bool bCsv = !eFixed || eFixed == Format::Csv;
    if (bCsv) {
      AddDelimiterOption(command, eFixed ? "-d,--delimiter" : "--to-delimiter",
                         options.csv.chDelimiter,
                         "between the fields that are written; \\t is a tab")
          ->each([&options](const std::string&) { options.bOwnDelimiter = true; });
    }
    command
        .add_option(eFixed ? "--null" : "--to-null", options.csv.strNull,
                    "write TEXT for null; the default is nothing")
        ->type_name("TEXT");
    command.add_flag("--crlf", options.csv.bCrLf, "end lines as other systems do");
    command.add_flag("--bom", options.csv.bMark, "write a byte order mark in front");
    if (bCsv) command.add_flag("--quote-all", options.csv.bQuoteAll, "put every field in quotes");
  }
  if (eFixed.value_or(Format::RecordSet) == Format::RecordSet) {
    command.add_flag_callback(
        "--texts", [&options] { options.eTexts = JsonSink::Texts::Host64; },
        "make texts of what hosts lose: reals, arrays, integers that a long cannot hold");
    command.add_flag_callback(
        "--32-bit", [&options] { options.eTexts = JsonSink::Texts::Host32; },
        "the same for hosts of 32 bits");
  }
  if (!eFixed || eFixed == Format::Sql) {
    SqlTarget& target = options.sql;
    AddNamesOption(command, "--key", "the primary key of a table that is made", target.vKey);
    CLI::Option* pReplace = command.add_flag_callback(
        "--replace", [&target] { target.eExisting = SqlTarget::Existing::Replace; },
        "replace a table of that name");
    command
        .add_flag_callback(
            "--append", [&target] { target.eExisting = SqlTarget::Existing::Append; },
            "add the rows to the table of that name")
        ->excludes(pReplace);
  }
  if (eFixed != Format::Sql && eFixed != Format::Table) {
    command.add_flag("--unbuffered", options.bUnbuffered,
                     "write each row as soon as it is read; the columns of CSV and TSV are those "
                     "of the first row");
  }
  if (!eFixed || eFixed == Format::Table) {
    command
        .add_option("-w,--width", options.nWidth,
                    "cut a table to lines of COLUMNS; the default is the width of the terminal, "
                    "if there is one")
        ->type_name("COLUMNS")
        ->check(CheckCount);
    AddColorOption(command, options.eColor);
  }
}

void AddRowOptions(CLI::App& command, RowOptions& options, std::optional<Format> eReads,
                   std::optional<Format> eWrites) {
  AddReadOptions(command, options.read, eReads);
  AddWriteOptions(command, options.write, eWrites);
  command.add_flag("--strict", options.bStrict, kStrict);
  AddProgressOptions(command, options.eProgress);
}

}  // namespace qxrs

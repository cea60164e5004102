// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What the subcommands share on the command line, and what help says about them.

#include "tools/qxrs/Command.h"

#include <algorithm>

#include "qxrs_help.h"  // kHelp: help.txt

namespace qxrs {

namespace {

constexpr const char* kExitStatus =
    "\n\nExit status: 0 done, 1 bad input or a file that fails, 2 wrong usage";

constexpr std::size_t kOptionWidth = 26;  // columns for the options' names in --help
constexpr std::size_t kTextWidth = 52;    // columns for what is said about them

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

// Gives an option its type and its text, when they stand in the section: "- --rows COUNT: text".
bool DescribeOption(CLI::Option& option, const std::string& strSection) {
  const auto& vLong = option.get_lnames();
  const std::string strName = "\n- " + (vLong.empty() ? option.get_name() : "--" + vLong.front());
  for (std::size_t n = 0; (n = strSection.find(strName, n)) != std::string::npos;) {
    n += strName.size();
    if (strSection[n] != ' ' && strSection[n] != ':') continue;
    const std::size_t nText = strSection.find(": ", n);
    option.type_name(strSection[n] == ' ' ? strSection.substr(n + 1, nText - n - 1) : "");
    option.description(strSection.substr(nText + 2, strSection.find('\n', nText) - nText - 2));
    return true;
  }
  return false;
}

void DescribeCommand(CLI::App& app, const std::string& strName) {
  static const std::string strCommon = HelpSection("*");
  const std::string strSection = HelpSection(strName);
  app.formatter(std::make_shared<HelpFormatter>());
  const std::size_t nOptions = strSection.find("\n- ");
  const std::size_t nMore = strSection.find("\n\n") + 2;
  app.description(strSection.substr(1, nMore - 3));
  std::string strMore = strSection.substr(nMore, nOptions - nMore);
  strMore.erase(strMore.find_last_not_of('\n') + 1);
  app.footer(strMore + (strMore.find("Exit status:") == std::string::npos ? kExitStatus : ""));
  for (CLI::Option* pOption : app.get_options()) {
    if (!DescribeOption(*pOption, strSection)) DescribeOption(*pOption, strCommon);
  }
  const bool bNested = app.get_parent() != nullptr;
  for (CLI::App* pCommand : app.get_subcommands([](const CLI::App*) { return true; })) {
    DescribeCommand(*pCommand, (bNested ? strName + " " : "") + pCommand->get_name());
  }
}

}  // namespace

std::string HelpSection(const std::string& strHeading) {
  const std::string strHead = "\n= " + strHeading + "\n";
  const std::size_t nHead = kHelp.find(strHead);
  if (nHead == std::string_view::npos) return {};
  const std::size_t nBegin = nHead + strHead.size() - 1;
  return std::string(kHelp.substr(nBegin, kHelp.find("\n= ", nBegin) - nBegin)) + '\n';
}

void Describe(CLI::App& app) { DescribeCommand(app, app.get_name()); }

// ---- Single options -----------------------------------------------------------------------------

void AddCount(CLI::App& command, const char* szNames, unsigned& nCount) {
  command.add_option(szNames, nCount)->check([](const std::string& strText) {
    const bool bDigits = strText.find_first_not_of("0123456789") == std::string::npos;
    const bool bZero = strText.find_first_not_of('0') == std::string::npos;
    return bDigits && !bZero ? "" : "'" + strText + "' is not a number above 0";
  });
}

void AddProgress(CLI::App& command, When& eProgress) {
  AddChoice(command, "--progress", eProgress, When::Always);
  AddChoice(command, "--no-progress", eProgress, When::Never);
}

void AddColor(CLI::App& command, When& eColor) {
  const auto Set = [&eColor](const std::string& strWhen) {
    eColor = strWhen == "auto" ? When::Auto : strWhen == "always" ? When::Always : When::Never;
  };
  command.add_option_function<std::string>("--color", Set)
      ->check(CLI::IsMember({"auto", "always", "never"}).description(""));
}

void AddFileOptions(CLI::App& command, FileOptions& options) {
  command.add_option("FILE", options.strInput);
  command.add_option("-o,--output", options.strOutput);
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

CLI::Option* AddNames(CLI::App& command, const char* szOption, std::vector<std::string>& vNames) {
  const auto Append = [&vNames](const std::vector<std::string>& vLines) {
    for (const std::string& strLine : vLines) {
      AppendNames(strLine, vNames);
    }
  };
  return command.add_option_function<std::vector<std::string>>(szOption, Append)
      ->allow_extra_args(false);
}

// ---- Reading and writing rows -------------------------------------------------------------------

namespace {

void AddFormat(CLI::App& command, const char* szOption, std::optional<Format>& eFormat) {
  command.add_option_function<std::string>(szOption, [&eFormat](const std::string& strName) {
    eFormat = FormatNamed(strName);
    if (!eFormat) throw CLI::ValidationError("there is no format '" + strName + "'");
  });
}

CLI::Option* AddDelimiter(CLI::App& command, const char* szOption, char& chDelimiter) {
  return command.add_option(szOption, chDelimiter)
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
    AddDelimiter(command, eFixed ? "-d,--delimiter" : "--to-delimiter", options.csv.chDelimiter)
        ->each([&options](const std::string&) { options.bOwnDelimiter = true; });
  }
  command.add_option(eFixed ? "--null" : "--to-null", options.csv.strNull);
  command.add_flag("--crlf", options.csv.bCrLf);
  command.add_flag("--bom", options.csv.bMark);
  if (bCsv) command.add_flag("--quote-all", options.csv.bQuoteAll);
}

void AddWriteOptions(CLI::App& command, WriteOptions& options, std::optional<Format> eFixed) {
  if (!eFixed) AddFormat(command, "--to", options.eTo);
  if (Concerns(eFixed, {Format::Csv, Format::Tsv})) AddCsvWriting(command, options, eFixed);
  if (Concerns(eFixed, {Format::RecordSet})) {
    AddChoice(command, "--texts", options.eTexts, HostTexts::Host64);
    AddChoice(command, "--32-bit", options.eTexts, HostTexts::Host32);
  }
  if (Concerns(eFixed, {Format::Sql})) {
    auto& eExisting = options.sql.eExisting;
    AddNames(command, "--key", options.sql.vKey);
    auto* pReplace = AddChoice(command, "--replace", eExisting, SqlTarget::Existing::Replace);
    AddChoice(command, "--append", eExisting, SqlTarget::Existing::Append)->excludes(pReplace);
  }
  if (eFixed != Format::Sql && eFixed != Format::Table) {
    command.add_flag("--unbuffered", options.bUnbuffered);
  }
  if (Concerns(eFixed, {Format::Table})) {
    AddCount(command, "-w,--width", options.nWidth);
    AddColor(command, options.eColor);
  }
}

}  // namespace

void AddReadOptions(CLI::App& command, ReadOptions& options, std::optional<Format> eFixed) {
  if (Concerns(eFixed, {Format::RecordSet})) AddFormat(command, "--from", options.eFrom);
  if (Concerns(eFixed, {Format::Csv})) {
    AddDelimiter(command, "-d,--delimiter", options.csv.chDelimiter);
  }
  if (Concerns(eFixed, {Format::RecordSet, Format::Csv, Format::Tsv})) {
    command.add_flag("-i,--infer", options.bInfer);
  }
  if (Concerns(eFixed, {Format::Csv, Format::Tsv})) {
    command.add_option("--null", options.csv.strNull);
    AddNames(command, "--names", options.csv.vNames);
  }
  if (!eFixed) {
    command.add_option("--query", options.strQuery);
    command.add_option("--table", options.strTable);
  }
  AddNames(command, "-c,--columns", options.vColumns);
}

void AddRowOptions(CLI::App& command, RowOptions& options, std::optional<Format> eReads,
                   std::optional<Format> eWrites) {
  AddReadOptions(command, options.read, eReads);
  AddWriteOptions(command, options.write, eWrites);
  command.add_flag("--strict", options.bStrict);
  AddProgress(command, options.eProgress);
}

}  // namespace qxrs

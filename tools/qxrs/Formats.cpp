// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Opening sources and sinks by format.

#include "tools/qxrs/Formats.h"

#include <algorithm>
#include <utility>

#include "tools/qxrs/rows/Rows.h"
#include "tools/qxrs/rows/Spool.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

// Names of formats, and endings of files.
constexpr std::pair<const char*, Format> kFormats[] = {
    {"rs", Format::RecordSet}, {"json", Format::Json},   {"jsonl", Format::Jsonl},
    {"ndjson", Format::Jsonl}, {"csv", Format::Csv},     {"tsv", Format::Tsv},
    {"tab", Format::Tsv},      {"sql", Format::Sql},     {"db", Format::Sql},
    {"sqlite", Format::Sql},   {"sqlite3", Format::Sql}, {"table", Format::Table}};

// The table of a database that is read when none is named: the only one there is.
std::string OnlyTable(Database& database, const std::string& strPath) {
  const std::vector<std::string> vTables = database.Tables();
  if (vTables.size() == 1) return vTables.front();
  std::string strNames;
  for (const std::string& strTable : vTables) {
    strNames += (strNames.empty() ? ": " : ", ") + strTable;
  }
  throw InputError(strPath + " has " + std::to_string(vTables.size()) +
                   " tables; name one with --table" + strNames);
}

std::unique_ptr<RowSource> OpenTables(const ReadOptions& options, Progress& progress) {
  const auto pDatabase = OpenDatabase(options.strInput, DatabaseMode::Read);
  if (!options.strQuery.empty()) return OpenQuery(pDatabase, options.strQuery, progress);
  const std::string strTable =
      options.strTable.empty() ? OnlyTable(*pDatabase, options.strInput) : options.strTable;
  return OpenQuery(pDatabase, "SELECT * FROM " + pDatabase->Quoted(strTable), progress);
}

JsonForm FormOf(Format eFormat) {
  return eFormat == Format::Jsonl  ? JsonForm::Lines
         : eFormat == Format::Json ? JsonForm::Array
                                   : JsonForm::RecordSet;
}

std::unique_ptr<RowSource> OpenText(Format eFormat, const ReadOptions& options, Input& input,
                                    Warnings& warnings) {
  if (eFormat == Format::Table) throw UsageError("a table for people cannot be read");
  if (eFormat != Format::Csv && eFormat != Format::Tsv) {
    return OpenJsonRows(input, FormOf(eFormat), warnings);
  }
  CsvReading csv = options.csv;
  csv.eDialect = eFormat == Format::Tsv ? Dialect::Tsv : Dialect::Csv;
  return OpenCsvRows(input, std::move(csv));
}

}  // namespace

std::optional<Format> FormatNamed(const std::string& strName) {
  for (const auto& [szName, eFormat] : kFormats) {
    if (strName == szName) return eFormat;
  }
  return std::nullopt;
}

std::optional<Format> FormatOfFile(const std::string& strPath) {
  if (IsOdbc(strPath)) return Format::Sql;
  const std::string strName = strPath.substr(0, strPath.size() - CompressionSuffix(strPath).size());
  const std::size_t nDot = strName.find_last_of("./");
  if (nDot == std::string::npos || strName[nDot] != '.') return std::nullopt;
  return FormatNamed(strName.substr(nDot + 1));
}

OpenedRows OpenRows(const ReadOptions& options, Progress& progress, Warnings& warnings) {
  const Format eFormat =
      options.eFrom ? *options.eFrom : FormatOfFile(options.strInput).value_or(Format::Json);
  OpenedRows opened;
  if (eFormat == Format::Sql) {
    opened.pRows = OpenTables(options, progress);
    opened.strName = options.strInput;
  } else {
    opened.pInput = std::make_unique<Input>(options.strInput, progress);
    opened.strName = opened.pInput->Name();
    opened.pRows = OpenText(eFormat, options, *opened.pInput, warnings);
  }
  if (!options.vColumns.empty()) {
    opened.pRows = SelectColumns(std::move(opened.pRows), options.vColumns);
  }
  if (options.nMost != 0) opened.pRows = FirstRows(std::move(opened.pRows), options.nMost);
  if (options.bInfer) {
    opened.pRows = std::make_unique<SpooledRows>(*opened.pRows, SpooledRows::Kinds::Inferred);
  }
  return opened;
}

namespace {

std::unique_ptr<RowSink> OpenSink(Format eFormat, const WriteOptions& options, Output& output,
                                  Warnings& warnings) {
  if (eFormat != Format::Csv && eFormat != Format::Tsv) {
    return OpenJsonSink(output, FormOf(eFormat), options.eTexts, warnings);
  }
  CsvWriting csv = options.csv;
  csv.eDialect = eFormat == Format::Tsv ? Dialect::Tsv : Dialect::Csv;
  if (eFormat == Format::Tsv && !options.bOwnDelimiter) csv.chDelimiter = '\t';
  return OpenCsvSink(output, std::move(csv), warnings);
}

void WriteText(RowSource& rows, Format eFormat, const WriteOptions& options, Progress& progress,
               Warnings& warnings) {
  Output output(options.strOutput, progress);
  if (eFormat == Format::Table) {
    const unsigned nTerminal = output.IsTerminal() ? TerminalWidth(output.File()) : 0;
    WriteTable(rows, options.nWidth != 0 ? options.nWidth : nTerminal,
               UseColor(options.eColor, output.File()), output);
  } else {
    Copy(rows, *OpenSink(eFormat, options, output, warnings), options.bUnbuffered);
  }
  output.Commit();
}

void WriteDatabase(RowSource& rows, const WriteOptions& options, Warnings& warnings) {
  SqlTarget target = options.sql;
  if (target.strPath.empty()) target.strPath = options.strOutput;
  if (target.strTable.empty()) target.strTable = "rows";
  const bool bAppend = target.eExisting == SqlTarget::Existing::Append;
  const auto pDatabase =
      OpenDatabase(target.strPath, bAppend ? DatabaseMode::Append : DatabaseMode::Write);
  Copy(rows, *OpenTable(pDatabase, target, warnings), options.bUnbuffered);
}

}  // namespace

void WriteRows(RowSource& rows, const WriteOptions& options, Progress& progress,
               Warnings& warnings) {
  const Format eFormat =
      options.eTo ? *options.eTo : FormatOfFile(options.strOutput).value_or(Format::RecordSet);
  if (eFormat == Format::Sql) {
    WriteDatabase(rows, options, warnings);
  } else {
    WriteText(rows, eFormat, options, progress, warnings);
  }
  progress.Stop();
  warnings.Report();
}

int Convert(const RowOptions& options) { return Convert(options, {}); }

int Convert(const RowOptions& options, const Pick& pick) {
  Progress progress(options.eProgress, options.read.eFrom == Format::Sql ? Progress::Unit::Rows
                                                                         : Progress::Unit::Bytes);
  Warnings warnings(options.bStrict);
  const OpenedRows rows = OpenRows(options.read, progress, warnings);
  const auto pPicked = pick ? pick(*rows.pRows) : nullptr;
  WriteRows(pPicked ? *pPicked : *rows.pRows, options.write, progress, warnings);
  return kExitDone;
}

}  // namespace qxrs

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Opening sources and sinks by format.

#include "tools/qxrs/Formats.h"

#include <algorithm>
#include <utility>

#include "tools/qxrs/TableLayout.h"
#include "tools/qxrs/rows/Odbc.h"
#include "tools/qxrs/rows/Select.h"
#include "tools/qxrs/rows/Spool.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

using FormatName = std::pair<const char*, Format>;

constexpr FormatName kFormatNames[] = {{"rs", Format::RecordSet}, {"json", Format::Json},
                                       {"jsonl", Format::Jsonl},  {"csv", Format::Csv},
                                       {"tsv", Format::Tsv},      {"sql", Format::Sql},
                                       {"table", Format::Table}};

// Other endings of files.
constexpr FormatName kOtherEndings[] = {{"ndjson", Format::Jsonl},
                                        {"tab", Format::Tsv},
                                        {"db", Format::Sql},
                                        {"sqlite", Format::Sql},
                                        {"sqlite3", Format::Sql}};

template <std::size_t nNames>
std::optional<Format> Find(const FormatName (&aNames)[nNames], const std::string& strName) {
  const auto* const it =
      std::find_if(std::begin(aNames), std::end(aNames),
                   [&](const FormatName& name) { return strName == name.first; });
  return it == std::end(aNames) ? std::nullopt : std::optional(it->second);
}

// The name of a table that is read or written, when none is given: the only one there is, or the
// file's name without its folder and its ending.
std::string OnlyTable(Database& database, const std::string& strPath) {
  const std::vector<std::string> vTables = database.Names(
      "SELECT name FROM sqlite_schema WHERE type = 'table' AND name NOT LIKE 'sqlite^_%' ESCAPE "
      "'^'");
  if (vTables.size() == 1) return vTables.front();
  std::string strNames;
  for (const std::string& strTable : vTables) {
    strNames += (strNames.empty() ? ": " : ", ") + strTable;
  }
  throw InputError(strPath + " has " + std::to_string(vTables.size()) +
                   " tables; name one with --table" + strNames);
}

std::unique_ptr<RowSource> OpenDatabase(const ReadOptions& options, Progress& progress) {
  if (IsOdbc(options.strInput)) {
    return OpenOdbcRows(options.strInput, options.strQuery, options.strTable, progress);
  }
  auto pDatabase = std::make_shared<Database>(options.strInput, Database::Mode::Read);
  const std::string strQuery =
      !options.strQuery.empty()
          ? options.strQuery
          : "SELECT * FROM " + QuotedName(!options.strTable.empty()
                                              ? options.strTable
                                              : OnlyTable(*pDatabase, options.strInput));
  return std::make_unique<SqlSource>(std::move(pDatabase), options.strInput, strQuery, progress);
}

std::unique_ptr<RowSource> OpenText(Format eFormat, const ReadOptions& options, Input& input,
                                    Warnings& warnings) {
  switch (eFormat) {
    case Format::Csv:
    case Format::Tsv: {
      CsvReading csv = options.csv;
      csv.eDialect = eFormat == Format::Tsv ? Dialect::Tsv : Dialect::Csv;
      return std::make_unique<CsvSource>(input, std::move(csv));
    }
    case Format::Table:
      throw UsageError("a table for people cannot be read");
    default:
      return std::make_unique<JsonSource>(
          input, eFormat == Format::Jsonl ? JsonSource::Form::Lines : JsonSource::Form::Document,
          warnings);
  }
}

}  // namespace

std::optional<Format> FormatNamed(const std::string& strName) {
  return Find(kFormatNames, strName);
}

std::optional<Format> FormatOfFile(const std::string& strPath) {
  if (IsOdbc(strPath)) return Format::Sql;
  const std::string strName = strPath.substr(0, strPath.size() - CompressionSuffix(strPath).size());
  const std::size_t nDot = strName.find_last_of("./");
  if (nDot == std::string::npos || strName[nDot] != '.') return std::nullopt;
  const std::string strEnding = strName.substr(nDot + 1);
  const auto eFormat = Find(kFormatNames, strEnding);
  return eFormat ? eFormat : Find(kOtherEndings, strEnding);
}

OpenedRows OpenRows(const ReadOptions& options, Progress& progress, Warnings& warnings,
                    unsigned long long nLimit) {
  const Format eFormat =
      options.eFrom ? *options.eFrom : FormatOfFile(options.strInput).value_or(Format::Json);
  OpenedRows opened;
  if (eFormat == Format::Sql) {
    opened.pRows = OpenDatabase(options, progress);
    opened.strName = options.strInput;
  } else {
    opened.pInput = std::make_unique<Input>(options.strInput, progress);
    opened.strName = opened.pInput->Name();
    opened.pRows = OpenText(eFormat, options, *opened.pInput, warnings);
  }
  if (const auto strReason = RepeatedName(options.vColumns)) throw UsageError(*strReason);
  if (!options.vColumns.empty()) {
    opened.pRows = std::make_unique<SelectedColumns>(std::move(opened.pRows), options.vColumns);
  }
  if (nLimit != 0) opened.pRows = std::make_unique<FirstRows>(std::move(opened.pRows), nLimit);
  if (options.bInfer) {
    opened.pRows = std::make_unique<SpooledRows>(*opened.pRows, SpooledRows::Kinds::Inferred);
  }
  return opened;
}

namespace {

std::unique_ptr<RowSink> OpenSink(Format eFormat, const WriteOptions& options, Output& output,
                                  Warnings& warnings) {
  CsvWriting csv = options.csv;
  switch (eFormat) {
    case Format::Tsv:
      csv.eDialect = Dialect::Tsv;
      csv.chDelimiter = options.bOwnDelimiter ? csv.chDelimiter : '\t';
      return std::make_unique<CsvSink>(output, std::move(csv), warnings);
    case Format::Csv:
      return std::make_unique<CsvSink>(output, std::move(csv), warnings);
    default:
      break;
  }
  const JsonSink::Form eForm = eFormat == Format::Jsonl  ? JsonSink::Form::Lines
                               : eFormat == Format::Json ? JsonSink::Form::Array
                                                         : JsonSink::Form::RecordSet;
  return std::make_unique<JsonSink>(output, eForm, options.eTexts, warnings);
}

std::size_t LineWidth(const WriteOptions& options, const Output& output) {
  if (options.nWidth != 0) return options.nWidth;
  return output.IsTerminal() ? static_cast<std::size_t>(TerminalWidth(output.File()))
                             : TableLayout::kAnyWidth;
}

void WriteTable(RowSource& rows, const WriteOptions& options, Output& output) {
  SpooledRows spooled(rows, SpooledRows::Kinds::AsTheyAre);
  TableLayout(spooled, LineWidth(options, output))
      .Write(output, UseColor(options.eColor, output.File()));
}

void WriteDatabase(RowSource& rows, const WriteOptions& options, Warnings& warnings) {
  SqlTarget target = options.sql;
  target.strPath = target.strPath.empty() ? options.strOutput : target.strPath;
  target.strTable = target.strTable.empty() ? "rows" : target.strTable;
  if (IsOdbc(target.strPath)) {
    const auto pSink = OpenOdbcSink(target);
    Copy(rows, *pSink, options.bUnbuffered);
  } else {
    SqlSink sink(target, warnings);
    Copy(rows, sink, options.bUnbuffered);
  }
}

}  // namespace

void WriteRows(RowSource& rows, const WriteOptions& options, Progress& progress,
               Warnings& warnings) {
  const Format eFormat =
      options.eTo ? *options.eTo : FormatOfFile(options.strOutput).value_or(Format::RecordSet);
  if (eFormat == Format::Sql) {
    WriteDatabase(rows, options, warnings);
  } else {
    Output output(options.strOutput, progress);
    if (eFormat == Format::Table) {
      WriteTable(rows, options, output);
    } else {
      const auto pSink = OpenSink(eFormat, options, output, warnings);
      Copy(rows, *pSink, options.bUnbuffered);
    }
    output.Commit();
  }
  progress.Stop();
  warnings.Report();
}

int Convert(const RowOptions& options) {
  Progress progress(options.eProgress, options.read.eFrom == Format::Sql ? Progress::Unit::Rows
                                                                         : Progress::Unit::Bytes);
  Warnings warnings(options.bStrict);
  const OpenedRows rows = OpenRows(options.read, progress, warnings);
  WriteRows(*rows.pRows, options.write, progress, warnings);
  return kExitDone;
}

}  // namespace qxrs

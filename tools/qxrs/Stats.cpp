// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs stats: what is in a record set.

#include <algorithm>

#include "tools/qxrs/FieldOptions.h"
#include "tools/qxrs/TableLayout.h"

namespace qxrs {

namespace {

struct Options {
  FileOptions files;
  When eColor = When::Auto;
};

struct ColumnStats {
  unsigned long long nNulls = 0;
  unsigned long long nIntegers = 0;
  unsigned long long nBooleans = 0;
  unsigned long long nTexts = 0;
  unsigned long long nRecordSets = 0;
  unsigned long long nBytes = 0;    // of all texts
  unsigned long long nLongest = 0;  // bytes of the longest text

  unsigned long long Cells() const { return nNulls + nIntegers + nBooleans + nTexts + nRecordSets; }

  void Count(const Cell& cell) {
    switch (cell.eType) {
      case CQXRecordSet::QX_NULL:
        ++nNulls;
        break;
      case CQXRecordSet::QX_LONG:
        ++nIntegers;
        break;
      case CQXRecordSet::QX_BOOL:
        ++nBooleans;
        break;
      case CQXRecordSet::QX_RECORDSET:
        ++nRecordSets;
        break;
      default:
        ++nTexts;
    }
    nBytes += cell.strText.size();
    nLongest = std::max<unsigned long long>(nLongest, cell.strText.size());
  }
};

struct Stats {
  ColumnIndex columns;
  std::vector<ColumnStats> vColumns;
  unsigned long long nRows = 0;

  void Count(const Row& row) {
    std::size_t nGuess = 0;
    for (const Cell& cell : row) {
      const std::size_t nColumn = columns.FindOrAdd(cell.strColumn, nGuess);
      vColumns.resize(columns.Names().size());
      vColumns[nColumn].Count(cell);
      nGuess = nColumn + 1;
    }
    ++nRows;
  }
};

std::string Summary(const Stats& stats) {
  unsigned long long nCells = 0;
  unsigned long long nBytes = 0;
  for (const ColumnStats& column : stats.vColumns) {
    nCells += column.Cells();
    nBytes += column.nBytes;
  }
  return "rows " + std::to_string(stats.nRows) + ", columns " +
         std::to_string(stats.vColumns.size()) + ", cells " + std::to_string(nCells) +
         ", bytes of text " + std::to_string(nBytes) + "\n";
}

void WriteColumns(const Stats& stats, TableLayout& layout) {
  const std::vector<std::string> vHeads = {"column", "cells",      "null",  "integer", "boolean",
                                           "text",   "record set", "bytes", "longest"};
  layout.Begin(&vHeads);
  for (std::size_t i = 0; i < stats.vColumns.size(); ++i) {
    const ColumnStats& column = stats.vColumns[i];
    const std::vector<std::string> vNumbers = {
        std::to_string(column.Cells()),   std::to_string(column.nNulls),
        std::to_string(column.nIntegers), std::to_string(column.nBooleans),
        std::to_string(column.nTexts),    std::to_string(column.nRecordSets),
        std::to_string(column.nBytes),    std::to_string(column.nLongest)};
    Row row = {{vHeads[0], CQXRecordSet::QX_TEXT, stats.columns.Names()[i]}};
    for (std::size_t n = 0; n < vNumbers.size(); ++n) {
      row.push_back({vHeads[n + 1], CQXRecordSet::QX_LONG, vNumbers[n]});
    }
    layout.Write(row);
  }
  layout.End();
}

int Run(const Options& options) {
  Files files(options.files);
  const auto pSource = ReadRecordSet(files.input, {});
  Stats stats;
  for (Row row; pSource->Next(row);) {
    stats.Count(row);
  }
  files.output.Write(Summary(stats));
  if (!stats.vColumns.empty()) {
    TableLayout layout(files.output, TableLayout::kAnyWidth,
                       UseColor(options.eColor, files.output.File()));
    WriteColumns(stats, layout);
  }
  files.output.Commit();
  return 0;
}

}  // namespace

void AddStats(CLI::App& app, Action& action) {
  const auto pOptions = std::make_shared<Options>();
  CLI::App* pCommand = AddCommand(
      app,
      {"stats", "Count the rows, columns, cell types and bytes of record set text.",
       "  qxrs stats planets.json\n"
       "  qxrs from-sql world.db \"SELECT * FROM countries\" | qxrs stats",
       "Bytes are those of the cells' texts. Rows stream: memory does not grow with the input."});
  AddInputOption(*pCommand, pOptions->files, "the record set text");
  AddColorOption(*pCommand, pOptions->eColor);
  AddOutputOptions(*pCommand, pOptions->files);
  SetAction<Options>(*pCommand, action, pOptions, Run);
}

}  // namespace qxrs

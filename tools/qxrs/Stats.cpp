// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs stats: what is in the columns.

#include <algorithm>
#include <charconv>
#include <functional>
#include <set>

#include "tools/qxrs/Command.h"
#include "tools/qxrs/TableLayout.h"
#include "tools/qxrs/rows/Spool.h"
#include "tools/qxrs/rows/Values.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

// Counts different values by their hashes. Of many it keeps the smallest hashes, whose distance
// tells how many there are.
class DistinctCount {
 public:
  void Add(std::uint64_t nHash) {
    if (setSmallest.size() == kKept && nHash >= *setSmallest.rbegin()) return;
    setSmallest.insert(nHash);
    if (setSmallest.size() > kKept) setSmallest.erase(std::prev(setSmallest.end()));
  }

  // The number, or about the number.
  std::string Text() const {
    if (setSmallest.size() < kKept) return std::to_string(setSmallest.size());
    constexpr double kAllHashes = 18446744073709551616.0;
    const double fDistinct =
        (kKept - 1) / (static_cast<double>(*setSmallest.rbegin()) / kAllHashes);
    return "~" + std::to_string(static_cast<unsigned long long>(fDistinct));
  }

 private:
  static constexpr std::size_t kKept = 8192;  // the error is about 1 %
  std::set<std::uint64_t> setSmallest;
};

struct ColumnStats {
  unsigned long long nCells = 0;
  unsigned long long nNulls = 0;
  unsigned long long nNumbers = 0;
  std::optional<Kind> eKind;
  long double fSum = 0;
  double fMin = 0;
  double fMax = 0;
  std::string strMin;  // as they are written; of a column without numbers, of its texts
  std::string strMax;
  unsigned long long nLongest = 0;  // bytes of the longest text
  DistinctCount distinct;

  void Count(const Cell& cell, std::string& strBuffer) {
    ++nCells;
    if (cell.eKind == Kind::Null) {
      ++nNulls;
      return;
    }
    const bool bFirst = !eKind;
    eKind = CommonKind(eKind, cell.eKind);
    const std::string_view strText = ShownText(cell, strBuffer);
    nLongest = std::max<unsigned long long>(nLongest, strText.size());
    distinct.Add(Mixed(std::hash<std::string_view>()(strText)));
    if (cell.eKind == Kind::Integer || cell.eKind == Kind::Real) {
      CountNumber(strText);
    } else if (nNumbers == 0) {
      Take(strText, bFirst || strText < strMin, bFirst || strText > strMax);
    }
  }

  std::string Mean() const {
    if (nNumbers == 0) return "";
    constexpr int kDigits = 6;
    char szText[32];
    const auto fMean = static_cast<double>(fSum / static_cast<long double>(nNumbers));
    return {szText, std::to_chars(szText, szText + sizeof szText, fMean, std::chars_format::general,
                                  kDigits)
                        .ptr};
  }

 private:
  void CountNumber(std::string_view strText) {
    const double fValue = ToDouble(strText);
    const bool bFirst = nNumbers++ == 0;
    Take(strText, bFirst || fValue < fMin, bFirst || fValue > fMax);
    fMin = bFirst ? fValue : std::min(fMin, fValue);
    fMax = bFirst ? fValue : std::max(fMax, fValue);
    fSum += fValue;
  }

  void Take(std::string_view strText, bool bMin, bool bMax) {
    if (bMin) strMin = strText;
    if (bMax) strMax = strText;
  }

  // The standard library's hash may leave some bits alone.
  static std::uint64_t Mixed(std::uint64_t n) {
    n = (n ^ n >> 30) * 0xBF58476D1CE4E5B9;
    n = (n ^ n >> 27) * 0x94D049BB133111EB;
    return n ^ n >> 31;
  }
};

const char* KindName(const ColumnStats& stats) {
  switch (stats.eKind.value_or(Kind::Null)) {
    case Kind::Null:
      return "null";
    case Kind::Boolean:
      return "boolean";
    case Kind::Integer:
      return "integer";
    case Kind::Real:
      return "real";
    case Kind::Nested:
      return "nested";
    default:
      return stats.nNumbers != 0 ? "mixed" : "text";
  }
}

// The figures as rows, so that every format can show them.
class StatsRows : public RowSource {
 public:
  explicit StatsRows(RowSource& source) {
    std::string strBuffer;
    for (Row row; source.Next(row); ++nRows) {
      vStats.resize(source.GetColumns().Count());
      for (const Cell& cell : row) {
        vStats[cell.nColumn].Count(cell, strBuffer);
      }
    }
    vStats.resize(source.GetColumns().Count());
    for (const Column& column : source.GetColumns()) {
      vNames.push_back(column.strName);
    }
    for (const char* szHead :
         {"column", "kind", "cells", "null", "distinct", "min", "max", "mean", "longest"}) {
      columns.FindOrAdd(szHead);
    }
  }

  const Columns& GetColumns() const override { return columns; }
  bool AllColumnsKnown() const override { return true; }

  bool Next(Row& row) override {
    if (nNext == vStats.size()) return false;
    const ColumnStats& stats = vStats[nNext];
    const bool bNumbers = stats.nNumbers != 0;
    const Kind eText = Kind::Text;
    vTexts = {{vNames[nNext++], eText},
              {KindName(stats), eText},
              {std::to_string(stats.nCells), Kind::Integer},
              {std::to_string(stats.nNulls), Kind::Integer},
              {stats.distinct.Text(), eText},
              {stats.strMin, bNumbers ? NumberKind(stats.strMin) : eText},
              {stats.strMax, bNumbers ? NumberKind(stats.strMax) : eText},
              {stats.Mean(), NumberKind(stats.Mean())},
              {std::to_string(stats.nLongest), Kind::Integer}};
    row.clear();
    for (std::size_t i = 0; i < vTexts.size(); ++i) {
      const bool bNothing = vTexts[i].first.empty() && i > 0;
      row.push_back({vTexts[i].first, static_cast<std::uint32_t>(i),
                     bNothing ? Kind::Null : vTexts[i].second});
    }
    return true;
  }

  unsigned long long Rows() const { return nRows; }

 private:
  Columns columns;
  std::vector<std::string> vNames;
  std::vector<ColumnStats> vStats;
  std::vector<std::pair<std::string, Kind>> vTexts;  // of the current row
  unsigned long long nRows = 0;
  std::size_t nNext = 0;
};

int Run(const RowOptions& options) {
  Progress progress(options.eProgress);
  Warnings warnings(options.bStrict);
  const OpenedRows opened = OpenRows(options.read, progress, warnings);
  StatsRows stats(*opened.pRows);
  if (options.write.eTo) {
    WriteRows(stats, options.write, progress, warnings);
    return kExitDone;
  }
  Output output(options.write.strOutput, progress);
  output.Write("rows " + std::to_string(stats.Rows()) + "\n");
  SpooledRows rows(stats, SpooledRows::Kinds::AsTheyAre);
  if (rows.Count() != 0) {
    TableLayout(rows, TableLayout::kAnyWidth)
        .Write(output, UseColor(options.write.eColor, output.File()));
  }
  output.Commit();
  warnings.Report();
  return kExitDone;
}

}  // namespace

void AddStats(CLI::App& app, Action& action) {
  const auto pOptions = std::make_shared<RowOptions>();
  CLI::App* pCommand = AddCommand(
      app, {"stats", "Show kinds, extremes, means and numbers of values by column.",
            "  qxrs stats planets.rs\n"
            "  qxrs stats --infer countries.csv --to json",
            "Columns of numbers have a minimum, a maximum and a mean by value, others by text.\n"
            "Numbers of different values beyond 8,000 are estimates to about one per cent, marked\n"
            "with ~. Lengths are bytes. Rows stream: memory does not grow with the input."});
  AddInputOption(*pCommand, pOptions->read.strInput, "the rows");
  AddReadOptions(*pCommand, pOptions->read, std::nullopt);
  AddWriteOptions(*pCommand, pOptions->write, std::nullopt);
  AddOutputOption(*pCommand, pOptions->write.strOutput);
  AddStrictOption(*pCommand, pOptions->bStrict);
  AddProgressOptions(*pCommand, pOptions->eProgress);
  SetAction<RowOptions>(*pCommand, action, pOptions, Run);
}

}  // namespace qxrs

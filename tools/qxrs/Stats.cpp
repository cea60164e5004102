// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs stats: what is in the columns.

#include <algorithm>
#include <charconv>
#include <deque>
#include <functional>
#include <set>

#include "tools/qxrs/Command.h"
#include "tools/qxrs/rows/Spool.h"
#include "tools/qxrs/rows/Values.h"

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

  // The number, or about the number with a mark in front.
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

  // REQUIRES: there are numbers.
  std::string Mean() const {
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
  constexpr const char* kNames[] = {"null", "boolean", "integer", "real", "text", "nested"};
  const Kind eKind = stats.eKind.value_or(Kind::Null);
  return eKind == Kind::Text && stats.nNumbers != 0 ? "mixed" : kNames[static_cast<int>(eKind)];
}

// The figures of all columns, as rows.
class Figures : public RowSource {
 public:
  explicit Figures(RowSource& rows) {
    std::string strBuffer;
    for (Row row; rows.Next(row); ++nRows) {
      vStats.resize(rows.GetColumns().Count());
      for (const Cell& cell : row) {
        vStats[cell.nColumn].Count(cell, strBuffer);
      }
    }
    described = rows.GetColumns();
    vStats.resize(described.Count());
    for (const char* szName :
         {"column", "kind", "missing", "null", "distinct", "min", "max", "mean", "longest"}) {
      columns.FindOrAdd(szName);
    }
  }

  const Columns& GetColumns() const override { return columns; }
  bool AllColumnsKnown() const override { return true; }

  bool Next(Row& row) override {
    if (nNext == vStats.size()) return false;
    const ColumnStats& stats = vStats[nNext];
    row.clear();
    vTexts.clear();
    Add(row, Kind::Text, described[nNext++].strName);
    Add(row, Kind::Text, KindName(stats));
    AddNumber(row, std::to_string(nRows - stats.nCells));
    AddNumber(row, std::to_string(stats.nNulls));
    AddNumber(row, stats.distinct.Text());
    AddExtreme(row, stats, stats.strMin);
    AddExtreme(row, stats, stats.strMax);
    stats.nNumbers == 0 ? Add(row, Kind::Null, "") : AddNumber(row, stats.Mean());
    AddNumber(row, std::to_string(stats.nLongest));
    return true;
  }

 private:
  void Add(Row& row, Kind eKind, std::string strText) {
    const auto nColumn = static_cast<std::uint32_t>(row.size());
    row.push_back({vTexts.emplace_back(std::move(strText)), nColumn, eKind});
  }

  void AddNumber(Row& row, const std::string& strText) { Add(row, NumberKind(strText), strText); }

  void AddExtreme(Row& row, const ColumnStats& stats, const std::string& strText) {
    const Kind eKind = stats.nNumbers != 0 ? NumberKind(strText) : Kind::Text;
    Add(row, stats.eKind ? eKind : Kind::Null, strText);
  }

  Columns columns;
  Columns described;
  std::vector<ColumnStats> vStats;  // of those
  std::deque<std::string> vTexts;   // of the current row
  std::size_t nNext = 0;
  unsigned long long nRows = 0;
};

int Run(const RowOptions& options) {
  return Convert(options, [](RowSource& rows) { return std::make_unique<Figures>(rows); });
}

}  // namespace

void AddStats(CLI::App& app, Action& action) {
  const auto [command, rows] = AddCommand(app, action, "stats", Run);
  rows.write.eTo = Format::Table;
  command.add_option("FILE", rows.read.strInput);
  AddRowOptions(command, rows, std::nullopt, std::nullopt);
  command.add_option("-o,--output", rows.write.strOutput);
}

}  // namespace qxrs

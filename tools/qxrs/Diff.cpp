// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs diff: two tables, cell by cell.

#include "tools/qxrs/Command.h"
#include "tools/qxrs/rows/Spool.h"

namespace qxrs {

namespace {

struct Options {
  RowOptions rows;  // the input is the first table
  std::string strOther;
  std::vector<std::string> vKey;  // empty: rows are compared by their number
  bool bQuiet = false;
};

constexpr int kExitDifferent = 1;

// The cell as JSON shows it, so that the number 1, the text "1" and true look different.
std::string Shown(const Cell* pCell) {
  return pCell ? MakeDisplayText(JsonValueText(*pCell)).strText : "(no cell)";
}

bool Equal(const Cell* pA, const Cell* pB) {
  return pA && pB && pA->eKind == pB->eKind &&
         ((pA->strText == pB->strText && pA->bEscaped == pB->bEscaped) ||
          (pA->eKind == Kind::Text && JsonValueText(*pA) == JsonValueText(*pB)));
}

// A row of one of the two tables, its cells by column.
struct Side {
  const Columns* pColumns = nullptr;
  Row row;
  std::string strName;  // of the table, for messages

  const Cell* Find(const std::string& strColumn) const {
    return qxrs::Find(row, pColumns->Find(strColumn));
  }
};

class Comparison {
 public:
  Comparison(const Options& options, Output& outputText)
      : vKey(options.vKey),
        output(outputText),
        bQuiet(options.bQuiet),
        bColor(UseColor(options.rows.write.eColor, outputText.File())) {}

  // Row by row, or each row with the one that has its key.
  void Run(const OpenedRows& rowsA, const OpenedRows& rowsB) {
    a = {&rowsA.pRows->GetColumns(), {}, rowsA.strName};
    b = {&rowsB.pRows->GetColumns(), {}, rowsB.strName};
    std::unique_ptr<SortedRows> pKeyed;
    if (!vKey.empty()) {
      pKeyed = std::make_unique<SortedRows>(*rowsB.pRows, vKey, SortedRows::Order::AsTheyCame);
    }
    RowSource* const pRest = pKeyed ? pKeyed.get() : rowsB.pRows.get();
    bool bMoreB = true;
    for (; rowsA.pRows->Next(a.row); ++nRow) {
      bMoreB = pKeyed ? pKeyed->Take(a.row, *a.pColumns, b.row) : bMoreB && pRest->Next(b.row);
      bMoreB ? CompareRows() : ReportRow(a, nOnlyA);
    }
    for (; (pKeyed || bMoreB) && pRest->Next(b.row); ++nRow) {
      ReportRow(b, nOnlyB);
    }
  }

  bool AnyDifference() const { return nChanged + nOnlyA + nOnlyB != 0; }

  std::string Summary() const {
    return std::to_string(nEqual) + " equal, " + std::to_string(nChanged) + " changed, " +
           std::to_string(nOnlyA) + " only in " + a.strName + ", " + std::to_string(nOnlyB) +
           " only in " + b.strName + "\n";
  }

 private:
  // "row 3", or "id 17".
  std::string Place(const Side& side) const {
    std::string strPlace = vKey.empty() ? "row " + std::to_string(nRow) : "";
    for (const std::string& strName : vKey) {
      strPlace += (strPlace.empty() ? "" : ", ") + MakeDisplayText(strName).strText + " " +
                  Shown(side.Find(strName));
    }
    return strPlace;
  }

  void ReportRow(const Side& side, unsigned long long& nCount) {
    ++nCount;
    if (!bQuiet) output.Write(Place(side) + ": only in " + side.strName + "\n");
  }

  // Columns in the order of the first table, then those that only the second one has.
  void CompareRows() {
    bool bEqual = true;
    for (const Column& column : *a.pColumns) {
      bEqual = CompareCell(column.strName) && bEqual;
    }
    for (const Column& column : *b.pColumns) {
      if (a.pColumns->Find(column.strName) == Columns::kNone) {
        bEqual = CompareCell(column.strName) && bEqual;
      }
    }
    ++(bEqual ? nEqual : nChanged);
  }

  bool CompareCell(const std::string& strName) {
    const Cell* const pA = a.Find(strName);
    const Cell* const pB = b.Find(strName);
    if (Equal(pA, pB) || (!pA && !pB)) return true;
    if (!bQuiet) {
      output.Write(Place(a) + ", " + MakeDisplayText(strName).strText + ": " +
                   Styled(Shown(pA), Style::Red, bColor) + " -> " +
                   Styled(Shown(pB), Style::Green, bColor) + "\n");
    }
    return false;
  }

  const std::vector<std::string>& vKey;
  Output& output;
  const bool bQuiet;
  const bool bColor;
  Side a;
  Side b;
  unsigned long long nRow = 1;
  unsigned long long nEqual = 0;
  unsigned long long nChanged = 0;
  unsigned long long nOnlyA = 0;
  unsigned long long nOnlyB = 0;
};

int Compare(const Options& options) {
  Progress progress(options.rows.eProgress);
  Progress noProgress(When::Never);
  Warnings warnings(options.rows.bStrict);
  ReadOptions other = options.rows.read;
  other.strInput = options.strOther;
  const OpenedRows a = OpenRows(options.rows.read, progress, warnings);
  const OpenedRows b = OpenRows(other, noProgress, warnings);
  Output output(options.rows.write.strOutput, progress);
  Comparison comparison(options, output);
  comparison.Run(a, b);
  if (!options.bQuiet && comparison.AnyDifference()) output.Write(comparison.Summary());
  output.Commit();
  warnings.Report();
  return comparison.AnyDifference() ? kExitDifferent : kExitDone;
}

int Run(const Options& options) {
  if (options.rows.read.strInput == "-" && options.strOther == "-") {
    throw UsageError("only one of the two can be standard input");
  }
  try {
    return Compare(options);
  } catch (const InputError& error) {
    // Status 1 is taken: it means that the two differ.
    throw UsageError(error.what());
  }
}

}  // namespace

void AddDiff(CLI::App& app, Action& action) {
  const auto [command, options] = AddCommand(app, action, "diff", Run);
  RowOptions& rows = options.rows;
  command.add_option("A", rows.read.strInput)->required();
  command.add_option("B", options.strOther)->required();
  AddNames(command, "-k,--key", options.vKey);
  command.add_flag("-q,--quiet", options.bQuiet);
  AddReadOptions(command, rows.read, std::nullopt);
  AddColor(command, rows.write.eColor);
  command.add_option("-o,--output", rows.write.strOutput);
  command.add_flag("--strict", rows.bStrict);
  AddProgress(command, rows.eProgress);
}

}  // namespace qxrs

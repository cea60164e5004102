// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs diff: two tables, cell by cell.

#include <algorithm>
#include <utility>

#include "tools/qxrs/Command.h"
#include "tools/qxrs/rows/Sort.h"
#include "tools/qxrs/rows/Values.h"
#include "tools/qxrs/support/DisplayText.h"
#include "tools/qxrs/support/Errors.h"

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

std::string NameText(const std::string& strName) { return MakeDisplayText(strName).strText; }

bool Equal(const Cell* pA, const Cell* pB) {
  return pA && pB && pA->eKind == pB->eKind &&
         ((pA->strText == pB->strText && pA->bEscaped == pB->bEscaped) ||
          (pA->eKind == Kind::Text && JsonValueText(*pA) == JsonValueText(*pB)));
}

// One of the two tables: its rows, and the one that is compared now.
class Side {
 public:
  Side(const ReadOptions& options, const std::vector<std::string>& vKey, Progress& progress,
       Warnings& warnings)
      : opened(OpenRows(options, progress, warnings)), pRows(opened.pRows.get()) {
    if (!vKey.empty()) {
      pSorted = std::make_unique<SortedRows>(*opened.pRows, vKey, false);
      pRows = pSorted.get();
    }
    Next();
  }

  void Next() {
    bRow = pRows->Next(row);
    vCells.assign(pRows->GetColumns().Count(), nullptr);
    for (const Cell& cell : row) {
      vCells[cell.nColumn] = &cell;
    }
  }

  bool HasRow() const { return bRow; }
  const Columns& GetColumns() const { return pRows->GetColumns(); }
  const std::string& Name() const { return opened.strName; }

  const Cell* Find(const std::string& strName) const {
    const std::size_t nColumn = GetColumns().Find(strName);
    return nColumn < vCells.size() ? vCells[nColumn] : nullptr;
  }

 private:
  OpenedRows opened;
  std::unique_ptr<SortedRows> pSorted;
  RowSource* pRows;
  Row row;
  std::vector<const Cell*> vCells;  // by column
  bool bRow = false;
};

class Comparison {
 public:
  Comparison(Side& sideA, Side& sideB, const Options& options, Output& outputText)
      : a(sideA),
        b(sideB),
        vKey(options.vKey),
        output(outputText),
        bQuiet(options.bQuiet),
        bColor(UseColor(options.rows.write.eColor, outputText.File())) {
    if (!vKey.empty()) {
      // Keys are compared as they were sorted: by SQLite.
      std::string strCompare = "SELECT CASE";
      for (std::size_t i = 1; i <= vKey.size(); ++i) {
        const std::string strA = "?" + std::to_string(i);
        const std::string strB = "?" + std::to_string(i + vKey.size());
        strCompare += " WHEN " + strA + " IS " + strB + " THEN 0 WHEN " + strA +
                      " IS NULL THEN -1 WHEN " + strB + " IS NULL THEN 1 WHEN " + strA + " < " +
                      strB + " THEN -1 ELSE 1 END, CASE";
      }
      strCompare.resize(strCompare.size() - std::string(", CASE").size());
      pCompare = database.Prepare(strCompare);
    }
  }

  void Run() {
    while (a.HasRow() || b.HasRow()) {
      ++nRow;
      const int nOrder = !a.HasRow() ? 1 : !b.HasRow() ? -1 : vKey.empty() ? 0 : CompareKeys();
      if (nOrder == 0) {
        CompareRows();
      } else {
        ReportRow(nOrder < 0 ? a : b, nOrder < 0 ? nOnlyA : nOnlyB);
      }
      if (nOrder <= 0) a.Next();
      if (nOrder >= 0) b.Next();
    }
  }

  bool AnyDifference() const { return nChanged + nOnlyA + nOnlyB != 0; }

  std::string Summary() const {
    return std::to_string(nEqual) + " equal, " + std::to_string(nChanged) + " changed, " +
           std::to_string(nOnlyA) + " only in " + a.Name() + ", " + std::to_string(nOnlyB) +
           " only in " + b.Name() + "\n";
  }

 private:
  int CompareKeys() {
    std::vector<std::string> vBuffers(2 * vKey.size());
    int nParameter = 0;
    for (const Side* pSide : {&a, &b}) {
      for (const std::string& strName : vKey) {
        const int n = nParameter++;
        BindValue(*pCompare, n + 1, pSide->Find(strName), vBuffers[static_cast<std::size_t>(n)]);
      }
    }
    database.Step(*pCompare);
    int nOrder = 0;
    for (int i = 0; nOrder == 0 && i < static_cast<int>(vKey.size()); ++i) {
      nOrder = sqlite3_column_int(pCompare.get(), i);
    }
    sqlite3_reset(pCompare.get());
    return nOrder;
  }

  // "row 3", or "id 17".
  std::string Place(const Side& side) const {
    if (vKey.empty()) return "row " + std::to_string(nRow);
    std::string strPlace;
    for (const std::string& strName : vKey) {
      strPlace +=
          (strPlace.empty() ? "" : ", ") + NameText(strName) + " " + Shown(side.Find(strName));
    }
    return strPlace;
  }

  void ReportRow(const Side& side, unsigned long long& nCount) {
    ++nCount;
    if (!bQuiet) output.Write(Place(side) + ": only in " + side.Name() + "\n");
  }

  // Columns in the order of the first table, then those that only the second one has.
  void CompareRows() {
    bool bEqual = true;
    for (const Column& column : a.GetColumns()) {
      bEqual = CompareCell(column.strName) && bEqual;
    }
    for (const Column& column : b.GetColumns()) {
      if (a.GetColumns().Find(column.strName) == Columns::kNone) {
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
      output.Write(Place(a) + ", " + NameText(strName) + ": " +
                   Styled(Shown(pA), Style::Red, bColor) + " -> " +
                   Styled(Shown(pB), Style::Green, bColor) + "\n");
    }
    return false;
  }

  Side& a;
  Side& b;
  const std::vector<std::string>& vKey;
  Output& output;
  const bool bQuiet;
  const bool bColor;
  Database database{"", Database::Mode::Scratch};
  Database::Statement pCompare;
  unsigned long long nRow = 0;
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
  Side a(options.rows.read, options.vKey, progress, warnings);
  Side b(other, options.vKey, noProgress, warnings);
  Output output(options.rows.write.strOutput, progress);
  Comparison comparison(a, b, options, output);
  comparison.Run();
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
  const auto pOptions = std::make_shared<Options>();
  CLI::App* pCommand = AddCommand(
      app,
      {"diff", "Compare two tables cell by cell.",
       "  qxrs diff --key id old.rs new.rs\n"
       "  qxrs from-sql world.db \"SELECT * FROM countries\" | qxrs diff --quiet old.rs -",
       "Rows are compared by their number, or by a key. Cells are equal when they have the same\n"
       "kind and the same text: the number 1, the text \"1\" and true differ, and so do 1.0 and\n"
       "1.00, null and no cell. The order of columns does not matter.",
       "0 equal, 1 different, 2 bad input or wrong usage"});
  RowOptions& rows = pOptions->rows;
  AddRequired(*pCommand, "A", rows.read.strInput, "one table; - is standard input");
  AddRequired(*pCommand, "B", pOptions->strOther, "the other one");
  AddNamesOption(*pCommand, "-k,--key", "the columns by which rows belong together",
                 pOptions->vKey);
  pCommand->add_flag("-q,--quiet", pOptions->bQuiet, "write nothing; the exit status tells");
  AddReadOptions(*pCommand, rows.read, std::nullopt);
  AddColorOption(*pCommand, rows.write.eColor);
  AddOutputOption(*pCommand, rows.write.strOutput);
  AddStrictOption(*pCommand, rows.bStrict);
  AddProgressOptions(*pCommand, rows.eProgress);
  SetAction<Options>(*pCommand, action, pOptions, Run);
}

}  // namespace qxrs

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs diff: two record sets, cell by cell.

#include <algorithm>

#include "tools/qxrs/FieldOptions.h"
#include "tools/qxrs/support/DisplayText.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

struct Options {
  FileOptions files;  // the input is the first record set
  std::string strOther;
  std::vector<std::string> vColumns;
  bool bQuiet = false;
  When eColor = When::Auto;
};

constexpr int kExitDifferent = 1;

// The cell as JSON shows it, so that the number 1, the text "1" and true look different.
std::string Shown(const Cell* pCell) {
  if (!pCell) {
    return "(no cell)";
  }
  if (pCell->eType == CQXRecordSet::QX_NULL) {
    return "null";
  }
  if (pCell->eType != CQXRecordSet::QX_TEXT) {
    return MakeDisplayText(ShownText(*pCell)).strText;
  }
  std::string strText = "\"";
  JSON::EscapeString(strText, std::string(pCell->strText).c_str());
  return MakeDisplayText(strText + "\"").strText;
}

bool Equal(const Cell* pA, const Cell* pB) {
  return pA && pB && pA->eType == pB->eType && pA->strText == pB->strText;
}

class Comparison {
 public:
  Comparison(Output& outputText, bool bUseColor) : output(outputText), bColor(bUseColor) {}

  void CompareRow(Row& rowA, Row& rowB) {
    const auto ByColumn = [](const Cell& a, const Cell& b) { return a.strColumn < b.strColumn; };
    std::sort(rowA.begin(), rowA.end(), ByColumn);
    std::sort(rowB.begin(), rowB.end(), ByColumn);
    auto itA = rowA.begin();
    auto itB = rowB.begin();
    while (itA != rowA.end() || itB != rowB.end()) {
      const bool bTakeA = itB == rowB.end() || (itA != rowA.end() && !ByColumn(*itB, *itA));
      const bool bTakeB = itA == rowA.end() || (itB != rowB.end() && !ByColumn(*itA, *itB));
      CompareCell(bTakeA ? &*itA : nullptr, bTakeB ? &*itB : nullptr);
      itA += bTakeA ? 1 : 0;
      itB += bTakeB ? 1 : 0;
    }
  }

  void ReportRow(const std::string& strOnlyIn) {
    ++nDifferences;
    output.Write("row " + std::to_string(nRow) + ": only in " + strOnlyIn + "\n");
  }

  void BeginRow() { ++nRow; }
  bool AnyDifference() const { return nDifferences != 0; }

 private:
  void CompareCell(const Cell* pA, const Cell* pB) {
    if (Equal(pA, pB)) {
      return;
    }
    ++nDifferences;
    // One of the two is there. NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker)
    const std::string_view strColumn = pA ? pA->strColumn : pB->strColumn;
    output.Write("row " + std::to_string(nRow) + ", " + MakeDisplayText(strColumn).strText + ": " +
                 Styled(Shown(pA), Style::Red, bColor) + " -> " +
                 Styled(Shown(pB), Style::Green, bColor) + "\n");
  }

  Output& output;
  const bool bColor;
  unsigned long long nRow = 0;
  unsigned long long nDifferences = 0;
};

int Compare(const Options& options) {
  Files files(options.files);
  Progress noProgress(When::Never);
  Input other(options.strOther, noProgress);
  const auto pA = ReadRecordSet(files.input, options.vColumns);
  const auto pB = ReadRecordSet(other, options.vColumns);

  Output none("/dev/null", noProgress);
  Comparison comparison(options.bQuiet ? none : files.output,
                        UseColor(options.eColor, files.output.File()));
  Row rowA;
  Row rowB;
  while (true) {
    const bool bA = pA->Next(rowA);
    const bool bB = pB->Next(rowB);
    if (!bA && !bB) {
      break;
    }
    comparison.BeginRow();
    if (bA && bB) {
      comparison.CompareRow(rowA, rowB);
    } else {
      comparison.ReportRow(bA ? files.input.Name() : other.Name());
    }
  }
  files.output.Commit();
  return comparison.AnyDifference() ? kExitDifferent : kExitDone;
}

int Run(const Options& options) {
  if (options.files.strInput == "-" && options.strOther == "-") {
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
      {"diff", "Compare two record sets cell by cell.",
       "  qxrs diff old.json new.json\n"
       "  qxrs from-sql world.db \"SELECT * FROM countries\" | qxrs diff --quiet old.json -",
       "Rows are compared by their number, cells by type and text: the number 1, the text \"1\"\n"
       "and true differ, and so do null and no cell. The order of columns does not matter.",
       "0 equal, 1 different, 2 bad input or wrong usage"});
  pCommand->add_option("A", pOptions->files.strInput, "one record set text; - is standard input")
      ->type_name("")
      ->required();
  pCommand->add_option("B", pOptions->strOther, "the other one")->type_name("")->required();
  AddColumnsOption(*pCommand, pOptions->vColumns);
  pCommand->add_flag("-q,--quiet", pOptions->bQuiet, "write nothing; the exit status tells");
  AddColorOption(*pCommand, pOptions->eColor);
  AddOutputOptions(*pCommand, pOptions->files);
  SetAction<Options>(*pCommand, action, pOptions, Run);
}

}  // namespace qxrs

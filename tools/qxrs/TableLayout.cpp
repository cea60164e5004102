// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Laying out tables for people: numbers to the right, everything else to the left, shortened to the
// width there is.

#include <algorithm>

#include "tools/qxrs/Formats.h"
#include "tools/qxrs/rows/Spool.h"
#include "tools/qxrs/rows/Values.h"
#include "tools/qxrs/support/Terminal.h"

namespace qxrs {

namespace {

constexpr std::size_t kGap = 2;  // columns between two columns of the table

// Texts stay recognisable down to this width; numbers are cut only when that is not enough.
constexpr std::size_t kLeastForText = 8;
constexpr std::size_t kLeast = 3;

// A column that cannot have this width, or all that it needs, is rather left out.
constexpr std::size_t kLeastShown = 6;

class TableLayout {
 public:
  // Measures the rows.
  TableLayout(SpooledRows& rowsToShow, std::size_t nMaxWidth)
      : rows(rowsToShow), nWidth(nMaxWidth) {
    for (const Column& column : rows.GetColumns()) {
      DisplayText head = MakeDisplayText(column.strName);
      const std::size_t nHeadWidth = head.nWidth;
      const bool bNumbers = column.eKind == Kind::Integer || column.eKind == Kind::Real;
      vColumns.push_back({std::move(head), nHeadWidth, bNumbers || !column.eKind});
    }
    rows.Rewind();
    for (Row row; rows.Next(row);) {
      for (const Cell& cell : row) {
        ShownColumn& column = vColumns[cell.nColumn];
        column.nWidth = std::max(column.nWidth, Shown(cell).nWidth);
      }
    }
  }

  // Writes the table. Only once.
  void Write(Output& output, bool bColor) {
    if (vColumns.empty()) {
      output.Write(rows.Count() == 0 ? "(no rows)\n" : "(no columns)\n");
      return;
    }
    const std::size_t nShown = FittingColumns();
    const std::size_t nHidden = vColumns.size() - nShown;
    vColumns.erase(vColumns.begin() + static_cast<std::ptrdiff_t>(nShown), vColumns.end());
    Shrink(kLeastForText, false);
    Shrink(kLeast, true);

    std::vector<DisplayText> vHeads;
    std::vector<DisplayText> vRules;
    for (const ShownColumn& column : vColumns) {
      vHeads.push_back(column.head);
      vRules.push_back({std::string(column.nWidth, '-'), column.nWidth});
    }
    output.Write(Styled(Line(vHeads), Style::Bold, bColor) + "\n");
    output.Write(Line(vRules) + "\n");
    rows.Rewind();
    std::vector<DisplayText> vTexts;
    for (Row row; rows.Next(row);) {
      vTexts.assign(vColumns.size(), {});
      for (const Cell& cell : row) {
        if (cell.nColumn < vTexts.size()) vTexts[cell.nColumn] = Shown(cell);
      }
      output.Write(Line(vTexts) + "\n");
    }
    if (nHidden != 0) {
      output.Write("... " + std::to_string(nHidden) + " more column" +
                   (nHidden == 1 ? "\n" : "s\n"));
    }
  }

 private:
  struct ShownColumn {
    DisplayText head;    // cppcheck-suppress unusedStructMember; it is copied to the first line
    std::size_t nWidth;  // of the widest, then as written
    bool bNumbers;       // nothing but numbers and nulls
  };

  DisplayText Shown(const Cell& cell) { return MakeDisplayText(ShownText(cell, strBuffer)); }

  // How many columns fit into a line, at least one.
  std::size_t FittingColumns() const {
    std::size_t nTotal = 0;
    for (std::size_t i = 0; i < vColumns.size(); ++i) {
      nTotal += (i == 0 ? 0 : kGap) + std::min(vColumns[i].nWidth, kLeastShown);
      if (nTotal > nWidth) return std::max<std::size_t>(i, 1);
    }
    return vColumns.size();
  }

  // Cuts the widest columns, one column of the terminal at a time, until the lines fit; none to
  // less than `nLeast`.
  void Shrink(std::size_t nLeast, bool bNumbersToo) {
    const auto Room = [&](const ShownColumn& column) {
      const bool bMay = column.nWidth > nLeast && (bNumbersToo || !column.bNumbers);
      return bMay ? column.nWidth : 0;
    };
    std::size_t nTotal = kGap * (vColumns.size() - 1);
    for (ShownColumn& column : vColumns) {
      if (Room(column) > nWidth) column.nWidth = std::max(nWidth, nLeast);
      nTotal += column.nWidth;
    }
    for (; nTotal > nWidth; --nTotal) {
      const auto it = std::max_element(
          vColumns.begin(), vColumns.end(),
          [&](const ShownColumn& a, const ShownColumn& b) { return Room(a) < Room(b); });
      if (Room(*it) == 0) return;
      --it->nWidth;
    }
  }

  std::string Line(const std::vector<DisplayText>& vTexts) const {
    std::string strLine;
    for (std::size_t i = 0; i < vColumns.size(); ++i) {
      const DisplayText text = Shortened(vTexts[i], vColumns[i].nWidth);
      const std::string strBlanks(vColumns[i].nWidth - text.nWidth, ' ');
      strLine += i == 0 ? "" : std::string(kGap, ' ');
      strLine += vColumns[i].bNumbers ? strBlanks + text.strText : text.strText + strBlanks;
    }
    return strLine.erase(strLine.find_last_not_of(' ') + 1);
  }

  SpooledRows& rows;
  const std::size_t nWidth;
  std::vector<ShownColumn> vColumns;
  std::string strBuffer;
};

}  // namespace

void WriteTable(RowSource& source, std::size_t nWidth, bool bColor, Output& output) {
  SpooledRows rows(source, SpooledRows::Kinds::AsTheyAre);
  TableLayout(rows, nWidth == 0 ? static_cast<std::size_t>(-1) : nWidth).Write(output, bColor);
}

}  // namespace qxrs

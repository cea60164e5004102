// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Laying out tables.

#include "tools/qxrs/TableLayout.h"

#include <algorithm>

#include "tools/qxrs/support/Terminal.h"

namespace qxrs {

namespace {

constexpr std::size_t kGap = 2;  // columns between two columns of the table

// Texts stay recognisable down to this width; integers are cut only when that is not enough.
constexpr std::size_t kLeastForText = 8;
constexpr std::size_t kLeast = 3;

// A column that cannot have this width, or all that it needs, is rather left out.
constexpr std::size_t kLeastShown = 6;

std::string WithoutBlanksAtEnd(std::string strLine) {
  strLine.erase(strLine.find_last_not_of(' ') + 1);
  return strLine;
}

}  // namespace

std::string MoreNote(unsigned long long nCount, const std::string& strWhat) {
  return "... " + std::to_string(nCount) + " more " + strWhat + (nCount == 1 ? "\n" : "s\n");
}

TableLayout::TableLayout(Output& outputText, std::size_t nMaxWidth, bool bUseColor)
    : output(outputText), nWidth(nMaxWidth), bColor(bUseColor) {}

void TableLayout::BeginColumns() {
  for (const std::string& strName : Names()) {
    DisplayText head = MakeDisplayText(strName);
    const std::size_t nHeadWidth = head.nWidth;
    vColumns.push_back({std::move(head), {}, nHeadWidth, true});
  }
}

void TableLayout::WriteCells(const std::vector<Cell>& vCells) {
  for (std::size_t i = 0; i < vCells.size(); ++i) {
    Column& column = vColumns[i];
    column.vTexts.push_back(MakeDisplayText(ShownText(vCells[i])));
    column.nWidth = std::max(column.nWidth, column.vTexts.back().nWidth);
    column.bIntegers &=
        vCells[i].eType == CQXRecordSet::QX_LONG || vCells[i].eType == CQXRecordSet::QX_NULL;
  }
  ++nRows;
}

void TableLayout::End() {
  if (vColumns.empty()) {
    output.Write(nRows == 0 ? "(no rows)\n" : "(no columns)\n");
    return;
  }
  const std::size_t nShown = FittingColumns();
  const std::size_t nHidden = vColumns.size() - nShown;
  vColumns.erase(vColumns.begin() + static_cast<std::ptrdiff_t>(nShown), vColumns.end());
  Shrink(kLeastForText, false);
  Shrink(kLeast, true);

  std::vector<DisplayText> vRules;
  for (const Column& column : vColumns) {
    vRules.push_back({std::string(column.nWidth, '-'), column.nWidth});
  }
  std::vector<const DisplayText*> vLine(vColumns.size());
  const auto WriteLine = [&](auto pick, bool bBold) {
    for (std::size_t i = 0; i < vColumns.size(); ++i) {
      vLine[i] = pick(i);
    }
    output.Write(Styled(Line(vLine), Style::Bold, bColor && bBold) + "\n");
  };
  WriteLine([&](std::size_t i) { return &vColumns[i].head; }, true);
  WriteLine([&](std::size_t i) { return &vRules[i]; }, false);
  for (std::size_t nRow = 0; nRow < nRows; ++nRow) {
    WriteLine([&](std::size_t i) { return &vColumns[i].vTexts[nRow]; }, false);
  }
  if (nHidden != 0) {
    output.Write(MoreNote(nHidden, "column"));
  }
}

// How many columns fit into a line, at least one.
std::size_t TableLayout::FittingColumns() const {
  std::size_t nTotal = 0;
  for (std::size_t i = 0; i < vColumns.size(); ++i) {
    nTotal += (i == 0 ? 0 : kGap) + std::min(vColumns[i].nWidth, kLeastShown);
    if (nTotal > nWidth) {
      return std::max<std::size_t>(i, 1);
    }
  }
  return vColumns.size();
}

std::size_t TableLayout::Total() const {
  std::size_t nTotal = kGap * (vColumns.size() - 1);
  for (const Column& column : vColumns) {
    nTotal += column.nWidth;
  }
  return nTotal;
}

// Cuts the widest columns down to one width, a few of them to one more, so that the lines just fit;
// none to less than `nLeast`.
void TableLayout::Shrink(std::size_t nLeast, bool bIntegersToo) {
  const std::size_t nTotal = Total();
  if (nTotal <= nWidth) {
    return;
  }
  const auto Cut = [&](const Column& column, std::size_t nLevel) {
    const bool bMay = column.nWidth > nLevel && (bIntegersToo || !column.bIntegers);
    return bMay ? column.nWidth - nLevel : 0;
  };
  const auto TotalAt = [&](std::size_t nLevel) {
    std::size_t nCut = 0;
    for (const Column& column : vColumns) {
      nCut += Cut(column, nLevel);
    }
    return nTotal - nCut;
  };
  std::size_t nLevel = nLeast;
  for (std::size_t nTooWide = nTotal; nTooWide - nLevel > 1;) {
    const std::size_t nMiddle = nLevel + (nTooWide - nLevel) / 2;
    (TotalAt(nMiddle) <= nWidth ? nLevel : nTooWide) = nMiddle;
  }
  std::size_t nSpare = nWidth - std::min(TotalAt(nLevel), nWidth);
  for (auto it = vColumns.rbegin(); it != vColumns.rend(); ++it) {
    const std::size_t nCut = Cut(*it, nLevel);
    const std::size_t nBack = nCut > 0 && nSpare > 0 ? 1 : 0;
    it->nWidth -= nCut - nBack;
    nSpare -= nBack;
  }
}

std::string TableLayout::Line(const std::vector<const DisplayText*>& vTexts) const {
  std::string strLine;
  for (std::size_t i = 0; i < vColumns.size(); ++i) {
    const DisplayText text = Shortened(*vTexts[i], vColumns[i].nWidth);
    const std::string strBlanks(vColumns[i].nWidth - text.nWidth, ' ');
    strLine += i == 0 ? "" : std::string(kGap, ' ');
    strLine += vColumns[i].bIntegers ? strBlanks + text.strText : text.strText + strBlanks;
  }
  return WithoutBlanksAtEnd(std::move(strLine));
}

}  // namespace qxrs

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A table of aligned columns for people: integers to the right, everything else to the left,
// shortened to the width there is.

#ifndef QXRECORDSET_TOOLS_TABLELAYOUT_H
#define QXRECORDSET_TOOLS_TABLELAYOUT_H

#include <string>
#include <vector>

#include "tools/qxrs/rows/Columns.h"
#include "tools/qxrs/support/DisplayText.h"
#include "tools/qxrs/support/Output.h"

namespace qxrs {

// The line that tells of rows or columns that are not shown.
std::string MoreNote(unsigned long long nCount, const std::string& strWhat);

class TableLayout : public ColumnSink {
 public:
  static constexpr std::size_t kAnyWidth = static_cast<std::size_t>(-1);

  // Writes the table to `outputText` at the end, in lines of `nMaxWidth` columns: texts are cut,
  // and columns for which that is not enough are left out.
  TableLayout(Output& outputText, std::size_t nMaxWidth, bool bUseColor);

  void End() override;

 private:
  struct Column {
    DisplayText head;
    std::vector<DisplayText> vTexts;  // one for each row
    std::size_t nWidth;               // of the widest, then as written
    bool bIntegers = true;            // nothing but integers and nulls
  };

  void BeginColumns() override;
  void WriteCells(const std::vector<Cell>& vCells) override;
  std::size_t FittingColumns() const;
  std::size_t Total() const;
  void Shrink(std::size_t nLeast, bool bIntegersToo);
  std::string Line(const std::vector<const DisplayText*>& vTexts) const;

  Output& output;
  const std::size_t nWidth;
  const bool bColor;
  std::vector<Column> vColumns;
  std::size_t nRows = 0;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_TABLELAYOUT_H

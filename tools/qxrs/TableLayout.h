// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A table of aligned columns for people: numbers to the right, everything else to the left,
// shortened to the width there is.

#ifndef QXRECORDSET_TOOLS_TABLELAYOUT_H
#define QXRECORDSET_TOOLS_TABLELAYOUT_H

#include <string>
#include <vector>

#include "tools/qxrs/rows/Spool.h"
#include "tools/qxrs/support/DisplayText.h"
#include "tools/qxrs/support/Output.h"

namespace qxrs {

class TableLayout {
 public:
  static constexpr std::size_t kAnyWidth = static_cast<std::size_t>(-1);

  // Measures the rows, for lines of `nMaxWidth` columns: texts are cut, and columns for which that
  // is not enough are left out.
  TableLayout(SpooledRows& rowsToShow, std::size_t nMaxWidth);

  // Writes the table. Only once.
  void Write(Output& output, bool bColor);

 private:
  struct ShownColumn {
    DisplayText head;
    std::size_t nWidth;  // of the widest, then as written
    bool bNumbers;       // nothing but numbers and nulls
  };

  DisplayText Shown(const Cell& cell);
  std::size_t FittingColumns() const;
  std::size_t Total() const;
  void Shrink(std::size_t nLeast, bool bNumbersToo);
  std::string Line(const std::vector<DisplayText>& vTexts) const;

  SpooledRows& rows;
  const std::size_t nWidth;
  std::vector<ShownColumn> vColumns;
  std::string strBuffer;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_TABLELAYOUT_H

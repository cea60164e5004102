// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Some of the columns, or some of the rows, of a source.

#ifndef QXRECORDSET_TOOLS_ROWS_SELECT_H
#define QXRECORDSET_TOOLS_ROWS_SELECT_H

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tools/qxrs/rows/Rows.h"

namespace qxrs {

// Some columns, in a new order. Next() throws InputError at the end when one of them never occurred
// in any row.
class SelectedColumns : public RowSource {
 public:
  SelectedColumns(std::unique_ptr<RowSource> pRows, const std::vector<std::string>& vNames);

  const Columns& GetColumns() const override { return columns; }
  bool AllColumnsKnown() const override { return true; }
  bool Next(Row& row) override;

 private:
  void Match();
  void RefuseUnseen() const;

  const std::unique_ptr<RowSource> pSource;
  Columns columns;
  std::vector<std::size_t> vPlaces;  // for each column of the source, where it goes
  std::vector<bool> vSeen;           // for each column, whether it occurred
  Row rowAll;                        // the source's row
  std::vector<const Cell*> vCells;   // its cells in the order of the columns
};

// The first rows. What follows is not read.
class FirstRows : public RowSource {
 public:
  FirstRows(std::unique_ptr<RowSource> pRows, unsigned long long nRows)
      : pSource(std::move(pRows)), nMore(nRows) {}

  const Columns& GetColumns() const override { return pSource->GetColumns(); }
  bool AllColumnsKnown() const override { return pSource->AllColumnsKnown(); }
  bool Next(Row& row) override {
    if (nMore == 0) return false;
    --nMore;
    return pSource->Next(row);
  }

 private:
  const std::unique_ptr<RowSource> pSource;
  unsigned long long nMore;
};

// The last rows, which are read at once.
class LastRows : public RowSource {
 public:
  LastRows(RowSource& source, unsigned long long nRows);

  const Columns& GetColumns() const override { return columns; }
  bool AllColumnsKnown() const override { return true; }
  bool Next(Row& row) override;

 private:
  Columns columns;
  std::vector<std::string> vRows;  // packed
  std::size_t nOldest = 0;
  std::size_t nGiven = 0;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_SELECT_H

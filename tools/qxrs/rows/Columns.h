// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows for formats that lay every row out in the same columns.

#ifndef QXRECORDSET_TOOLS_ROWS_COLUMNS_H
#define QXRECORDSET_TOOLS_ROWS_COLUMNS_H

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "tools/qxrs/rows/Rows.h"

namespace qxrs {

// The columns of a table and where each stands.
class ColumnIndex {
 public:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  ColumnIndex() = default;
  explicit ColumnIndex(std::vector<std::string> vNames);

  const std::vector<std::string>& Names() const { return vColumns; }

  // The position of `strName`, or kNone. `nGuess` is looked at first.
  std::size_t Find(std::string_view strName, std::size_t nGuess) const;

  // The same, but a new name becomes the last column.
  std::size_t FindOrAdd(std::string_view strName, std::size_t nGuess);

 private:
  std::vector<std::string> vColumns;
  std::unordered_map<std::string, std::size_t> mapPositions;
};

// A sink that gets one cell for every column.
class ColumnSink : public RowSink {
 public:
  // REQUIRES: the columns are known.
  void Begin(const std::vector<std::string>* pColumns) final;
  void Write(const Row& row) final;

 protected:
  const std::vector<std::string>& Names() const { return columns.Names(); }

  virtual void BeginColumns() = 0;

  // `vCells` follows Names(); a cell that is not there is a null.
  virtual void WriteCells(const std::vector<Cell>& vCells) = 0;

 private:
  ColumnIndex columns;
  std::vector<Cell> vAligned;
};

// All rows of a source in memory, so that its columns are known and it can be read twice.
class GatheredRows : public RowSource {
 public:
  // Reads `source` to its end. Columns that `source` knows beforehand are there without rows, too.
  explicit GatheredRows(RowSource& source);

  const std::vector<std::string>* Columns() override { return &columns.Names(); }
  bool Next(Row& row) override;

  // Next() gives the first row again.
  void Rewind();

 private:
  // A cell; its text lies in strTexts.
  struct Kept {
    std::size_t nText;  // offset
    std::size_t nLength;
    std::size_t nColumn;
    CQXRecordSet::QX_TYPE eType;
  };

  void Add(const Row& row);

  ColumnIndex columns;
  std::string strTexts;
  std::vector<Kept> vCells;           // of all rows, one behind the other
  std::vector<std::size_t> vRowEnds;  // for each row, how many cells there are up to its end
  std::size_t nRow = 0;               // the next row to give,
  std::size_t nCell = 0;              // and its first cell
};

// A source whose columns are known. One that brings its columns row by row is read to its end and
// kept in memory; any other is given back as it is.
std::unique_ptr<RowSource> WithKnownColumns(std::unique_ptr<RowSource> pSource);

// The columns `vNames` of `pSource`, in that order. Next() throws InputError at the end when one of
// them never occurred in any row.
std::unique_ptr<RowSource> SelectColumns(std::unique_ptr<RowSource> pSource,
                                         std::vector<std::string> vNames);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_COLUMNS_H

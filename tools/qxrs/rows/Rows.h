// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// How rows travel through the tool: a RowSource gives them one by one, a RowSink takes them. Every
// format is one of each, so any source can feed any sink, and where both allow it only one row is
// in memory at a time.

#ifndef QXRECORDSET_TOOLS_ROWS_ROWS_H
#define QXRECORDSET_TOOLS_ROWS_ROWS_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "recordset/QXRecordSet.h"

namespace qxrs {

// A cell and the name of its column. The text is what a record set would hold: "1" or "0" for a
// boolean, JSON text for a nested record set. An integer is plain decimal, of any length.
struct Cell {
  std::string_view strColumn;
  CQXRecordSet::QX_TYPE eType;
  std::string_view strText;
};

// The text of a cell for people and for formats without types: a boolean reads true or false.
inline std::string_view ShownText(const Cell& cell) {
  if (cell.eType != CQXRecordSet::QX_BOOL) {
    return cell.strText;
  }
  return cell.strText == "1" ? "true" : "false";
}

// The cells of one row, at most one for each column. A column without a cell is simply not there.
using Row = std::vector<Cell>;

class RowSource {
 public:
  RowSource() = default;
  RowSource(const RowSource&) = delete;
  RowSource& operator=(const RowSource&) = delete;
  virtual ~RowSource() = default;

  // The columns, in order, when they are known before the first row; otherwise null, and every row
  // may bring new ones.
  virtual const std::vector<std::string>* Columns() { return nullptr; }

  // The next row in place of what `row` holds; false at the end. The texts stay valid until the
  // next call. Throws InputError.
  virtual bool Next(Row& row) = 0;
};

class RowSink {
 public:
  RowSink() = default;
  RowSink(const RowSink&) = delete;
  RowSink& operator=(const RowSink&) = delete;
  virtual ~RowSink() = default;

  // Called once, before the first row. `pColumns` is as RowSource::Columns() gives it.
  virtual void Begin(const std::vector<std::string>* pColumns) { (void)pColumns; }
  virtual void Write(const Row& row) = 0;
  virtual void End() = 0;
};

// Passes all rows on.
inline void Copy(RowSource& source, RowSink& sink) {
  sink.Begin(source.Columns());
  for (Row row; source.Next(row);) {
    sink.Write(row);
  }
  sink.End();
}

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_ROWS_H

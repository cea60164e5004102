// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The contents of a record set: columns, rows of cells, and their texts. A table lies at a fixed
// address; it is moved by its pointer.
//
// A cell's text belongs to the table's text store, and goes back to it when the cell gets another:
// SetCell() sees to that. A reader of a text may also fill a cell that does not exist yet, as
// RecordSetLoad.cpp does.
//
//   const Column& column = table.columns.FindOrAdd(name);
//   table.SetCell(lRow, column.Index(), pText, nLength, CQXRecordSet::QX_TEXT);

#ifndef QXRECORDSET_RECORDSET_TABLE_H
#define QXRECORDSET_RECORDSET_TABLE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "recordset/ColumnOrder.h"
#include "recordset/Columns.h"
#include "recordset/ExpectedColumn.h"
#include "recordset/Rows.h"
#include "recordset/TextStore.h"

namespace recordset {

class Table {
 public:
  Table() noexcept : columns(texts) {}
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;
  ~Table() = default;

  // An empty table, mostly one that was recycled.
  static std::unique_ptr<Table> Make();

  // Takes a table, or null, and the text of its owner, which are not needed any more. Small ones
  // are kept together, the columns remembered.
  static void Recycle(std::unique_ptr<Table> pTable, std::string& strText) noexcept;

  // A host's lookup: the index of a column, or 0.
  std::uint32_t FindColumn(const char* name) {
    const Column* pColumn = asked.Accept(name);
    if (pColumn == nullptr || !columns.Has(*pColumn)) pColumn = FindOtherColumn(name);
    return pColumn != nullptr ? pColumn->Index() : 0;
  }

  // The same for a column that is not the one expected; null when there is none.
  const Column* FindOtherColumn(const char* name);

  // A host's lookup where a new name becomes a column. When memory runs out, nothing has changed.
  std::uint32_t EnsureColumn(const char* name) {
    const Column* const pColumn = asked.Accept(name);
    return pColumn != nullptr && columns.Has(*pColumn) ? pColumn->Index() : EnsureOtherColumn(name);
  }

  // All columns in the byte-wise order of their names.
  const std::vector<const Column*>& ColumnsByName() { return order.Of(columns); }

  // Gives the cell in row lRow, column nColumn a copy of `length` bytes of text, which may come
  // from this table, and a type. When memory runs out, all cells are as before.
  void SetCell(long lRow, std::uint32_t nColumn, const char* text, std::size_t length,
               std::int32_t eType) {
    Cell& cell = rows.EnsureCell(lRow, nColumn);
    bTextIsCurrent = false;
    Assign(cell,
           cell.Exists() ? texts.Replace(cell.pText, cell.Length(), text, length)
                         : texts.Store(text, length),
           length, eType);
  }

  // The cell; one that does not exist is made, as a null cell.
  const Cell& ReadCell(long lRow, std::uint32_t nColumn) {
    const Cell* const pCell = rows.FindInGrid(lRow, nColumn);
    return pCell != nullptr && pCell->Exists() ? *pCell : ReadOtherCell(lRow, nColumn);
  }

  // Adds the columns of `other` in the order of their indices, and sets its cells, row by row.
  // REQUIRES: `other` is another table. When memory runs out, some of them may have been set.
  void Merge(const Table& other);

  // Removes everything. Memory is kept for the next contents; see memory/BumpBlocks.h.
  void Reset() noexcept;

  // Bytes of memory in use.
  std::size_t Footprint() const;

  TextStore texts;
  Columns columns;
  ExpectedColumn<Column::kHost> asked;
  Rows rows;

  // The owner sets it when it has written the table as text. As long as it stays, that is the text:
  // no cell was set and none came into being.
  bool bTextIsCurrent = false;

  // Memory for that text, of a table that was recycled. What it holds does not matter.
  std::string strSpare;

 private:
  ColumnOrder order;

  std::uint32_t EnsureOtherColumn(const char* name);
  const Cell& ReadOtherCell(long lRow, std::uint32_t nColumn);

  static constexpr std::int32_t kNullType = 0;  // CQXRecordSet::QX_NULL

  static void Assign(Cell& cell, const char* pText, std::size_t length, std::int32_t eType) {
    cell.pText = pText;
    cell.nLengthAndPlain = Cell::Pack(length, false);
    cell.eType = eType;
  }
};

}  // namespace recordset

#endif  // QXRECORDSET_RECORDSET_TABLE_H

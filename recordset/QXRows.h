// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The range that CQXRecordSet::Rows() gives: rows, and the cells of each. It only reads; it is
// included by recordset/QXRecordSet.h.

#ifndef QXRECORDSET_RECORDSET_QXROWS_H
#define QXRECORDSET_RECORDSET_QXROWS_H

#include <cstddef>
#include <iterator>
#include <string_view>
#include <vector>

#include "qxrecordset_export.h"
#include "recordset/QXRecordSet.h"

// A cell that exists. The texts are the record set's; each has a NUL behind it.
struct CQXCell {
  std::string_view name;          // of its column
  std::string_view text;          // see CQXRecordSet::GetView
  long lColumn = 0;               // index of its column, from 1
  CQXRecordSet::QX_TYPE eType{};  // what the text stands for
};

// A row: its number, and a range of its cells by ascending column index. It belongs to the CQXRows
// that gave it.
class CQXRow {
 public:
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = CQXCell;
    using difference_type = std::ptrdiff_t;
    using pointer = const CQXCell*;
    using reference = const CQXCell&;

    reference operator*() const { return cell_; }
    pointer operator->() const { return &cell_; }
    Iterator& operator++() {
      Find(cell_.lColumn + 1);
      return *this;
    }
    bool operator==(const Iterator& other) const { return cell_.lColumn == other.cell_.lColumn; }
    bool operator!=(const Iterator& other) const { return !(*this == other); }

   private:
    friend class CQXRow;
    Iterator(const CQXRows& rows, long lRow, long lColumn) : pRows_(&rows), lRow_(lRow) {
      Find(lColumn);
    }
    inline void Find(long lColumn);

    const CQXRows* pRows_;
    long lRow_;
    CQXCell cell_;
  };

  long Number() const { return lNumber_; }
  Iterator begin() const;
  Iterator end() const;

 private:
  friend class CQXRows;
  CQXRow(const CQXRows& rows, long lNumber) : pRows_(&rows), lNumber_(lNumber) {}

  const CQXRows* pRows_;
  long lNumber_;
};

// Rows 1 to the row count of a record set.
class QXRECORDSET_EXPORT CQXRows {
 public:
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = CQXRow;
    using difference_type = std::ptrdiff_t;
    using pointer = const CQXRow*;
    using reference = const CQXRow&;

    reference operator*() const { return row_; }
    pointer operator->() const { return &row_; }
    Iterator& operator++() {
      ++row_.lNumber_;
      return *this;
    }
    bool operator==(const Iterator& other) const { return row_.lNumber_ == other.row_.lNumber_; }
    bool operator!=(const Iterator& other) const { return !(*this == other); }

   private:
    friend class CQXRows;
    explicit Iterator(const CQXRow& row) : row_(row) {}
    CQXRow row_;
  };

  // Number of rows.
  long Count() const { return lCount_; }

  // The names of the columns by index: item 0 is that of index 1.
  const std::vector<std::string_view>& Names() const { return vNames_; }

  // Row `number`, which may be any. It refers to this object, so that of a temporary one does not
  // compile: const CQXRows rows = set.Rows() first.
  CQXRow operator[](long number) const& { return {*this, number}; }
  CQXRow operator[](long number) const&& = delete;

  Iterator begin() const { return Iterator({*this, 1}); }
  Iterator end() const { return Iterator({*this, lCount_ + 1}); }

 private:
  friend class CQXRecordSet;
  friend class CQXRow::Iterator;
  QXRECORDSET_NO_EXPORT explicit CQXRows(const CQXRecordSet& set);

  // The first cell of a row at or behind a column; without one, the column is that behind the last.
  CQXCell FindCell(long lRow, long lColumn) const;

  const CQXRecordSet* pSet_;
  long lCount_;
  std::vector<std::string_view> vNames_;
};

inline void CQXRow::Iterator::Find(long lColumn) { cell_ = pRows_->FindCell(lRow_, lColumn); }
inline CQXRow::Iterator CQXRow::begin() const { return {*pRows_, lNumber_, 1}; }
inline CQXRow::Iterator CQXRow::end() const {
  return {*pRows_, lNumber_, static_cast<long>(pRows_->Names().size()) + 1};
}

#endif  // QXRECORDSET_RECORDSET_QXROWS_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The inside of a record set, for the library's own functions that go by column index.

#ifndef QXRECORDSET_RECORDSET_ACCESS_H
#define QXRECORDSET_RECORDSET_ACCESS_H

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>

#include "recordset/QXRecordSet.h"
#include "recordset/Table.h"
#include "text/Digits.h"

namespace recordset {

class Access {
 public:
  // The table, or null when there never was a column.
  static const Table* TableOf(const CQXRecordSet& set) { return set.pTable.get(); }

  static long RowsCount(const CQXRecordSet& set) { return set.lRowsCount; }

  static bool HasColumn(const CQXRecordSet& set, long lIndex) {
    return set.pTable != nullptr && lIndex >= 1 &&
           lIndex <= static_cast<long>(set.pTable->columns.Count());
  }

  static const Cell* Find(const CQXRecordSet& set, long lIndex, long lRow) {
    return HasColumn(set, lIndex)
               ? std::as_const(set.pTable->rows).FindCell(lRow, static_cast<std::uint32_t>(lIndex))
               : nullptr;
  }

  // The digits of an integer, and the type of a cell that holds them exactly. REQUIRES: Integer is
  // long long or unsigned long long.
  template <typename Integer>
  class Exact {
   public:
    explicit Exact(Integer value)
        : decimal_(value), eType(IsLong(value) ? CQXRecordSet::QX_LONG : CQXRecordSet::QX_TEXT) {}

    std::string_view Text() const { return decimal_.View(); }

   private:
    static bool IsLong(Integer value) {
      using Limits = std::numeric_limits<long>;
      if constexpr (std::numeric_limits<Integer>::is_signed) {
        if (value < Limits::min()) return false;
      }
      return value <= static_cast<Integer>(Limits::max());
    }

    JSON::DecimalText<Integer> decimal_;

   public:
    const CQXRecordSet::QX_TYPE eType;
  };

  // REQUIRES: there is such a column.
  static void Set(CQXRecordSet& set, long lIndex, long lRow, std::string_view text,
                  CQXRecordSet::QX_TYPE eType) {
    assert(HasColumn(set, lIndex));
    set.pTable->SetCell(lRow, static_cast<std::uint32_t>(lIndex), text.data(), text.size(), eType);
    set.lRowsCount = std::max(set.lRowsCount, lRow);
    set.bModified = true;
  }
};

}  // namespace recordset

#endif  // QXRECORDSET_RECORDSET_ACCESS_H

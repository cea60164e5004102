// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The column that is expected next: the one that followed the column found last when that one was
// found the time before. Texts and hosts name columns in the same order, row after row, so one
// comparison finds most columns. A host may ask in another order than its texts have, so each of
// the two has expectations of its own.
//
// Columns refer to each other by address, so that a lookup needs one load from the result of the
// lookup before it.

#ifndef QXRECORDSET_RECORDSET_EXPECTEDCOLUMN_H
#define QXRECORDSET_RECORDSET_EXPECTEDCOLUMN_H

#include "recordset/Columns.h"

namespace recordset {

template <Column::User eUser>
class ExpectedColumn {
 public:
  // The column that is expected; null as long as there is none.
  const Column* Get() const { return pNext_; }

  // The column found last; null as long as there is none.
  const Column* Last() const { return pLast_; }

  // The expected column when it has that name: it is the one found last from now on. Else null.
  // `name` is a const char* or a std::string_view.
  template <typename Name>
  const Column* Accept(Name name) {
    const Column* const pColumn = pNext_;
    if (pColumn == nullptr || !pColumn->Is(name)) return nullptr;
    Found(*pColumn);
    return pColumn;
  }

  // Tells which column was found.
  void Found(const Column& column) {
    pLast_ = &column;
    pNext_ = column.apNext[eUser];
  }

  // The same for a column that was not expected: it will be, the next time.
  const Column& Learn(const Column& column) {
    if (pLast_ != nullptr && pLast_ != &column) pLast_->apNext[eUser] = &column;
    Found(column);
    return column;
  }

  // Expects nothing.
  void Forget() noexcept { pLast_ = pNext_ = nullptr; }

 private:
  const Column* pLast_ = nullptr;  // found last
  const Column* pNext_ = nullptr;
};

}  // namespace recordset

#endif  // QXRECORDSET_RECORDSET_EXPECTEDCOLUMN_H

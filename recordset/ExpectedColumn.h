// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The column that is expected next. Rows are written and read in the same order of columns again
// and again, but a host may ask for columns in another order than its texts have them; so each of
// the two has its own expectation: the column that followed the one found last when that one was
// found the time before. It is right after one comparison in the usual case.
//
// That columns refer to each other by address makes what a lookup has to wait for from the lookup
// before as short as it can be.

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

  // The column that is expected, which is found then, when it has that name; else null. `name` is a
  // const char* or a std::string_view.
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

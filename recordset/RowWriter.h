// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Writes the rows of a table as JSON objects, in the form that the library's writer gives. A member
// is two copies: of its name, of which the column knows whether anything in it has to be escaped,
// and of its text, in steps of sixteen bytes that look for bytes to escape on the way.

#ifndef QXRECORDSET_RECORDSET_ROWWRITER_H
#define QXRECORDSET_RECORDSET_ROWWRITER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "recordset/ObjectText.h"
#include "recordset/Table.h"

namespace recordset {

class RowWriter {
 public:
  // Writes in the memory of `buffer`, whose content is dropped. The table must not change
  // meanwhile.
  RowWriter(Table& table, std::string&& buffer);

  // Writes text as it stands.
  void Raw(std::string_view text);
  void Byte(char c) {
    *Reserve(1) = c;
    ++pNext_;
  }

  // Writes a row: an object of all its cells, by the byte-wise order of their names.
  void Row(long lRow);

  // The text that was written.
  std::string Finish() &&;

 private:
  void DenseRow(const recordset::Row& row);
  void SparseRow(long lRow, const recordset::Row& row);
  void RankColumns();

  // Each writes one member and a comma behind it.
  void Member(const Column& column, const Cell& cell);
  void Object(const Column& column, std::string_view text);

  // Each writes to p, where the room that Member() makes begins, and gives the end.
  char* Name(char* p, const Column& column, std::size_t nBehind);
  char* Value(char* p, const Cell& cell);
  char* Escaped(char* p, std::string_view text, std::size_t nBehind);
  char* Integer(char* p, const Cell& cell);

  // Makes sure of the room; the result is the end of the text.
  char* Reserve(std::size_t nBytes) {
    if (static_cast<std::size_t>(pLimit_ - pNext_) < nBytes) MakeRoom(nBytes);
    return pNext_;
  }
  void MakeRoom(std::size_t nBytes);
  std::size_t At(const char* p) const { return static_cast<std::size_t>(p - strText_.data()); }

  Table& table_;
  std::string strText_;                         // the text, and room behind it
  char* pNext_;                                 // the end of the text
  char* pLimit_;                                // the end of the room
  const std::vector<const Column*>& vColumns_;  // in name order; a column's rank is its place here
  std::vector<std::uint32_t> vRanks_;  // by column index - 1; made for the first sparse row
  std::vector<std::pair<std::uint32_t, const Cell*>> vRowCells_;  // a sparse row's cells by rank
  ObjectText object_;
};

}  // namespace recordset

#endif  // QXRECORDSET_RECORDSET_ROWWRITER_H

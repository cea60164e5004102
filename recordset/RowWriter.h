// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Writes the rows of a table as JSON objects, in the form that the library's writer gives. Rows
// repeat the same names, so every name is escaped and quoted once, and a member is then two copies:
// of its name and of its text, in steps of sixteen bytes that look for bytes to escape on the way.

#ifndef QXRECORDSET_RECORDSET_ROWWRITER_H
#define QXRECORDSET_RECORDSET_ROWWRITER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "json/JSONMessage.h"
#include "recordset/Table.h"

namespace recordset {

class RowWriter {
 public:
  // Writes in the memory of `buffer`, whose content is dropped. The table must not change
  // meanwhile.
  RowWriter(Table& table, std::string&& buffer);

  // Writes text as it stands.
  void Raw(std::string_view text);

  // Writes a row: an object of all its cells, by the byte-wise order of their names.
  void Row(long lRow);

  // The text that was written.
  std::string Finish() &&;

 private:
  // A member's name as it is written: quoted, escaped, with its colon; a piece of strNames_.
  struct Name {
    std::size_t nBegin;
    std::size_t nLength;
  };

  void QuoteNames();
  void DenseRow(const recordset::Row& row);
  void SparseRow(long lRow, const recordset::Row& row);
  void RankColumns();

  // Each writes one member and a comma behind it.
  void Member(std::size_t nRank, const Cell& cell);
  void Object(std::size_t nRank, std::string_view text);

  // Each writes to p, where the room that Member() makes begins, and gives the end.
  char* Value(char* p, const Cell& cell);
  char* Text(char* p, const Cell& cell);
  char* Integer(char* p, const Cell& cell);

  char* Reserve(std::size_t nBytes);
  std::size_t At(const char* p) const { return static_cast<std::size_t>(p - strText_.data()); }

  Table& table_;
  std::string strText_;                         // the text, and room behind it
  char* pNext_;                                 // the end of the text
  char* pLimit_;                                // the end of the room
  const std::vector<std::uint32_t>& vColumns_;  // in name order; a column's rank is its place here
  std::vector<Name> vNames_;                    // by rank
  std::string strNames_;
  std::vector<std::uint32_t> vRanks_;  // by column index - 1; made for the first sparse row
  std::vector<std::pair<std::uint32_t, const Cell*>> vRowCells_;  // a sparse row's cells by rank
  std::string strScratch_;
  std::optional<JSON::Message> message_;  // made for the first object
};

}  // namespace recordset

#endif  // QXRECORDSET_RECORDSET_ROWWRITER_H

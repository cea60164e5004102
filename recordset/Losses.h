// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What a text loses on its way into cells. The loader is compiled twice: SetString() does not count
// (NoLosses), Load() does (LossCounter).

#ifndef QXRECORDSET_RECORDSET_LOSSES_H
#define QXRECORDSET_RECORDSET_LOSSES_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "json/JSONValue.h"
#include "recordset/LoadResult.h"
#include "text/Fault.h"

namespace recordset {

class Table;

// Each function is told of a value that goes into the cell in row lRow and column nColumn.
class NoLosses {
 public:
  void Text(long /*lRow*/, std::uint32_t /*nColumn*/, std::string_view /*text*/) {}
  void Integer(long /*lRow*/, std::uint32_t /*nColumn*/, std::string_view /*digits*/) {}
  void Real(long /*lRow*/, std::uint32_t /*nColumn*/) {}
  void Array(long /*lRow*/, std::uint32_t /*nColumn*/) {}
  void Object(long /*lRow*/, std::uint32_t /*nColumn*/, std::string_view /*text*/) {}
  void Restart() {}

  // The cells of a table were added to those of another.
  void Moved(const Table& /*from*/, const Table& /*to*/) {}

  // The text is refused, by a reader that stopped at nStop. False.
  bool Refuse(std::ptrdiff_t /*nStop*/, JSON::Fault /*fault*/) { return false; }
};

class LossCounter {
 public:
  // Counts what is lost of `text` in `result`; or, where the text is refused, explains that there.
  LossCounter(std::string_view text, LoadResult& result) : text_(text), result_(result) {}

  void Text(long lRow, std::uint32_t nColumn, std::string_view text);
  void Integer(long lRow, std::uint32_t nColumn, std::string_view digits);
  void Real(long lRow, std::uint32_t nColumn);
  void Array(long lRow, std::uint32_t nColumn);

  // The text of an object, which is written anew for its cell.
  void Object(long lRow, std::uint32_t nColumn, std::string_view text);

  // What was loaded so far is dropped.
  void Restart();

  void Moved(const Table& from, const Table& to);
  bool Refuse(std::ptrdiff_t nStop, JSON::Fault fault);

 private:
  void Count(std::size_t& nValues, long lRow, std::uint32_t nColumn);
  void NoteCell(long lRow, std::uint32_t nColumn);
  void CountMember(const JSON::JSONValue& value);

  std::string_view text_;
  LoadResult& result_;
};

}  // namespace recordset

#endif  // QXRECORDSET_RECORDSET_LOSSES_H

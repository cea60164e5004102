// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The fast path for loading a row. Nearly all rows that arrive were written by a program: their
// members have the names that the row before had, in the same order, and their values are short.
// Such members go from the text into their cells here, each decided by a few comparisons of sixteen
// bytes. A member that is not plain in any way is left to the grammar; so this file decides nothing
// about what is accepted.

#ifndef QXRECORDSET_RECORDSET_PLAINMEMBERS_H
#define QXRECORDSET_RECORDSET_PLAINMEMBERS_H

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "recordset/QXRecordSet.h"
#include "recordset/Table.h"
#include "text/Block.h"
#include "text/IntegerText.h"
#include "text/Scan.h"

namespace recordset {

class PlainMembers {
 public:
  using Expected = ExpectedColumn<Column::kText>;

  // Reads a text that ends at pEnd with a NUL.
  PlainMembers(Table& table, Expected& expected, const char* pEnd)
      : table_(table), expected_(expected), pEnd_(pEnd) {}

  // Reads members of a row from p, where one is due, and puts them into cells that do not exist
  // yet. The result is the position behind the closing brace of the row or behind the comma in
  // front of the first member that was left (p, when that is the very first): IsRowEnd() tells
  // which.
  const char* Read(const char* p, long lRow);

  // `p` is what Read() gave: behind the byte in front of the first member, at least.
  static bool IsRowEnd(const char* p) { return p[-1] == '}'; }

 private:
  using Block16 = JSON::Block16;

  // Bytes that must be there where a name, or a value, is looked at: a block behind a quote, and
  // the byte behind it.
  static constexpr std::ptrdiff_t kReach = 2 + Block16::kBytes;

  // What goes into a cell. A block can be read at any text but "", "0" and "1".
  struct Value {
    const char* pText;
    std::size_t nLength;
    std::int32_t eType;
  };

  const Column* ReadName(const char*& p);
  const char* ReadValue(const char* p, Value& value) const;
  static const char* ReadInteger(const char* p, Value& value);
  static const char* ReadLiteral(const char* p, Value& value);
  bool MakeRoom(long lRow, const Column& column, Rows::Cells& cells);

  // The first byte at or behind p that is no white space. Where none stands, which is usual, the
  // callers look before they call.
  const char* SkipSpace(const char* p) const { return JSON::SkipSpaceRun(p, pEnd_); }

  Table& table_;
  Expected& expected_;
  const char* const pEnd_;
};

// Each of the following reads a value that begins at p, and gives the position behind it, or null
// when it is none of the plain ones. REQUIRES: kReach bytes at p.

QXRECORDSET_HOT const char* PlainMembers::ReadValue(const char* p, Value& value) const {
  if (*p != '"') return *p <= '9' ? ReadInteger(p, value) : ReadLiteral(p, value);
  const std::uint32_t nStop = Block16::Load(p + 1).QuoteBackslashOrNul();
  const char* const pStop = nStop != 0 ? p + 1 + JSON::LowestBit(nStop)
                                       : JSON::FindTextStop(p + 1 + Block16::kBytes, pEnd_);
  value = {p + 1, static_cast<std::size_t>(pStop - p - 1), CQXRecordSet::QX_TEXT};
  return *pStop == '"' ? pStop + 1 : nullptr;
}

// Digits as the library writes them; they are the cell's text as they stand.
QXRECORDSET_HOT const char* PlainMembers::ReadInteger(const char* p, Value& value) {
  const unsigned nLength = JSON::CanonicalLength(p);
  value = {p, nLength, CQXRecordSet::QX_LONG};
  return nLength != 0 ? p + nLength : nullptr;
}

QXRECORDSET_HOT const char* PlainMembers::ReadLiteral(const char* p, Value& value) {
  const unsigned nLength = JSON::LiteralLength(p);
  value = *p == 'n' ? Value{"", 0, CQXRecordSet::QX_NULL}
                    : Value{*p == 't' ? "1" : "0", 1, CQXRecordSet::QX_BOOL};
  return nLength != 0 ? p + nLength : nullptr;
}

// A name that is not the one expected. It has no escapes, its colon follows at once, and no array
// or object behind that. Moves p behind the colon; null when it is no such name. REQUIRES: *p is a
// '"', and a block can be read behind it.
inline const Column* PlainMembers::ReadName(const char*& p) {
  assert(*p == '"');
  const char* const pName = p + 1;
  if (const Column* const pColumn = table_.columns.AddAgain(pName, pEnd_)) {
    p = pName + pColumn->name.Length() + 2;
    return &expected_.Learn(*pColumn);
  }
  const char* const pStop = JSON::FindTextStop(pName, pEnd_);
  if (*pStop != '"' || pStop[1] != ':') return nullptr;  // at pEnd_ stands a NUL
  if (pStop[2] == '[' || pStop[2] == '{') return nullptr;
  p = pStop + 2;
  const std::string_view name(pName, static_cast<std::size_t>(pStop - pName));
  if (const Column* const pColumn = expected_.Take(name)) return pColumn;
  return &expected_.Learn(table_.columns.FindOrAdd(name, Block16::Load(pName)));
}

// Lets the row's array reach a column. False when the cell belongs somewhere else.
inline bool PlainMembers::MakeRoom(long lRow, const Column& column, Rows::Cells& cells) {
  table_.rows.EnsureCell(lRow, column.Index());
  cells = table_.rows.CellsOf(lRow);
  return column.nPosition < cells.nCount;
}

// Positions stay within the text: before a name or a value is looked at, kReach bytes are left or p
// is on the NUL at pEnd_, which is neither white space nor a byte that a name or a value begins
// with.
inline const char* PlainMembers::Read(const char* p, long lRow) {
  if (pEnd_ - p <= kReach) return p;
  const char* const pLimit = pEnd_ - kReach;
  const Column* pLast = nullptr;  // the column of the last member that was read
  const Column* pColumn = expected_.Get();
  const char* pMember = p;
  if (JSON::IsSpace(*p)) p = SkipSpace(p);
  Rows::Cells cells = {nullptr, 0};
  if (*p == '"') cells = table_.rows.CellsToFill(lRow);
  while (p < pLimit && *p == '"') {
    if (pColumn != nullptr && pColumn->name.MatchesMember(p + 1, pEnd_)) {
      p += 3 + pColumn->name.Length();
    } else {
      if (pLast != nullptr) expected_.Found(*std::exchange(pLast, nullptr));
      pColumn = ReadName(p);
      if (pColumn == nullptr) break;
    }
    if (JSON::IsSpace(*p)) p = SkipSpace(p);
    Value value;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled when it is read
    if (p >= pLimit || (p = ReadValue(p, value)) == nullptr) break;
    if (*p != ',' && *p != '}') p = SkipSpace(p);
    if (*p != ',' && *p != '}') break;
    if (pColumn->nPosition >= cells.nCount && !MakeRoom(lRow, *pColumn, cells)) break;
    Cell& cell = cells.pFirst[pColumn->nPosition];
    if (cell.Exists()) break;
    cell = {table_.texts.StoreReadable(value.pText, value.nLength),
            static_cast<std::uint32_t>(value.nLength), value.eType};
    pLast = pColumn;
    pColumn = pColumn->apNext[Column::kText];
    pMember = p + 1;
    if (*p == '}') break;
    if (*++p != '"') p = SkipSpace(p);
  }
  if (pLast != nullptr) expected_.Found(*pLast);
  return pMember;
}

}  // namespace recordset

#endif  // QXRECORDSET_RECORDSET_PLAINMEMBERS_H

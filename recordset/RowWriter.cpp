// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// RowWriter: the loop over a row's cells, and the values by their types.

#include "recordset/RowWriter.h"

#include <algorithm>
#include <cstring>

#include "recordset/QXRecordSet.h"
#include "text/Block.h"
#include "text/Digits.h"
#include "text/Escape.h"
#include "text/IntegerText.h"
#include "text/ReadDecimal.h"
#include "text/TextRoom.h"

namespace recordset {
namespace {

using JSON::Block16;

// A row's cells are looked up by the names of all columns in order, unless the row spans less than
// one column in this many, or has far cells: then its own cells are sorted by name.
constexpr std::uint32_t kSparseFactor = 4;

// Room for a member beside its name and text: quotes and commas, or a number or literal, and what
// the last block of a copy writes beyond its end.
constexpr std::size_t kSpare = 24 + Block16::kBytes;

// Copies `n` bytes in blocks. REQUIRES: as many blocks can be read and written.
QXRECORDSET_HOT char* CopyBlocks(char* to, const char* from, std::size_t n) {
  for (std::size_t i = 0; i < n; i += Block16::kBytes) {
    Block16::Load(from + i).Store(to + i);
  }
  return to + n;
}

// The text of a cell that is shorter than a block.
QXRECORDSET_HOT char* CopyBlock(char* to, const Cell& cell) {
  Block16::Load(cell.pText).Store(to);
  return to + cell.Length();
}

// Copies blocks, too; false if a byte among them has to be escaped.
QXRECORDSET_HOT bool CopyPlainBlocks(char* to, const char* from, std::size_t n) {
  for (; n >= Block16::kBytes; to += Block16::kBytes, from += Block16::kBytes) {
    const Block16 block = Block16::Load(from);
    block.Store(to);
    if (block.NeedsEscape() != 0) return false;
    n -= Block16::kBytes;
  }
  const Block16 block = Block16::Load(from);
  block.Store(to);
  return (block.NeedsEscape() & ((1u << n) - 1)) == 0;
}

// Whether a text, spaces around it aside, begins with '{' and ends with '}'.
bool LooksLikeObject(std::string_view text) {
  const std::size_t nFirst = text.find_first_not_of(' ');
  return nFirst != std::string_view::npos && text[nFirst] == '{' &&
         text[text.find_last_not_of(' ')] == '}';
}

// Whether the first byte of a text says that it may look like an object.
bool MayBeObject(const char* pText) { return *pText == '{' || *pText == ' '; }

}  // namespace

RowWriter::RowWriter(Table& table, std::string&& buffer)
    : table_(table),
      strText_(std::move(buffer)),
      pNext_(strText_.data()),
      pLimit_(pNext_ + strText_.size()),
      vColumns_(table.ColumnsByName()) {}

std::string RowWriter::Finish() && {
  strText_.resize(At(pNext_));
  return std::move(strText_);
}

void RowWriter::Raw(std::string_view text) {
  char* const p = Reserve(text.size());
  std::memcpy(p, text.data(), text.size());
  pNext_ = p + text.size();
}

void RowWriter::MakeRoom(std::size_t nBytes) {
  const std::size_t nText = At(pNext_);
  JSON::MakeRoom(strText_, nText, nBytes);
  pNext_ = strText_.data() + nText;
  pLimit_ = strText_.data() + strText_.size();
}

// ---- Rows ---------------------------------------------------------------------------------------

// A comma is written behind every member; the last one becomes the closing brace.
void RowWriter::Row(long lRow) {
  Byte('{');
  const recordset::Row* const pRow = table_.rows.FindRow(lRow);
  if (pRow != nullptr) {
    if (pRow->bHasFar || pRow->nSpan < vColumns_.size() / kSparseFactor) {
      SparseRow(lRow, *pRow);
    } else {
      DenseRow(*pRow);
    }
  }
  if (pNext_[-1] == ',') --pNext_;  // the opening brace at least stands there
  Byte('}');
}

void RowWriter::DenseRow(const recordset::Row& row) {
  for (const Column* const pColumn : vColumns_) {
    if (pColumn->nPosition >= row.nSpan) continue;
    const Cell& cell = row.pCells[pColumn->nPosition];
    if (cell.Exists()) Member(*pColumn, cell);
  }
}

void RowWriter::SparseRow(long lRow, const recordset::Row& row) {
  if (vRanks_.empty()) RankColumns();
  vRowCells_.clear();
  table_.rows.ForEachCell(lRow, row, [this](std::uint32_t nColumn, const Cell& cell) {
    vRowCells_.emplace_back(vRanks_[nColumn - 1], &cell);
  });
  std::sort(vRowCells_.begin(), vRowCells_.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
  for (const auto& [nRank, pCell] : vRowCells_) {
    Member(*vColumns_[nRank], *pCell);
  }
}

void RowWriter::RankColumns() {
  vRanks_.resize(vColumns_.size());
  for (std::uint32_t i = 0; i < vColumns_.size(); ++i) {
    vRanks_[vColumns_[i]->nPosition] = i;
  }
}

// ---- Members ------------------------------------------------------------------------------------

QXRECORDSET_HOT void RowWriter::Member(const Column& column, const Cell& cell) {
  if (MayBeObject(cell.pText) && LooksLikeObject({cell.pText, cell.Length()})) {
    Object(column, {cell.pText, cell.Length()});
    return;
  }
  const std::size_t nValue = cell.Length() + kSpare;
  char* p = Reserve(column.name.Length() + nValue);
  p = Name(p, column, nValue);
  p = Value(p, cell);
  *p++ = ',';
  pNext_ = p;
}

// A name and its colon. There is room for nBehind bytes more in the end.
QXRECORDSET_HOT char* RowWriter::Name(char* p, const Column& column, std::size_t nBehind) {
  *p++ = '"';
  const std::size_t nLength = column.name.Length();
  if (nLength < JSON::ExpectedName::kShortName && column.bPlainName) {
    column.name.QuotedName().Store(p);
    return p + nLength + 2;
  }
  if (column.bPlainName) {
    p = CopyBlocks(p, column.name.Text(), nLength);
  } else {
    p = Escaped(p, {column.name.Text(), nLength}, nBehind);
  }
  *p++ = '"';
  *p++ = ':';
  return p;
}

QXRECORDSET_HOT char* RowWriter::Value(char* p, const Cell& cell) {
  switch (cell.eType) {
    case CQXRecordSet::QX_LONG:
      return Integer(p, cell);
    case CQXRecordSet::QX_NULL:
      std::memcpy(p, "null", 4);  // NOLINT(bugprone-not-null-terminated-result): a piece of text
      return p + 4;
    case CQXRecordSet::QX_BOOL: {
      const bool bTrue = cell.Length() == 1 && *cell.pText == '1';
      std::memcpy(p, bTrue ? "true" : "false", 5);
      return p + (bTrue ? 4 : 5);
    }
    default:
      break;
  }
  *p++ = '"';
  if (cell.IsPlain()) {
    p = CopyBlock(p, cell);
  } else if (CopyPlainBlocks(p, cell.pText, cell.Length())) {
    p += cell.Length();
  } else {
    p = Escaped(p, {cell.pText, cell.Length()}, kSpare);
  }
  *p++ = '"';
  return p;
}

// A text with escapes. There is room for nBehind bytes more in the end.
char* RowWriter::Escaped(char* p, std::string_view text, std::size_t nBehind) {
  const std::size_t nEnd = JSON::WriteEscaped(strText_, At(p), text, nBehind);
  pLimit_ = strText_.data() + strText_.size();
  return strText_.data() + nEnd;
}

// Digits that are written as the library writes integers are copied, others are converted.
QXRECORDSET_HOT char* RowWriter::Integer(char* p, const Cell& cell) {
  if (cell.IsPlain()) return CopyBlock(p, cell);
  if (cell.Length() == 0 || JSON::CanonicalLength(cell.pText) != cell.Length()) {
    return JSON::WriteDecimal(JSON::ReadDecimal<long>({cell.pText, cell.Length()}), p);
  }
  return CopyBlock(p, cell);
}

// What is no object after all is left out.
void RowWriter::Object(const Column& column, std::string_view text) {
  const std::string_view object = object_.Rewritten(text);
  if (object.empty()) return;
  pNext_ = Name(Reserve(column.name.Length() + kSpare), column, 0);
  Raw(object);
  Byte(',');
}

}  // namespace recordset

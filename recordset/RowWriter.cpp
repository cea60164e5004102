// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// RowWriter: the loop over a row's cells, and the values by their types.

#include "recordset/RowWriter.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <limits>

#include "json/Block.h"
#include "json/Digits.h"
#include "json/Escape.h"
#include "json/JSONSerialize.h"
#include "json/TextRoom.h"
#include "recordset/IntegerText.h"
#include "recordset/QXRecordSet.h"

namespace recordset {
namespace {

using JSON::Block16;

// A row's cells are looked up by the names of all columns in order, unless the row spans less than
// one column in this many, or has far cells: then its own cells are sorted by name.
constexpr std::uint32_t kSparseFactor = 4;

// Room for a member beside its name and text: quotes and commas, or a number or literal, and what
// the last block of a copy writes beyond its end.
constexpr std::size_t kSpare = 24 + Block16::kBytes;

// As many digits as fit any `long`, whatever they are, and a block.
constexpr std::size_t kShortDigits =
    std::min<std::size_t>(std::numeric_limits<long>::digits10, Block16::kBytes - 1);

constexpr int kObjectBytes = 1024;  // reserved for the text of a nested object

// Copies `n` bytes in blocks. REQUIRES: as many blocks can be read and written.
QXRECORDSET_HOT char* CopyBlocks(char* to, const char* from, std::size_t n) {
  for (std::size_t i = 0; i < n; i += Block16::kBytes) {
    Block16::Load(from + i).Store(to + i);
  }
  return to + n;
}

// The same, false if a byte among them has to be escaped.
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
      vColumns_(table.columns.InNameOrder()) {}

std::string RowWriter::Finish() && {
  strText_.resize(At(pNext_));
  return std::move(strText_);
}

void RowWriter::Raw(std::string_view text) {
  char* const p = Reserve(text.size());
  std::memcpy(p, text.data(), text.size());
  pNext_ = p + text.size();
}

// Makes sure of the room; the result is the end of the text.
char* RowWriter::Reserve(std::size_t nBytes) {
  if (static_cast<std::size_t>(pLimit_ - pNext_) < nBytes) {
    const std::size_t nText = At(pNext_);
    JSON::MakeRoom(strText_, nText, nBytes);
    pNext_ = strText_.data() + nText;
    pLimit_ = strText_.data() + strText_.size();
  }
  return pNext_;
}

// ---- Rows --------------------------------------------------------------------------------------

// A comma is written behind every member; the last one becomes the closing brace.
void RowWriter::Row(long lRow) {
  Raw("{");
  const recordset::Row* const pRow = table_.rows.FindRow(lRow);
  if (pRow != nullptr) {
    if (vNames_.empty()) QuoteNames();
    if (pRow->bHasFar || pRow->nSpan < vColumns_.size() / kSparseFactor) {
      SparseRow(lRow, *pRow);
    } else {
      DenseRow(*pRow);
    }
  }
  if (pNext_[-1] == ',') --pNext_;
  Raw("}");
}

void RowWriter::DenseRow(const recordset::Row& row) {
  const std::size_t nColumns = vColumns_.size();
  for (std::size_t i = 0; i < nColumns; ++i) {
    const std::uint32_t nColumn = vColumns_[i];
    if (nColumn > row.nSpan) continue;
    const Cell& cell = row.pCells[nColumn - 1];
    if (cell.Exists()) Member(i, cell);
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
    Member(nRank, *pCell);
  }
}

void RowWriter::RankColumns() {
  vRanks_.resize(vColumns_.size());
  for (std::uint32_t i = 0; i < vColumns_.size(); ++i) {
    vRanks_[vColumns_[i] - 1] = i;
  }
}

void RowWriter::QuoteNames() {
  vNames_.reserve(vColumns_.size());
  for (const std::uint32_t nColumn : vColumns_) {
    const std::size_t nBegin = strNames_.size();
    strNames_ += '"';
    JSON::AppendEscaped(strNames_, table_.columns.NameOf(nColumn));
    strNames_ += "\":";
    vNames_.push_back({nBegin, strNames_.size() - nBegin});
  }
  strNames_.append(Block16::kBytes, ' ');  // names are copied in blocks
}

// ---- Members -----------------------------------------------------------------------------------

QXRECORDSET_HOT void RowWriter::Member(std::size_t nRank, const Cell& cell) {
  if (MayBeObject(cell.pText) && LooksLikeObject({cell.pText, cell.nLength})) {
    Object(nRank, {cell.pText, cell.nLength});
    return;
  }
  const Name name = vNames_[nRank];
  char* p = Reserve(name.nLength + cell.nLength + kSpare);
  p = CopyBlocks(p, strNames_.data() + name.nBegin, name.nLength);
  p = Value(p, cell);
  *p++ = ',';
  pNext_ = p;
}

QXRECORDSET_HOT char* RowWriter::Value(char* p, const Cell& cell) {
  switch (cell.eType) {
    case CQXRecordSet::QX_LONG:
      return Integer(p, cell);
    case CQXRecordSet::QX_NULL:
      std::memcpy(p, "null", 4);
      return p + 4;
    case CQXRecordSet::QX_BOOL: {
      const bool bTrue = cell.nLength == 1 && *cell.pText == '1';
      std::memcpy(p, bTrue ? "true" : "false", 5);
      return p + (bTrue ? 4 : 5);
    }
    default:
      break;
  }
  *p++ = '"';
  if (!CopyPlainBlocks(p, cell.pText, cell.nLength)) return Text(p, cell);
  p += cell.nLength;
  *p++ = '"';
  return p;
}

// A text with escapes, behind its opening quote.
char* RowWriter::Text(char* p, const Cell& cell) {
  const std::size_t nEnd = JSON::WriteEscaped(strText_, At(p), {cell.pText, cell.nLength}, kSpare);
  pLimit_ = strText_.data() + strText_.size();
  p = strText_.data() + nEnd;
  *p++ = '"';
  return p;
}

// Digits that are written as the library writes integers are copied, others are converted.
QXRECORDSET_HOT char* RowWriter::Integer(char* p, const Cell& cell) {
  const Block16 block = Block16::Load(cell.pText);
  const unsigned nSign = *cell.pText == '-' ? 1 : 0;
  const std::size_t nDigits = cell.nLength - nSign;
  const bool bShort = nDigits - 1 < kShortDigits;
  const bool bCanonical = bShort && (cell.pText[nSign] != '0' || cell.nLength == 1) &&
                          ((block.NonDigits() >> nSign) & ((1u << nDigits) - 1)) == 0;
  if (!bCanonical) return JSON::WriteDecimal(ReadLong({cell.pText, cell.nLength}), p);
  block.Store(p);
  return p + cell.nLength;
}

// The parser rewrites its text, so it gets a copy. What does not parse is left out.
void RowWriter::Object(std::size_t nRank, std::string_view text) {
  if (text.size() > INT_MAX) return;
  if (!message_) message_.emplace(true);
  strScratch_.assign(text);
  if (!message_->Parse(strScratch_.data(), static_cast<int>(strScratch_.size()))) return;
  JSON::Serialize writer(kObjectBytes);
  json_walk_obj(writer, &*message_, 0);
  const Name name = vNames_[nRank];
  Raw(std::string_view(strNames_).substr(name.nBegin, name.nLength));
  Raw(writer.String());
  Raw(",");
}

}  // namespace recordset

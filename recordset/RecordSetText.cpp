// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Writing a record set as JSON text: GetString(), and json_walk_obj(), which writes a parsed object
// through the streaming writer.

#include <algorithm>
#include <climits>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "json/JSONMessage.h"
#include "json/JSONSerialize.h"
#include "recordset/IntegerText.h"
#include "recordset/QXRecordSet.h"
#include "recordset/Table.h"

using recordset::Cell;
using recordset::Row;
using recordset::Table;

namespace {

constexpr std::size_t kWriterBytes = 1024;  // reserved for the text

// A row's cells are looked up by the names of all columns in order, unless the row spans less than
// one column in this many, or has far cells: then its own cells are sorted by name.
constexpr std::uint32_t kSparseFactor = 4;

// An integer as the library writes it; digits that are so already are not converted.
void WriteInteger(JSON::Serialize& writer, std::string_view text) {
  if (recordset::IsCanonicalInteger(text)) {
    writer.JS_N(text.data(), static_cast<int>(text.size()));
  } else {
    writer.V(recordset::ReadLong(text));
  }
}

// Whether a text, spaces around it aside, begins with '{' and ends with '}'.
bool LooksLikeObject(std::string_view text) {
  if (text.empty() || (text.front() != '{' && text.front() != ' ')) return false;
  const std::size_t nFirst = text.find_first_not_of(' ');
  return nFirst != std::string_view::npos && text[nFirst] == '{' &&
         text[text.find_last_not_of(' ')] == '}';
}

// Writes the rows of a table, each as the members of an object that the caller has opened.
class RowWriter {
 public:
  RowWriter(Table& table, JSON::Serialize& writer)
      : table_(table), writer_(writer), vColumns_(table.columns.InNameOrder()) {}

  void Write(long lRow) {
    const Row* const pRow = table_.rows.FindRow(lRow);
    if (pRow == nullptr) return;
    if (pRow->bHasFar || pRow->nSpan < vColumns_.size() / kSparseFactor) {
      WriteSparse(lRow, *pRow);
    } else {
      WriteDense(*pRow);
    }
  }

 private:
  void WriteDense(const Row& row) {
    for (const std::uint32_t nColumn : vColumns_) {
      if (nColumn > row.nSpan) continue;
      const Cell& cell = row.pCells[nColumn - 1];
      if (cell.Exists()) WriteMember(nColumn, cell);
    }
  }

  void WriteSparse(long lRow, const Row& row) {
    if (vRanks_.empty()) RankColumns();
    vRowCells_.clear();
    table_.rows.ForEachCell(lRow, row, [this](std::uint32_t nColumn, const Cell& cell) {
      vRowCells_.emplace_back(vRanks_[nColumn - 1], &cell);
    });
    std::sort(vRowCells_.begin(), vRowCells_.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& [nRank, pCell] : vRowCells_) {
      WriteMember(vColumns_[nRank], *pCell);
    }
  }

  // The place of every column in the order by name.
  void RankColumns() {
    vRanks_.resize(vColumns_.size());
    for (std::uint32_t i = 0; i < vColumns_.size(); ++i) {
      vRanks_[vColumns_[i] - 1] = i;
    }
  }

  void WriteMember(std::uint32_t nColumn, const Cell& cell) {
    const std::string_view text(cell.pText, cell.nLength);
    const std::string_view name = table_.columns.NameOf(nColumn);
    if (LooksLikeObject(text)) {
      WriteObject(name, text);
      return;
    }
    writer_.N(name);
    switch (cell.eType) {
      case CQXRecordSet::QX_LONG:
        return WriteInteger(writer_, text);
      case CQXRecordSet::QX_NULL:
        return WriteLiteral("null");
      case CQXRecordSet::QX_BOOL:
        return WriteLiteral(text == "1" ? "true" : "false");
      default:
        writer_.V(text);
    }
  }

  void WriteLiteral(std::string_view literal) {
    writer_.JS_N(literal.data(), static_cast<int>(literal.size()));
  }

  // The parser rewrites its text, so it gets a copy. What does not parse is left out.
  void WriteObject(std::string_view name, std::string_view text) {
    if (text.size() > INT_MAX) return;
    strScratch_.assign(text);
    if (!message_.Parse(strScratch_.data(), static_cast<int>(strScratch_.size()))) return;
    writer_.N(name);
    json_walk_obj(writer_, &message_, 0);
  }

  Table& table_;
  JSON::Serialize& writer_;
  const std::vector<std::uint32_t>& vColumns_;  // in name order
  std::vector<std::uint32_t> vRanks_;  // by column index - 1; made for the first sparse row
  std::vector<std::pair<std::uint32_t, const Cell*>> vRowCells_;  // a sparse row's cells by rank
  std::string strScratch_;
  JSON::Message message_{true};
};

// Everything but objects, the name included.
void WriteWalkedScalar(JSON::Serialize& writer, const JSON::JSONValue& value) {
  const std::string_view text(value.pText, static_cast<std::size_t>(value.nLength));
  switch (value.eType) {
    case JSON::jtBoolean:
      writer.AppendString(!text.empty() && text.front() == 't' ? "true" : "false");
      break;
    case JSON::jtInteger:
      WriteInteger(writer, text);
      break;
    case JSON::jtString:
      if (value.pText != nullptr) {
        writer.V(text);
        break;
      }
      [[fallthrough]];
    default:
      writer.JS(nullptr);
  }
}

}  // namespace

// The memory of the last text, which the next one needs again, or about as much as a first text is
// going to need.
std::string CQXRecordSet::BufferForText() {
  std::string buffer = std::move(strText);
  strText.clear();
  if (buffer.capacity() < kWriterBytes) {
    const std::size_t nTable = pTable != nullptr ? pTable->Footprint() : 0;
    buffer.reserve(std::max(kWriterBytes, nTable - nTable / 4));
  }
  return buffer;
}

const std::string& CQXRecordSet::GetString() {
  if (!bModified) return strText;
  JSON::Serialize writer(BufferForText());
  writer.OO();
  if (lRowsCount >= 2) writer.N("rows").AO();
  if (lRowsCount >= 1) {
    RowWriter rows(EnsureTable(), writer);
    if (lRowsCount == 1) rows.Write(1);
    for (long i = 0; lRowsCount > 1 && i < lRowsCount; ++i) {
      writer.OO();
      rows.Write(i + 1);
      writer.OC();
    }
  }
  if (lRowsCount >= 2) writer.AC();
  writer.OC();
  strText = std::move(writer).String();
  return strText;
}

const std::string& CQXRecordSet::GetStringRef() const { return strText; }

// Objects within objects wait on a stack of their own, so that no nesting is too deep.
void json_walk_obj(JSON::Serialize& writer, JSON::JSONValue const* value, int nested) {
  std::vector<std::pair<const JSON::JSONValue*, int>> vOuter;  // object, next ordinal
  const JSON::JSONValue* pObject = value;
  int nOrdinal = 0;
  if (nested == 0) writer.OO();
  for (;;) {
    const JSON::JSONValue* const pMember = pObject->GetByOrdinal(nOrdinal);
    if (pMember == nullptr) {
      if (vOuter.empty()) break;
      pObject = vOuter.back().first;
      nOrdinal = vOuter.back().second;
      vOuter.pop_back();
      writer.OC();
      continue;
    }
    const char* const name = pObject->pComposite->NameAt(nOrdinal++);
    if (name == nullptr) continue;
    writer.N(name);
    if (pMember->eType == JSON::jtObject) {
      vOuter.emplace_back(pObject, nOrdinal);
      pObject = pMember;
      nOrdinal = 0;
      writer.OO();
    } else {
      WriteWalkedScalar(writer, *pMember);
    }
  }
  if (nested == 0) writer.OC();
}

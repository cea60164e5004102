// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Loading JSON text: SetString() and its relatives.
//
// The text is read by the grammar that documents are read by (text/Grammar.h), but without a tree
// and without a copy of the text: members go straight into the cells of a new table, which the
// record set takes over when the text was read to its end. Only an object inside a cell is parsed
// into a tree, because it is written again.

#include <algorithm>
#include <climits>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "json/JSONMessage.h"
#include "json/JSONSerialize.h"
#include "recordset/PlainMembers.h"
#include "recordset/QXRecordSet.h"
#include "recordset/Table.h"
#include "text/Bytes.h"
#include "text/Digits.h"
#include "text/Grammar.h"
#include "text/IntegerText.h"
#include "text/ReadDecimal.h"

using JSON::UpToNul;
using recordset::Column;
using recordset::PlainMembers;
using recordset::Table;

namespace {

using Text = JSON::Text<const char, true>;  // the bytes of a std::string

constexpr int kWriterBytes = 1024;  // reserved for the text of a nested object
constexpr char szRows[] = "rows";

// Reads a value, or a name, that is of no interest.
class Skipper {
 public:
  explicit Skipper(Text& text) : text_(text) {}

  const char* Name(const char* p) { return SkipString(p); }
  const char* Element(const char* p) { return Value(p); }
  void Complete() {}
  void Missing() {}
  static JSON::Due Shortcut(const char*& /*p*/) { return JSON::Due::kItem; }

  const char* Value(const char* p) {
    if (text_.AtEnd(p)) return text_.Fail(p);
    switch (*p) {
      case '"':
        return SkipString(p);
      case '{':
        return ReadObject(text_, p, *this);
      case '[':
        return ReadArray(text_, p, *this);
      case 't':
      case 'f':
      case 'n':
        return ReadLiteral(text_, p);
      default:
        break;
    }
    bool bReal = false;
    return JSON::BeginsNumber(*p) ? JSON::ScanNumber(p, text_.pEnd, bReal) : text_.Fail(p);
  }

 private:
  const char* SkipString(const char* pQuote) {
    const char* const pClosing = JSON::FindStringEnd(pQuote + 1, text_.pEnd);
    return pClosing != nullptr ? pClosing + 1 : text_.Fail(pQuote + 1);
  }

  Text& text_;
};

// Puts values into cells.
class CellLoader {
 public:
  CellLoader(Text& text, Table& table) : text_(text), table_(table) {}

  // Reads the value at p into a cell.
  const char* Load(const char* p, long lRow, std::uint32_t nColumn) {
    if (*p == '"') return LoadString(p, lRow, nColumn);
    if (JSON::BeginsNumber(*p)) return LoadNumber(p, lRow, nColumn);
    const char* const pNext = Skipper(text_).Value(p);
    if (pNext == nullptr) return nullptr;
    switch (*p) {
      case 't':
        Set(lRow, nColumn, "1", CQXRecordSet::QX_BOOL);
        break;
      case 'f':
        Set(lRow, nColumn, "0", CQXRecordSet::QX_BOOL);
        break;
      case 'n':
        Set(lRow, nColumn, "", CQXRecordSet::QX_NULL);
        break;
      case '{':
        Set(lRow, nColumn, WrittenAnew({p, static_cast<std::size_t>(pNext - p)}),
            CQXRecordSet::QX_RECORDSET);
        break;
      default:
        Set(lRow, nColumn, "", CQXRecordSet::QX_TEXT);
    }
    return pNext;
  }

  // The unescaped string with its opening quote at p: in the text itself where it holds no escape,
  // else valid until the next one. Moves p behind the closing quote, or to null when there is none.
  std::string_view ReadString(const char*& p) {
    const char* const pContent = p + 1;
    const char* const pStop = JSON::FindQuoteOrBackslash(pContent, text_.pEnd);
    const std::size_t nPlain = static_cast<std::size_t>(pStop - pContent);
    if (pStop != text_.pEnd && *pStop == '"') {
      p = pStop + 1;
      return {pContent, nPlain};
    }
    const char* const pClosing = JSON::FindStringEnd(pStop, text_.pEnd);
    if (pClosing == nullptr) {
      p = text_.Fail(pContent);
      return {};
    }
    p = pClosing + 1;
    strUnescaped_.resize(static_cast<std::size_t>(pClosing - pContent));  // it never gets longer
    std::copy(pContent, pStop, strUnescaped_.begin());
    char* pWrite = strUnescaped_.data() + nPlain;
    JSON::Unescape(pStop, text_.pEnd, pWrite);
    return {strUnescaped_.data(), static_cast<std::size_t>(pWrite - strUnescaped_.data())};
  }

  // The same for a name, which ends at its first NUL.
  std::string_view ReadName(const char*& p) { return UpToNul(ReadString(p)); }

 private:
  void Set(long lRow, std::uint32_t nColumn, std::string_view text, CQXRecordSet::QX_TYPE eType) {
    table_.SetCell(lRow, nColumn, text.data(), text.size(), eType);
  }

  const char* LoadString(const char* p, long lRow, std::uint32_t nColumn) {
    const char* const pStop = JSON::FindTextStop(p + 1, text_.pEnd);
    if (*pStop == '"') {
      Set(lRow, nColumn, {p + 1, static_cast<std::size_t>(pStop - p - 1)}, CQXRecordSet::QX_TEXT);
      return pStop + 1;
    }
    const std::string_view text = ReadString(p);
    if (p != nullptr) Set(lRow, nColumn, UpToNul(text), CQXRecordSet::QX_TEXT);
    return p;
  }

  const char* LoadNumber(const char* p, long lRow, std::uint32_t nColumn) {
    bool bReal = false;
    const char* const pNext = JSON::ScanNumber(p, text_.pEnd, bReal);
    const std::string_view digits(p, static_cast<std::size_t>(pNext - p));
    if (bReal) {
      Set(lRow, nColumn, "", CQXRecordSet::QX_TEXT);
    } else if (JSON::IsCanonicalInteger(digits)) {
      Set(lRow, nColumn, digits, CQXRecordSet::QX_LONG);
    } else {
      char szDigits[JSON::kMaxDecimal<long>];
      const char* const pEnd = JSON::WriteDecimal(JSON::ReadDecimal<long>(digits), szDigits);
      Set(lRow, nColumn, {szDigits, static_cast<std::size_t>(pEnd - szDigits)},
          CQXRecordSet::QX_LONG);
    }
    return pNext;
  }

  // The text of an object as the library writes it; valid until the next one.
  std::string_view WrittenAnew(std::string_view object) {
    strObject_.assign(object);
    if (!message_) message_.emplace(true);
    if (!message_->Parse(strObject_.data(), static_cast<int>(strObject_.size()))) return {};
    JSON::Serialize writer(kWriterBytes);
    json_walk_obj(writer, &*message_, 0);
    strObject_ = writer.String();
    return strObject_;
  }

  Text& text_;
  Table& table_;
  std::string strUnescaped_;
  std::string strObject_;
  std::optional<JSON::Message> message_;  // made for the first object
};

// The members of one row.
class RowSink {
 public:
  RowSink(const Text& text, Table& table, CellLoader& cells)
      : table_(table), cells_(cells), plain_(table, expected_, text.pEnd) {}

  void BeginRow(long lRow) { lRow_ = lRow; }
  void Complete() {}

  JSON::Due Shortcut(const char*& p) {
    const char* const pDue = p;
    p = plain_.Read(p, lRow_);
    if (p == pDue) return JSON::Due::kItem;
    lLastRow_ = lRow_;
    return PlainMembers::IsRowEnd(p) ? JSON::Due::kNothing : JSON::Due::kItem;
  }

  const char* Name(const char* p) {
    const std::string_view name = cells_.ReadName(p);
    if (p != nullptr) SetColumn(name);
    return p;
  }

  const char* Value(const char* p) {
    lLastRow_ = lRow_;
    return cells_.Load(p, lRow_, nColumn_);
  }

  long LastRow() const { return lLastRow_; }
  void SetColumn(std::string_view name) {
    const Column* const pColumn = expected_.Take(name);
    nColumn_ =
        (pColumn != nullptr ? *pColumn : expected_.Learn(table_.columns.FindOrAdd(name))).Index();
  }

  // Nothing was read so far, into an empty table.
  void Restart() {
    lLastRow_ = 0;
    expected_.Forget();
    if (table_.columns.Count() != 0) table_.Reset();
  }

 private:
  Table& table_;
  CellLoader& cells_;
  PlainMembers::Expected expected_;
  PlainMembers plain_;
  long lRow_ = 1;
  long lLastRow_ = 0;  // the last row that received a cell
  std::uint32_t nColumn_ = 0;
};

// The elements of "rows". A null ends the rows; what is no object loads nothing and uses up its row
// number.
class RowsSink {
 public:
  // The array begins at pBegin.
  RowsSink(Text& text, const char* pBegin, RowSink& row, Table& table)
      : text_(text),
        pBegin_(pBegin),
        row_(row),
        table_(table),
        progress_{0, static_cast<std::size_t>(text.pEnd - pBegin)} {
    table_.Follow(&progress_);
  }
  ~RowsSink() { table_.Follow(nullptr); }
  RowsSink(const RowsSink&) = delete;
  RowsSink& operator=(const RowsSink&) = delete;

  static JSON::Due Shortcut(const char*& /*p*/) { return JSON::Due::kItem; }
  void Missing() { bEnded_ = true; }
  const char* Element(const char* p) {
    ++lRow_;
    if (bEnded_ || *p != '{') {
      bEnded_ = bEnded_ || *p == 'n';
      return Skipper(text_).Value(p);
    }
    progress_.nDone = static_cast<std::size_t>(p - pBegin_);
    row_.BeginRow(lRow_);
    return ReadObject(text_, p, row_);
  }

 private:
  Text& text_;
  const char* const pBegin_;
  RowSink& row_;
  Table& table_;
  recordset::BumpBlocks::Progress progress_;
  long lRow_ = 0;
  bool bEnded_ = false;
};

// The top-level object: its array "rows", if its first member of that name is one, or else its
// members as row 1. Members before "rows" are loaded until it turns out which it is.
class DocumentSink {
 public:
  DocumentSink(Text& text, Table& table)
      : text_(text), table_(table), cells_(text, table), row_(text, table, cells_) {}

  void Complete() {}

  JSON::Due Shortcut(const char*& p) {
    if (bRowsRead_ || (bRowsCut_ && !bRowsSeen_)) return JSON::Due::kItem;
    const char* const pDue = p;
    const JSON::Due due = row_.Shortcut(p);
    if (p != pDue && due == JSON::Due::kItem && !bRowsSeen_) {
      // A column of that name may also stem from the member that was left.
      const Column* const pRows = table_.columns.Find(szRows);
      bRowsSeen_ = pRows != nullptr && table_.rows.FindCell(1, pRows->Index()) != nullptr;
    }
    return due;
  }

  const char* Name(const char* p) {
    name_ = cells_.ReadString(p);
    return p;
  }

  const char* Value(const char* p) {
    if (bRowsRead_) return Skipper(text_).Value(p);
    const bool bFirstRows = !bRowsSeen_ && name_ == szRows;
    bRowsSeen_ = bRowsSeen_ || bFirstRows;
    if (bFirstRows && *p == '[') {
      bRowsRead_ = true;
      row_.Restart();
      RowsSink rows(text_, p, row_, table_);
      return ReadArray(text_, p, rows);
    }
    const std::string_view column = UpToNul(name_);
    bRowsCut_ = bRowsCut_ || (column == szRows && name_ != szRows);
    row_.SetColumn(column);
    return row_.Value(p);
  }

  long LastRow() const { return row_.LastRow(); }

 private:
  Text& text_;
  Table& table_;
  CellLoader cells_;
  RowSink row_;
  std::string_view name_;   // of the member whose value comes next
  bool bRowsSeen_ = false;  // a member "rows" was there
  bool bRowsRead_ = false;  // and it was an array
  bool bRowsCut_ = false;   // a member of another name was cut to "rows" by a NUL
};

// Loads the text into an empty table. False when it is no JSON object; the table is then of no use.
bool LoadText(const std::string& strText, Table& table, long& lLastRow) {
  if (strText.empty() || strText.size() > INT_MAX || strText.front() == '\0') return false;
  const char* const pEnd = strText.data() + strText.size();
  Text text(pEnd, JSON::kMaxNesting);
  const char* const p = text.SkipSpace(strText.data());
  if (*p != '{') return false;
  DocumentSink document(text, table);
  const bool bLoaded = ReadObject(text, p, document) != nullptr;
  lLastRow = document.LastRow();
  return bLoaded;
}

}  // namespace

bool CQXRecordSet::SetString(const std::string& text) {
  // A table without contents is used for its memory.
  auto pLoaded =
      pTable != nullptr && GetColumnCount() == 0 ? std::move(pTable) : std::make_unique<Table>();
  long lLastRow = 0;
  if (LoadText(text, *pLoaded, lLastRow)) Adopt(std::move(pLoaded), lLastRow);
  bModified = true;
  return true;
}

bool CQXRecordSet::SetString(const char* text) {
  return SetString(std::string(text != nullptr ? text : ""));
}

bool CQXRecordSet::SetUTF8String(const std::string& text) { return SetString(text); }

// Takes a whole table as the contents, or adds its cells to those that are there.
void CQXRecordSet::Adopt(std::unique_ptr<Table> pLoaded, long lLastRow) {
  if (GetColumnCount() == 0) {
    pTable.swap(pLoaded);
  } else {
    pTable->Merge(*pLoaded);
  }
  lRowsCount = std::max(lRowsCount, lLastRow);
}

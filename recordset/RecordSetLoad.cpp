// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Loading JSON text: SetString() and its relatives.
//
// The text is read by the grammar that documents are read by (text/Grammar.h), but without a tree
// and without a copy of the text: members go straight into the cells of a new table, which the
// record set takes over when the text was read to its end. Only an object inside a cell is parsed
// into a tree, because it is written again.
//
// What reads cells is compiled twice: for SetString(), and for Load(), which counts what cells lose
// (recordset/Losses.h).

#include <algorithm>
#include <climits>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "recordset/LoadResult.h"
#include "recordset/Losses.h"
#include "recordset/ObjectText.h"
#include "recordset/QXRecordSet.h"
#include "recordset/Table.h"
#include "text/Bytes.h"
#include "text/Digits.h"
#include "text/Grammar.h"
#include "text/IntegerText.h"
#include "text/ReadDecimal.h"

using JSON::Block16;
using JSON::UpToNul;
using recordset::Column;
using recordset::ExpectedColumn;
using recordset::Rows;
using recordset::Table;

namespace {

using Text = JSON::Text<const char, true>;  // the bytes of a std::string

constexpr char szRows[] = "rows";

// Reads a value, or a name, that is of no interest.
class Skipper {
 public:
  explicit Skipper(Text& text) : text_(text) {}

  std::uint32_t& Indent() { return nIndent_; }
  static bool Expects(const char* /*pName*/) { return false; }
  static const char* AcceptExpected(const char* pName) { return pName; }
  const char* Name(const char* p) { return String(p); }
  const char* Value(const char* p, char c) { return JSON::ReadValue(text_.Limits(), p, c, *this); }
  const char* Element(const char* p, char c) { return Value(p, c); }
  void Complete() {}
  void Missing() {}

  const char* String(const char* pQuote) {
    const char* const pClosing = JSON::FindStringEnd(pQuote + 1, text_.pEnd);
    return pClosing != nullptr ? pClosing + 1 : text_.Fail(pQuote + 1, JSON::Fault::kString);
  }
  const char* Number(const char* p) {
    bool bReal = false;
    return JSON::ScanNumber(p, text_.pEnd, bReal);
  }
  static const char* Literal(const char* /*p*/, const char* pNext) { return pNext; }
  const char* NoValue(const char* p) { return text_.Fail(p, JSON::Fault::kValue); }
  const char* Nested(const char* p) {
    return *p == '{' ? ReadObject(text_, p, *this) : ReadArray(text_, p, *this);
  }

 private:
  Text& text_;
  std::uint32_t nIndent_ = 0;
};

// The state that the rows of a text share: the columns that they name, and the rare cases of their
// values. `Losses` is told of what cells lose.
template <typename Losses>
class CellLoader {
 public:
  using Expected = ExpectedColumn<Column::kText>;

  CellLoader(Text& text, Table& table, Losses losses)
      : text_(text), table_(table), losses_(losses) {}

  const Text::End& Limits() const { return text_.Limits(); }
  Table& Target() const { return table_; }

  Expected expected;          // the column found last is that of the next value
  std::uint32_t nIndent = 0;  // of the rows' members

  // ---- Names ------------------------------------------------------------------------------------

  // The unescaped string with its opening quote at p: in the text itself where it holds neither an
  // escape nor a NUL, else valid until the next one. Moves p behind the closing quote, or to null
  // when there is none.
  QXRECORDSET_HOT std::string_view ReadString(const char*& p) {
    const char* const pContent = p + 1;
    const char* const pStop = JSON::FindTextStop(pContent, text_.pEnd);
    if (*pStop != '"') return Unescaped(p);
    p = pStop + 1;
    return {pContent, static_cast<std::size_t>(pStop - pContent)};
  }

  // Finds the column of the member `name`, which was read at pQuote and ends at its first NUL.
  QXRECORDSET_HOT void FindColumn(const char* pQuote, std::string_view name) {
    const bool bReaches = text_.Reaches(pQuote);
    const bool bInText = name.data() == pQuote + 1;
    const Column* pColumn = bReaches  ? table_.columns.AddAgain(pQuote + 1, text_.pEnd)
                            : bInText ? table_.columns.AddAgain(name)
                                      : nullptr;
    if (pColumn == nullptr) {
      if (!bInText) name = UpToNul(name);
      if (expected.Accept(name) != nullptr) return;
      pColumn = &table_.columns.FindOrAdd(
          name, bInText && bReaches ? Block16::Load(name.data())
                                    : JSON::ExpectedName::FirstBytes(name.data(), name.size()));
    }
    expected.Learn(*pColumn);
  }

  [[gnu::noinline]] const char* ReadName(const char* p) {
    const char* const pQuote = p;
    const std::string_view name = ReadString(p);
    if (p != nullptr) FindColumn(pQuote, name);
    return p;
  }

  // ---- Values -----------------------------------------------------------------------------------

  // Puts a text into any cell. The following do so with the value at p.
  [[gnu::noinline]] void Set(long lRow, const Column& column, std::string_view text,
                             std::int32_t eType) {
    lLastRow_ = lRow;
    table_.SetCell(lRow, column.Index(), text.data(), text.size(), eType);
  }

  [[gnu::noinline]] const char* LoadString(const char* p, long lRow, const Column& column) {
    const std::string_view text = ReadString(p);
    if (p == nullptr) return nullptr;
    losses_.Text(lRow, column.Index(), text);
    Set(lRow, column, UpToNul(text), CQXRecordSet::QX_TEXT);
    return p;
  }

  [[gnu::noinline]] const char* LoadNumber(const char* p, long lRow, const Column& column) {
    bool bReal = false;
    const char* const pNext = JSON::ScanNumber(p, text_.pEnd, bReal);
    const std::string_view digits(p, static_cast<std::size_t>(pNext - p));
    if (bReal) {
      losses_.Real(lRow, column.Index());
      Set(lRow, column, "", CQXRecordSet::QX_TEXT);
    } else {
      losses_.Integer(lRow, column.Index(), digits);
      const JSON::DecimalText<long> decimal(JSON::ReadDecimal<long>(digits));
      Set(lRow, column, decimal.View(), CQXRecordSet::QX_LONG);
    }
    return pNext;
  }

  [[gnu::noinline]] const char* LoadNested(const char* p, long lRow, const Column& column) {
    const char* const pNext = Skipper(text_).Value(p, *p);
    if (pNext == nullptr) return nullptr;
    if (*p == '{') {
      const std::string_view object(p, static_cast<std::size_t>(pNext - p));
      losses_.Object(lRow, column.Index(), object);
      Set(lRow, column, object_.Rewritten(object), CQXRecordSet::QX_RECORDSET);
    } else {
      losses_.Array(lRow, column.Index());
      Set(lRow, column, "", CQXRecordSet::QX_TEXT);
    }
    return pNext;
  }

  [[gnu::noinline]] const char* NoValue(const char* p) {
    return text_.Fail(p, JSON::Fault::kValue);
  }

  // Widens the array of the row, which has `cells` so far, up to a column, unless that cell belongs
  // into a map.
  [[gnu::noinline]] Rows::Cells MakeRoom(long lRow, std::uint32_t nPosition, Rows::Cells cells) {
    lLastRow_ = lRow;
    if (cells.pFirst == nullptr) cells = table_.rows.CellsToFill(lRow);
    if (nPosition < cells.nCount) return cells;
    table_.rows.EnsureCell(lRow, nPosition + 1);
    return table_.rows.CellsOf(lRow);
  }

  long LastRow() const { return lLastRow_; }

  // Nothing was read so far, into an empty table.
  void Restart() {
    losses_.Restart();
    lLastRow_ = 0;
    expected.Forget();
    if (table_.columns.Count() != 0) table_.Reset();
  }

 private:
  // A string that has to be copied.
  [[gnu::noinline]] std::string_view Unescaped(const char*& p) {
    const char* const pContent = p + 1;
    const char* const pStop = JSON::FindQuoteOrBackslash(pContent, text_.pEnd);
    const char* const pClosing = JSON::FindStringEnd(pStop, text_.pEnd);
    if (pClosing == nullptr) {
      p = text_.Fail(pContent, JSON::Fault::kString);
      return {};
    }
    p = pClosing + 1;
    strUnescaped_.resize(static_cast<std::size_t>(pClosing - pContent));  // it never gets longer
    char* pWrite = std::copy(pContent, pStop, strUnescaped_.data());
    if (pStop != pClosing) JSON::Unescape(pStop, text_.pEnd, pWrite);
    return {strUnescaped_.data(), static_cast<std::size_t>(pWrite - strUnescaped_.data())};
  }

  Text& text_;
  Table& table_;
  Losses losses_;
  long lLastRow_ = 0;  // the last row that received a cell
  std::string strUnescaped_;
  recordset::ObjectText object_;
};

// The members of a row. Nearly all rows that arrive were written by a program: their members have
// the names that the row before had, in the same order, and their values are short. Such values go
// from the text into their cells by a few comparisons of sixteen bytes.
//
// The rare cases are functions of the loader, so that no function gets the address of a RowSink and
// the compiler keeps it in registers.
template <typename Losses>
class RowSink {
  using Loader = CellLoader<Losses>;

 public:
  RowSink(Loader& loader, long lRow)
      : loader_(loader),
        end_(loader.Limits()),
        table_(loader.Target()),
        lRow_(lRow),
        expected_(loader.expected) {}

  QXRECORDSET_HOT void Complete() { loader_.expected = expected_; }
  std::uint32_t& Indent() { return loader_.nIndent; }

  QXRECORDSET_HOT bool Expects(const char* pName) const {
    const Column* const pColumn = expected_.Get();
    return pColumn != nullptr && pColumn->name.MatchesMember(pName, end_.pEnd);
  }
  QXRECORDSET_HOT const char* AcceptExpected(const char* pName) {
    const Column& column = *expected_.Get();
    expected_.Found(column);
    return pName + column.name.Length() + 2;
  }
  QXRECORDSET_HOT const char* Name(const char* p) {
    loader_.expected = expected_;
    p = loader_.ReadName(p);
    FetchColumn();
    return p;
  }

  // The loader found the column of the next value.
  QXRECORDSET_HOT void FetchColumn() { expected_ = loader_.expected; }

  QXRECORDSET_HOT const char* Value(const char* p, char c) {
    p = JSON::ReadValue(end_, p, c, *this);
    if (value_.pText != nullptr) Put();
    return p;
  }

  QXRECORDSET_HOT const char* String(const char* p) {
    if (!JSON::Usually(end_.Reaches(p))) return Loaded(loader_.LoadString(p, lRow_, Current()));
    const std::uint32_t nStop = Block16::Load(p + 1).NeedsEscape();
    const char* const pStop = nStop != 0 ? p + 1 + JSON::LowestBit(nStop)
                                         : JSON::FindTextStop(p + 1 + Block16::kBytes, end_.pEnd);
    if (!JSON::Usually(*pStop == '"')) return Loaded(loader_.LoadString(p, lRow_, Current()));
    value_ = {p + 1, static_cast<std::size_t>(pStop - p - 1), CQXRecordSet::QX_TEXT};
    return pStop + 1;
  }

  // Digits as the library writes them are the cell's text as they stand.
  QXRECORDSET_HOT const char* Number(const char* p) {
    const unsigned nLength = end_.Reaches(p) ? JSON::CanonicalLength(p) : 0;
    if (nLength == 0 || JSON::IsRealByte(p[nLength])) {
      return Loaded(loader_.LoadNumber(p, lRow_, Current()));
    }
    value_ = {p, nLength, CQXRecordSet::QX_LONG};
    return p + nLength;
  }

  QXRECORDSET_HOT const char* Literal(const char* p, const char* pNext) {
    value_ = *p == 'n' ? Plain{"", 0, CQXRecordSet::QX_NULL}
                       : Plain{*p == 't' ? "1" : "0", 1, CQXRecordSet::QX_BOOL};
    return pNext;
  }

  QXRECORDSET_HOT const char* Nested(const char* p) {
    return Loaded(loader_.LoadNested(p, lRow_, Current()));
  }
  QXRECORDSET_HOT const char* NoValue(const char* p) { return Loaded(loader_.NoValue(p)); }

 private:
  // What goes into a cell; without a text when the loader put it there. A block can be read at any
  // text but "", "0" and "1".
  struct Plain {
    const char* pText;
    std::size_t nLength;
    std::int32_t eType;
  };

  const Column& Current() const { return *expected_.Last(); }

  // The loader read the value, and may have moved the cells.
  QXRECORDSET_HOT const char* Loaded(const char* p) {
    value_.pText = nullptr;
    cells_ = {nullptr, 0};
    return p;
  }

  // Writes the value into its cell; the usual one has a place in the array and does not exist yet.
  QXRECORDSET_HOT void Put() {
    const std::uint32_t nPosition = Current().nPosition;
    if (!JSON::Usually(nPosition < cells_.nCount)) {
      cells_ = loader_.MakeRoom(lRow_, nPosition, cells_);
    }
    if (JSON::Usually(nPosition < cells_.nCount && !cells_.pFirst[nPosition].Exists())) {
      cells_.pFirst[nPosition] = {
          table_.texts.StoreReadable(value_.pText, value_.nLength),
          recordset::Cell::Pack(value_.nLength, value_.nLength < Block16::kBytes), value_.eType};
    } else {
      loader_.Set(lRow_, Current(), {value_.pText, value_.nLength}, value_.eType);
      cells_ = {nullptr, 0};
    }
  }

  Loader& loader_;
  const Text::End end_;
  Table& table_;
  const long lRow_;
  typename Loader::Expected expected_;  // the loader's, while the row is read
  Rows::Cells cells_ = {nullptr, 0};    // of the row, once it has any
  Plain value_ = {nullptr, 0, 0};       // the one that is read
};

// The elements of "rows". A null ends the rows; what is no object loads nothing and uses up its row
// number.
template <typename Losses>
class RowsSink {
  using Loader = CellLoader<Losses>;

 public:
  RowsSink(Text& text, Loader& cells) : text_(text), cells_(cells) {}

  std::uint32_t& Indent() { return nIndent_; }
  void Missing() { bEnded_ = true; }
  const char* Element(const char* p, char c) {
    ++lRow_;
    if (bEnded_ || c != '{') {
      bEnded_ = bEnded_ || c == 'n';
      return Skipper(text_).Value(p, c);
    }
    return ReadRow(p);
  }

 private:
  [[gnu::noinline]] const char* ReadRow(const char* p) {
    RowSink<Losses> row(cells_, lRow_);
    return ReadObject(text_, p, row);
  }

  Text& text_;
  Loader& cells_;
  long lRow_ = 0;
  std::uint32_t nIndent_ = 0;
  bool bEnded_ = false;
};

// The top-level object: its array "rows", if its first member of that name is one, or else its
// members as row 1. Members before "rows" are loaded in case it is no array.
template <typename Losses>
class DocumentSink {
 public:
  DocumentSink(Text& text, Table& table, Losses losses)
      : text_(text), cells_(text, table, losses), row_(cells_, 1) {}

  void Complete() {}
  std::uint32_t& Indent() { return cells_.nIndent; }

  // Any name may turn out to be "rows".
  static bool Expects(const char* /*pName*/) { return false; }
  static const char* AcceptExpected(const char* pName) { return pName; }

  const char* Name(const char* p) {
    pQuote_ = p;
    name_ = cells_.ReadString(p);
    return p;
  }

  const char* Value(const char* p, char c) {
    if (bRowsRead_) return Skipper(text_).Value(p, c);
    const bool bFirstRows = !bRowsSeen_ && name_ == szRows;
    bRowsSeen_ = bRowsSeen_ || bFirstRows;
    if (bFirstRows && c == '[') {
      bRowsRead_ = true;
      cells_.Restart();
      RowsSink<Losses> rows(text_, cells_);
      return ReadArray(text_, p, rows);
    }
    cells_.FindColumn(pQuote_, name_);
    row_.FetchColumn();
    return row_.Value(p, c);
  }

  long LastRow() const { return cells_.LastRow(); }

 private:
  Text& text_;
  CellLoader<Losses> cells_;
  RowSink<Losses> row_;           // row 1
  const char* pQuote_ = nullptr;  // of the member whose value comes next
  std::string_view name_;
  bool bRowsSeen_ = false;  // a member "rows" was there
  bool bRowsRead_ = false;  // and it was an array
};

// Loads the text into an empty table. False when it is no JSON object; the table is then of no use,
// and `losses` is told why.
template <typename Losses>
bool LoadText(const std::string& strText, Table& table, long& lLastRow, Losses losses) {
  using JSON::Fault;
  const char* const pText = strText.data();
  if (strText.empty()) return losses.Refuse(0, Fault::kNoText);
  if (strText.size() > INT_MAX) return losses.Refuse(0, Fault::kTooLong);
  Text text(pText + strText.size(), JSON::kMaxNesting);
  const char* const p = text.SkipSpace(pText);
  if (*p != '{') return losses.Refuse(p - pText, *p == '[' ? Fault::kObject : Fault::kDocument);
  DocumentSink<Losses> document(text, table, losses);
  if (ReadObject(text, p, document) == nullptr) {
    return losses.Refuse(text.pStop - pText, text.eFault);
  }
  lLastRow = document.LastRow();
  return true;
}

}  // namespace

// The text is loaded into a table of its own, or into one without contents, for its memory. That
// table becomes the contents, or its cells are added to them.
template <typename Losses>
bool CQXRecordSet::LoadCells(const std::string& text, Losses losses) {
  const bool bEmpty = GetColumnCount() == 0;
  std::unique_ptr<Table> pLoaded;
  if (bEmpty) pLoaded.swap(pTable);
  if (pLoaded == nullptr) pLoaded = Table::Make();
  pLoaded->bTextIsCurrent = false;  // cells are filled without SetCell()
  long lLastRow = 0;
  const bool bLoaded = LoadText(text, *pLoaded, lLastRow, losses);
  if (bLoaded) {
    if (bEmpty) {
      pTable = std::move(pLoaded);
    } else {
      pTable->Merge(*pLoaded);
      losses.Moved(*pLoaded, *pTable);
    }
    lRowsCount = std::max(lRowsCount, lLastRow);
  }
  bModified = true;
  return bLoaded;
}

bool CQXRecordSet::SetString(const std::string& text) {
  LoadCells(text, recordset::NoLosses());
  return true;
}

LoadResult CQXRecordSet::Load(std::string_view text) {
  LoadResult result;
  // The reader needs the NUL behind the text.
  result.bLoaded = LoadCells(std::string(text), recordset::LossCounter(text, result));
  return result;
}

bool CQXRecordSet::SetString(const char* text) {
  return SetString(std::string(text != nullptr ? text : ""));
}

bool CQXRecordSet::SetUTF8String(const std::string& text) { return SetString(text); }

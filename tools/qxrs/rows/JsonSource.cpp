// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading rows of JSON: each by the library's grammar, in a window that moves over the input. A row
// that the window's end cuts is read again when more of it is there.

#include <deque>
#include <utility>
#include <vector>

#include "text/ExpectedName.h"
#include "tools/qxrs/rows/Json.h"
#include "tools/qxrs/rows/Values.h"

namespace qxrs {

namespace {

constexpr const char* kBeside = "a member beside the rows was left out";
constexpr const char* kRepeated = "a name occurs more than once in a row; its last value counts";
constexpr const char* kNoNumber = "a number that JSON does not know became a text";
constexpr const char* kNotUtf8 = "bytes that are not UTF-8 became U+FFFD";

class JsonSource : public RowSource {
 public:
  JsonSource(Input& input, JsonForm eForm, Warnings& lossesSeen)
      : window(input), warnings(lossesSeen) {
    window.Start();
    if (eForm == JsonForm::Lines) return;
    const char c = PeekToken();
    if (c == '{') {
      FindRows();
    } else if (c == '[') {
      Take();
      eState = State::Elements;
    } else {
      Refuse(AtEnd() ? "the text is empty; a record set without rows is {}"
                     : "expected '{' or '['; the formats have names, see --from");
    }
  }

  const Columns& GetColumns() const override { return columns; }
  bool AllColumnsKnown() const override { return bColumnsTold; }

  bool Next(Row& row) override {
    if (eState == State::Elements && !FindElement()) EndRows();
    const char c = PeekToken();
    if (AtEnd() || eState == State::End) {
      if (!AtEnd()) Refuse("text behind the document; --from jsonl reads a row on each line");
      return false;
    }
    ++nRow;
    if (c != '{') {
      Refuse(eState == State::Lines ? "expected an object"
                                    : "row " + std::to_string(nRow) + " is no object");
    }
    ReadRow(row);
    if (eState == State::Single) eState = State::End;
    return true;
  }

 private:
  class RowReader;

  // What is read next: objects up to the end, elements of an array, the only row, or nothing.
  enum class State { Lines, Elements, Single, End };

  // Where an object stands: it is a row, or holds the members in front of or behind the rows.
  enum class Place { Row, Front, Behind };

  [[noreturn]] void Refuse(const std::string& strReason) {
    window.Refuse(window.Begin(), strReason);
  }
  bool AtEnd() { return window.Begin() == window.End(); }
  void Take() { window.UseUpTo(window.Begin() + 1); }

  // The next byte that is no white space; a NUL at the end.
  char PeekToken() {
    while (true) {
      char* p = window.Begin();
      while (JSON::IsSpace(*p)) {
        ++p;
      }
      window.UseUpTo(p);
      if (p != window.End() || !window.Fill()) return *window.Begin();
    }
  }

  // Reads more of a text of which only a part could be read, or refuses it.
  void FillOrRefuse(const JsonText& text) {
    const auto nStop = text.pStop - window.Begin();
    const bool bMayGoOn =
        text.eFault == JSON::Fault::kString || window.End() - text.pStop < JSON::kLongestLiteral;
    if (bMayGoOn && window.Fill()) return;
    JSON::Message message;
    if (message.Parse(window.Begin(), static_cast<int>(window.Text().size()))) {
      // The parser accepts some texts that end within, a NUL among their ends.
      const char* const pStop = window.Begin() + nStop;
      window.Refuse(pStop,
                    pStop == window.End() ? EndsWithin(text) : "a NUL byte ends the text here");
    }
    window.Refuse(window.Begin() + message.Error().nOffset, message.Error().szReason);
  }

  // ---- In front of the rows, and behind them ----

  // Passes over what stands in front of the rows of an object. An object without an array of rows
  // is a row itself; an empty one is none.
  void FindRows() {
    ePlace = Place::Front;
    Row others;
    const char* pEnd = nullptr;
    while (!pEnd && !pRows) {
      JsonText text(window.End(), JSON::kMaxNesting);
      pEnd = TryRow(text, others);
      if (!pEnd && !pRows) FillOrRefuse(text);
    }
    ePlace = Place::Row;
    std::string strTold;
    for (const Cell& cell : others) {
      const bool bTold = columns[cell.nColumn].strName == "columns";
      if (bTold) strTold = cell.strText;
      if (!bTold && pRows) warnings.Add(kBeside);
    }
    columns = Columns();
    vNames.clear();
    vExpected.clear();
    vSeen.clear();
    if (pRows) {
      if (!TellColumns(strTold)) warnings.Add(kBeside);
      eState = State::Elements;
      bInObject = true;
      window.UseUpTo(pRows + 1);
    } else if (others.empty()) {
      eState = State::End;
      window.UseUpTo(pEnd);
    } else {
      eState = State::Single;
    }
  }

  bool TellColumns(const std::string& strJson) {
    if (strJson.empty()) return true;
    JSON::Message message;
    message.Parse(strJson.data(), static_cast<int>(strJson.size()));
    if (message.eType != JSON::jtArray) return false;
    for (int i = 0; i < message.Size(); ++i) {
      const JSON::JSONValue& entry = std::as_const(message)[i];
      std::string strName;
      AppendJsonText(TextIn(entry["name"]), false, strName);
      Column& column = columns[FindColumn(std::string_view(strName).substr(1, strName.size() - 2))];
      column.strType = TextIn(entry["type"]);
      column.nKey = entry["key"].eType == JSON::jtInteger ? entry["key"].AsInt() : 0;
      column.bNotNull = entry["notNull"].AsBoolean();
    }
    return bColumnsTold = true;
  }

  static std::string_view TextIn(const JSON::JSONValue& value) {
    return value.eType == JSON::jtString ? TextOf(value) : std::string_view();
  }

  // Moves to the next element; false at the bracket behind the last one.
  bool FindElement() {
    const char c = PeekToken();
    if (c == ']') return false;
    if (c == ',' && !bFirst) {
      Take();
      PeekToken();
    } else if (!bFirst && !AtEnd()) {
      Refuse("expected ',' or ']'");
    }
    if (AtEnd()) Refuse("the text ends inside an array");
    bFirst = false;
    return true;
  }

  // Behind the array of rows. With a brace in place of the comma, the members that follow are an
  // object.
  void EndRows() {
    eState = State::End;
    Take();
    if (!bInObject) return;
    const char c = PeekToken();
    if (c == '}') return Take();
    if (c != ',') Refuse(AtEnd() ? "the text ends inside an object" : "expected ',' or '}'");
    *window.Begin() = '{';
    ePlace = Place::Behind;
    const Columns ofRows = columns;
    Row others;
    ReadRow(others);
    columns = ofRows;
    if (others.empty()) Refuse("a member has to follow the comma");
    for (std::size_t i = 0; i < others.size(); ++i) {
      warnings.Add(kBeside);
    }
  }

  // ---- Rows ----

  // Reads the object at the window's beginning; null when it is not all there, or malformed, or has
  // the rows in it that are looked for.
  const char* TryRow(JsonText& text, Row& row);

  void ReadRow(Row& row) {
    while (true) {
      JsonText text(window.End(), JSON::kMaxNesting);
      if (const char* const pNext = TryRow(text, row)) {
        window.UseUpTo(pNext);
        break;
      }
      FillOrRefuse(text);
    }
    if (ePlace != Place::Row) return;
    for (const auto& [szReason, nColumn] : vLosses) {
      warnings.Add(szReason, nRow, columns[nColumn].strName);
    }
  }

  // The column of a name as it stands in the text, which may be new.
  std::size_t FindColumn(std::string_view strName) {
    std::string strPlain;
    if (!AppendUnescaped(strName, strPlain)) {
      warnings.Add("half a pair of surrogates in a name became U+FFFD");
    }
    const std::size_t nOld = columns.Count();
    const std::size_t nColumn = columns.FindOrAdd(strPlain);
    if (nColumn == nOld) {
      if (bColumnsTold && ePlace == Place::Row) {
        throw InputError(window.Name() + ": row " + std::to_string(nRow) + ": '" + strPlain +
                         "' is not among the columns that the text names");
      }
      vNames.emplace_back(strName);
      vExpected.emplace_back(vNames.back().data(), vNames.back().size());
      vSeen.push_back(0);
    }
    return nColumn;
  }

  Window window;
  Warnings& warnings;
  State eState = State::Lines;
  Place ePlace = Place::Row;
  const char* pRows = nullptr;  // the bracket of the array of rows, when it is found
  bool bInObject = false;       // the array of rows is a member of an object
  bool bFirst = true;           // no element was read so far
  bool bColumnsTold = false;    // by the member "columns"
  unsigned long long nRow = 0;

  Columns columns;
  std::deque<std::string> vNames;             // as the names of the columns stand in the text,
  std::vector<JSON::ExpectedName> vExpected;  // and as they are looked for
  std::vector<unsigned long long> vSeen;      // for each column, one more than the last row with it
  std::deque<std::string> vTexts;             // texts of the current row that are not in the window
  std::vector<std::pair<const char*, std::size_t>>
      vLosses;  // of the current row: reasons and columns
};

// The members of a row. Nearly always they have the names that the row before had, in that order.
class JsonSource::RowReader {
 public:
  RowReader(JsonSource& rows, JsonText& jsonText, Row& rowToFill)
      : source(rows), text(jsonText), row(rowToFill) {}

  std::uint32_t& Indent() { return nIndent; }
  bool Expects(const char* pName) const {
    return nNext < source.vExpected.size() &&
           source.vExpected[nNext].MatchesMember(pName, text.pEnd);
  }
  const char* AcceptExpected(const char* pName) {
    nColumn = nNext++;
    return pName + source.vExpected[nColumn].Length() + 2;
  }
  const char* Name(const char* p) {
    const char* const pNext = String(p);
    if (pNext) {
      nColumn = source.FindColumn(cell.strText);
      nNext = nColumn + 1;
    }
    return pNext;
  }
  const char* Value(const char* p, char c) {
    cell.bEscaped = false;
    const char* const pNext = JSON::ReadValue(text.Limits(), p, c, *this);
    if (pNext) AddCell();
    return pNext;
  }
  void Complete() {}

  const char* String(const char* p) {
    const char* const pStop = JSON::FindQuoteOrBackslash(p + 1, text.pEnd);
    cell.bEscaped = *pStop == '\\';
    const char* const pClosing = cell.bEscaped ? JSON::FindStringEnd(pStop, text.pEnd) : pStop;
    return pClosing && pClosing != text.pEnd ? Take(Kind::Text, p + 1, pClosing) + 1
                                             : text.Fail(p, JSON::Fault::kString);
  }
  const char* Number(const char* p) {
    bool bReal = false;
    const char* const pNext = JSON::ScanNumber(p, text.pEnd, bReal);
    Take(Kind::Integer, p, pNext);
    cell.eKind = NumberKind(cell.strText);
    if (cell.eKind == Kind::Text) TakeOddNumber();
    return pNext;
  }
  const char* Literal(const char* p, const char* pNext) {
    const bool bNull = *p == 'n';
    Take(bNull ? Kind::Null : Kind::Boolean, p, bNull ? p : pNext);
    return pNext;
  }
  const char* NoValue(const char* p) { return text.Fail(p, JSON::Fault::kValue); }
  const char* Nested(const char* p) {
    if (source.ePlace == Place::Front && *p == '[' && source.columns[nColumn].strName == "rows") {
      source.pRows = p;
      return text.Fail(p, JSON::Fault::kUnknown);
    }
    bool bWhole = true;
    std::string& strText = source.vTexts.emplace_back();
    const char* const pNext = AppendStrict(text, p, false, strText, &bWhole);
    Take(Kind::Nested, strText.data(), strText.data() + strText.size());
    if (!bWhole) source.vLosses.emplace_back(kNotUtf8, nColumn);
    return pNext;
  }

 private:
  const char* Take(Kind eKind, const char* p, const char* pNext) {
    cell.eKind = eKind;
    cell.strText = {p, static_cast<std::size_t>(pNext - p)};
    return pNext;
  }

  [[gnu::noinline]] void TakeOddNumber() {
    if (cell.strText == "-0") {
      cell.eKind = Kind::Integer;
      return;
    }
    const std::string strNumber = StrictNumber(cell.strText);
    if (strNumber.front() == '"') {
      source.vLosses.emplace_back(kNoNumber, nColumn);
      return;
    }
    cell.strText = source.vTexts.emplace_back(strNumber);
    cell.eKind = NumberKind(cell.strText);
  }

  void AddCell() {
    cell.nColumn = static_cast<std::uint32_t>(nColumn);
    unsigned long long& nSeen = source.vSeen[nColumn];
    if (nSeen == source.nRow + 1) {
      source.vLosses.emplace_back(kRepeated, nColumn);
      for (Cell& earlier : row) {
        earlier = earlier.nColumn == cell.nColumn ? cell : earlier;
      }
      return;
    }
    nSeen = source.nRow + 1;
    row.push_back(cell);
  }

  JsonSource& source;
  JsonText& text;
  Row& row;
  Cell cell;
  std::size_t nNext = 0;    // the column that is expected
  std::size_t nColumn = 0;  // the one that was read
  std::uint32_t nIndent = 0;
};

const char* JsonSource::TryRow(JsonText& text, Row& row) {
  row.clear();
  vTexts.clear();
  vLosses.clear();
  RowReader reader(*this, text, row);
  const char* const pNext = JSON::ReadObject(text, window.Begin(), reader);
  if (pNext && pNext[-1] == '}') return pNext;
  // An object that ends with the text, without a brace, is accepted in places.
  if (pNext) text.Fail(pNext, JSON::Fault::kInObject);
  for (const Cell& cell : row) {
    vSeen[cell.nColumn] = 0;
  }
  return nullptr;
}

}  // namespace

std::unique_ptr<RowSource> OpenJsonRows(Input& input, JsonForm eForm, Warnings& warnings) {
  return std::make_unique<JsonSource>(input, eForm, warnings);
}

}  // namespace qxrs

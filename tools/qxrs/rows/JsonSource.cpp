// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading rows of JSON: each by the library's grammar, in a window that moves over the input. A row
// that the window's end cuts is read again when more of it is there.

#include <utility>

#include "json/JSONMessage.h"
#include "tools/qxrs/rows/Json.h"
#include "tools/qxrs/rows/Values.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

constexpr const char* kBeside = "a member beside the rows was left out";
constexpr const char* kRepeated = "a name occurs more than once in a row; its last value counts";
constexpr const char* kNoNumber = "a number that JSON does not know became a text";
constexpr const char* kNotUtf8 = "bytes that are not UTF-8 became U+FFFD";
constexpr std::string_view kRows = "\"rows\"";
constexpr std::string_view kColumns = "\"columns\"";

}  // namespace

// The members of a row. Nearly always they have the names that the row before had, in that order.
class RowReader {
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
    JsonWalk walk(text.pEnd);
    const char* const pNext = walk.Read(p);
    if (!pNext) return text.Fail(p, JSON::Fault::kUnknown);
    Take(Kind::Nested, p, pNext);
    if (!walk.IsTight(cell.strText.size())) {
      std::string& strText = source.vTexts.emplace_back();
      JsonWalk writer(text.pEnd);
      writer.WriteTo(strText, JsonWalk::Style::Compact);
      writer.Read(p);
      cell.strText = strText;
      if (!writer.IsWhole()) {
        source.vLosses.push_back({kNotUtf8, nColumn});
      }
    }
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
      source.vLosses.push_back({kNoNumber, nColumn});
      return;
    }
    cell.strText = source.vTexts.emplace_back(strNumber);
    cell.eKind = NumberKind(cell.strText);
  }

  void AddCell() {
    cell.nColumn = static_cast<std::uint32_t>(nColumn);
    unsigned long long& nSeen = source.vSeen[nColumn];
    if (nSeen == source.nRow) {
      source.vLosses.push_back({kRepeated, nColumn});
      for (Cell& earlier : row) {
        earlier = earlier.nColumn == cell.nColumn ? cell : earlier;
      }
      return;
    }
    nSeen = source.nRow;
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

// The members beside the rows, up to the array of rows if there is one.
class OtherMembers {
 public:
  explicit OtherMembers(JsonText& jsonText) : text(jsonText) {}

  std::uint32_t& Indent() { return nIndent; }
  static bool Expects(const char* /*pName*/) { return false; }
  static const char* AcceptExpected(const char* pName) { return pName; }
  void Complete() {}
  const char* Name(const char* p) {
    const char* const pNext = JsonWalk(text.pEnd).String(p);
    if (!pNext) return text.Fail(p, JSON::Fault::kString);
    strName = {p, static_cast<std::size_t>(pNext - p)};
    return pNext;
  }
  const char* Value(const char* p, char c) {
    if (strName == kRows && c == '[' && bRowsWanted) {
      pRows = p;
      return nullptr;
    }
    const char* const pNext = JsonWalk(text.pEnd).Read(p);
    if (!pNext) return text.Fail(p, JSON::Fault::kUnknown);
    if (strName == kColumns) {
      strColumns = {p, static_cast<std::size_t>(pNext - p)};
    } else {
      ++nOthers;
    }
    return pNext;
  }

  bool bRowsWanted = true;
  const char* pRows = nullptr;  // the bracket of the array of rows
  std::string_view strColumns;  // the value of the member "columns"
  unsigned nOthers = 0;

 private:
  JsonText& text;
  std::string_view strName;  // in quotes
  std::uint32_t nIndent = 0;
};

JsonSource::JsonSource(Input& input, Form eForm, Warnings& lossesSeen)
    : window(input), warnings(lossesSeen) {
  window.Start();
  if (eForm == Form::Lines) {
    eState = State::Lines;
    return;
  }
  switch (PeekToken()) {
    case '[':
      Take();
      return;
    case '{':
      FindRows();
      return;
    default:
      window.Refuse(window.Begin(),
                    window.Begin() == window.End()
                        ? "the text is empty; a record set without rows is {}"
                        : "expected '{' or '['; the formats have names, see --from");
  }
}

// The next byte that is no white space; a NUL at the end.
char JsonSource::PeekToken() {
  while (true) {
    char* p = window.Begin();
    while (JSON::IsSpace(*p)) {
      ++p;
    }
    window.UseUpTo(p);
    if (p != window.End() || !window.Fill()) return *window.Begin();
  }
}

void JsonSource::FillOrRefuse(const JsonWalk& walk) {
  if (walk.MayGoOn() && window.Fill()) return;
  // The text may have moved.
  JsonWalk again(window.End());
  again.Read(window.Begin());
  window.Refuse(again.FailedAt(), again.Reason());
}

// ---- In front of the rows -----------------------------------------------------------------------

void JsonSource::FindRows() {
  while (true) {
    switch (SearchRows()) {
      case Search::Found:
        bInObject = true;
        return;
      case Search::SingleRow:
        eState = State::Single;
        return;
      case Search::Failed:
        JsonWalk walk(window.End());
        if (!walk.Read(window.Begin())) FillOrRefuse(walk);
    }
  }
}

// Looks for the array of rows among the members of the object at the window's beginning, and uses
// the text up to its first element.
JsonSource::Search JsonSource::SearchRows() {
  JsonText text(window.End(), JSON::kMaxNesting);
  OtherMembers members(text);
  const char* const pNext = JSON::ReadObject(text, window.Begin(), members);
  const bool bWhole = pNext && pNext[-1] == '}';
  if (!members.pRows && !bWhole) return Search::Failed;
  if (!members.pRows && members.nOthers + members.strColumns.size() != 0) return Search::SingleRow;
  if (bWhole) {
    window.UseUpTo(pNext - 1);
    EndRows();
    return Search::Found;
  }
  for (; members.nOthers != 0; --members.nOthers) {
    warnings.Add(kBeside);
  }
  TellColumns(members.strColumns);
  window.UseUpTo(members.pRows + 1);
  return Search::Found;
}

void JsonSource::TellColumns(std::string_view strJson) {
  JSON::Message message;
  if (strJson.empty() || !message.Parse(strJson.data(), static_cast<int>(strJson.size())) ||
      message.eType != JSON::jtArray) {
    return;
  }
  const JSON::Message& told = message;
  const auto TextOf = [](const JSON::JSONValue& value) {
    return value.eType == JSON::jtString
               ? std::string(value.pText, static_cast<std::size_t>(value.nLength))
               : std::string();
  };
  for (int i = 0; i < told.Size(); ++i) {
    const JSON::JSONValue& entry = told[i];
    std::string strName;
    AppendJsonText(TextOf(entry["name"]), false, strName);
    Column& column = columns[FindColumn(std::string_view(strName).substr(1, strName.size() - 2))];
    column.strType = TextOf(entry["type"]);
    column.nKey = entry["key"].eType == JSON::jtInteger ? entry["key"].AsInt() : 0;
    column.bNotNull = entry["notNull"].AsBoolean();
  }
  bColumnsTold = true;
}

// ---- Rows ---------------------------------------------------------------------------------------

bool JsonSource::Next(Row& row) {
  switch (eState) {
    case State::Single:
      nRow = 1;
      ReadRow(row);
      eState = State::End;
      return true;
    case State::Rows:
      return NextElement(row);
    case State::Lines:
      return NextLine(row);
    default:
      ExpectEnd();
      return false;
  }
}

bool JsonSource::NextElement(Row& row) {
  char c = '\0';
  if (!FindElement(&c)) {
    EndRows();
    return false;
  }
  ++nRow;
  if (c != '{') window.Refuse(window.Begin(), "row " + std::to_string(nRow) + " is no object");
  ReadRow(row);
  return true;
}

// Moves to the next element, or to the bracket behind the last one.
bool JsonSource::FindElement(char* pcFirst) {
  *pcFirst = PeekToken();
  if (*pcFirst == ']') return false;
  if (!bFirst) {
    if (*pcFirst == ',') {
      Take();
      *pcFirst = PeekToken();
    } else if (window.Begin() != window.End()) {
      window.Refuse(window.Begin(), "expected ',' or ']'");
    }
  }
  if (window.Begin() == window.End()) {
    window.Refuse(window.Begin(), "the text ends inside an array");
  }
  bFirst = false;
  return true;
}

// Behind the array of rows: the members that follow it, and the end of the text.
void JsonSource::EndRows() {
  eState = State::End;
  if (*window.Begin() == ']') {
    Take();
    if (!bInObject) return ExpectEnd();
    if (PeekToken() == ',') {
      Take();
      return EndMembers();
    }
  }
  if (PeekToken() != '}') {
    window.Refuse(window.Begin(), window.Begin() == window.End() ? "the text ends inside an object"
                                                                 : "expected ',' or '}'");
  }
  Take();
  ExpectEnd();
}

void JsonSource::EndMembers() {
  while (true) {
    JsonText text(window.End(), JSON::kMaxNesting);
    OtherMembers members(text);
    members.bRowsWanted = false;
    const char* const pNext = JSON::ReadMembers(text, window.Begin(), members);
    if (pNext && pNext[-1] == '}') {
      for (; members.nOthers != 0; --members.nOthers) {
        warnings.Add(kBeside);
      }
      window.UseUpTo(pNext);
      return ExpectEnd();
    }
    const auto nStop = (pNext ? pNext : text.pStop) - window.Begin();
    if (!window.Fill()) window.Refuse(window.Begin() + nStop, "expected a member, ',' or '}'");
  }
}

void JsonSource::ExpectEnd() {
  PeekToken();
  if (window.Begin() != window.End()) {
    window.Refuse(window.Begin(),
                  "text behind the document; --from jsonl reads a row on each line");
  }
}

bool JsonSource::NextLine(Row& row) {
  const char c = PeekToken();
  if (c != '{') {
    if (window.Begin() == window.End()) return false;
    window.Refuse(window.Begin(), "expected an object");
  }
  ++nRow;
  ReadRow(row);
  return true;
}

void JsonSource::ReadRow(Row& row) {
  while (true) {
    row.clear();
    vTexts.clear();
    vLosses.clear();
    JsonText text(window.End(), JSON::kMaxNesting);
    RowReader reader(*this, text, row);
    const char* const pNext = JSON::ReadObject(text, window.Begin(), reader);
    // An object that ends with the text, without a brace, is accepted in places.
    if (pNext && pNext[-1] == '}') {
      window.UseUpTo(pNext);
      for (const Loss& loss : vLosses) {
        warnings.Add(loss.szReason, nRow, columns[loss.nColumn].strName);
      }
      return;
    }
    for (const Cell& cell : row) {
      vSeen[cell.nColumn] = 0;
    }
    JsonWalk walk(window.End());
    walk.Read(window.Begin());
    FillOrRefuse(walk);
  }
}

// The column of a name as it stands in the text, which may be new.
std::size_t JsonSource::FindColumn(std::string_view strName) {
  std::string strPlain;
  if (!AppendUnescaped(strName, strPlain)) {
    warnings.Add("half a pair of surrogates in a name became U+FFFD");
  }
  const std::size_t nOld = columns.Count();
  const std::size_t nColumn = columns.FindOrAdd(strPlain);
  if (nColumn == nOld) {
    if (bColumnsTold) {
      throw InputError(window.Name() + ": row " + std::to_string(nRow) + ": '" + strPlain +
                       "' is not among the columns that the text names");
    }
    vNames.emplace_back(strName);
    vExpected.emplace_back(vNames.back().data(), vNames.back().size());
    vSeen.push_back(0);
  }
  return nColumn;
}

}  // namespace qxrs

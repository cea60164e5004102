// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading CSV and TSV in a window that moves over the input. A record that the window's end cuts is
// read again when more of it is there.

#include <algorithm>
#include <cstring>
#include <utility>

#include "text/Block.h"
#include "tools/qxrs/rows/Csv.h"

namespace qxrs {

namespace {

// Removes the second of two quotes, or the escapes of TSV, in place; the end of what is left.
char* Unquote(char* p, const char* pEnd) {
  char* pWrite = p;
  for (const char* pRead = p; pRead != pEnd; ++pRead) {
    *pWrite++ = *pRead;
    pRead += *pRead == '"' ? 1 : 0;
  }
  return pWrite;
}

// A backslash in front of another letter stands for itself.
char* UnescapeTsv(char* p, const char* pEnd) {
  constexpr std::string_view kLetters = "tnr\\";
  constexpr std::string_view kBytes = "\t\n\r\\";
  char* pWrite = p;
  for (const char* pRead = p; pRead != pEnd; ++pRead) {
    const std::size_t n =
        *pRead == '\\' && pRead + 1 != pEnd ? kLetters.find(pRead[1]) : std::string_view::npos;
    *pWrite++ = n == std::string_view::npos ? *pRead : kBytes[n];
    pRead += n == std::string_view::npos ? 0 : 1;
  }
  return pWrite;
}

}  // namespace

class CsvSource::Stops {
 public:
  // Looks for the delimiter, line breaks and `chMark`.
  Stops(const char* p, const char* pTextEnd, char chFieldDelimiter, char chMark)
      : pEnd(pTextEnd), chDelimiter(chFieldDelimiter), chOther(chMark) {
    MoveTo(p);
  }

  // The next of them behind the one before, or the end of the text.
  const char* Next() {
    while (nMask == 0) {
      pBlock += JSON::Block16::kBytes;
      if (pBlock >= pEnd) return pEnd;
      nMask = Find(pBlock);
    }
    const char* const pStop = pBlock + JSON::LowestBit(nMask);
    nMask &= nMask - 1;
    return std::min(pStop, pEnd);
  }

  // Goes on at `p`.
  void MoveTo(const char* p) {
    pBlock = p;
    nMask = Find(p);
  }

 private:
  std::uint32_t Find(const char* p) const {
    const JSON::Block16 block = JSON::Block16::Load(p);
    return block.Equals(chDelimiter) | block.Equals('\n') | block.Equals('\r') |
           block.Equals(chOther);
  }

  const char* const pEnd;  // Window::kSlack bytes can be read behind it
  const char chDelimiter;
  const char chOther;
  const char* pBlock = nullptr;
  std::uint32_t nMask = 0;
};

CsvSource::CsvSource(Input& input, CsvReading howToRead)
    : window(input), how(std::move(howToRead)) {
  window.Start();
  if (how.chDelimiter == '\0') {
    how.chDelimiter = how.eDialect == Dialect::Tsv ? '\t' : GuessDelimiter();
  }
  if (how.vNames.empty()) {
    Row row;
    if (!NextRecord(row)) {
      window.Refuse(window.Begin(), "the text is empty; the first line has to name the columns");
    }
    TakeNames(row);
  }
  for (const std::string& strName : how.vNames) {
    Column column;
    column.strName = strName;
    column.eKind = Kind::Text;
    columns.Add(std::move(column));
  }
}

// The delimiter of the first line: a comma when it has one, or none of the others.
char CsvSource::GuessDelimiter() {
  while (window.Text().find('\n') == std::string_view::npos && window.Fill()) {
  }
  bool bQuoted = false;
  std::string strFound;
  for (const char c : window.Text()) {
    if (c == '"') bQuoted = !bQuoted;
    if (c == '\n' && !bQuoted) break;
    if (!bQuoted && (c == ',' || c == ';' || c == '\t')) strFound += c;
  }
  return strFound.empty() || strFound.find(',') != std::string::npos ? ',' : strFound.front();
}

void CsvSource::TakeNames(const Row& row) {
  for (const Cell& cell : row) {
    how.vNames.emplace_back(cell.strText);
  }
  if (const auto strReason = RepeatedName(how.vNames)) window.Refuse(pRecord, *strReason);
}

bool CsvSource::Next(Row& row) {
  if (!NextRecord(row)) return false;
  if (row.size() != columns.Count()) {
    window.Refuse(pRecord, std::to_string(row.size()) + (row.size() == 1 ? " field" : " fields") +
                               " instead of " + std::to_string(columns.Count()));
  }
  return true;
}

// The fields of the next record; false when there is none. A blank line is a record only where it
// can be the null of a single column.
bool CsvSource::NextRecord(Row& row) {
  do {
    while (!ReadRecord(row)) {
      bLast = !window.Fill();
      if (bLast && window.Begin() == window.End()) return false;
    }
  } while (row.size() == 1 && row[0].eKind == Kind::Null && columns.Count() != 1);
  return true;
}

// Reads the record at the window's beginning and uses it; false when the window ends too soon.
bool CsvSource::ReadRecord(Row& row) {
  const char* p = window.Begin();
  if (p == window.End()) return false;
  pRecord = p;
  Stops stops(p, window.End(), how.chDelimiter, how.eDialect == Dialect::Tsv ? '\\' : '"');
  row.clear();
  vRewrite.clear();
  End eEnd = End::Field;
  while (eEnd == End::Field) {
    Cell& cell = row.emplace_back();
    cell.nColumn = static_cast<std::uint32_t>(row.size() - 1);
    eEnd = *p == '"' && how.eDialect == Dialect::Csv ? ReadQuoted(stops, cell, p)
                                                     : ReadField(stops, cell, p);
  }
  if (eEnd == End::TextTooShort) return false;
  window.UseUpTo(p);
  for (const std::uint32_t n : vRewrite) {
    // The record is complete now: its texts are rewritten where they lie.
    std::string_view& strText = row[n].strText;
    char* const pText = window.Begin() - (p - strText.data());
    const char* const pEnd = pText + strText.size();
    char* const pBehind =
        how.eDialect == Dialect::Csv ? Unquote(pText, pEnd) : UnescapeTsv(pText, pEnd);
    strText = {pText, static_cast<std::size_t>(pBehind - pText)};
  }
  return true;
}

// A field without quotes.
CsvSource::End CsvSource::ReadField(Stops& stops, Cell& cell, const char*& p) {
  const char* const pBegin = p;
  bool bEscape = false;
  const char* pStop = stops.Next();
  while (pStop != window.End() && *pStop != how.chDelimiter && *pStop != '\n') {
    if (*pStop == '\r') {
      const bool bKnown = pStop + 1 != window.End() || bLast;
      if (!bKnown || pStop[1] == '\n' || how.eDialect == Dialect::Csv) break;
    } else if (how.eDialect == Dialect::Csv) {
      window.Refuse(pStop, "a quote inside a field without quotes");
    } else {
      bEscape = true;
      if (pStop[1] == '\\' && pStop + 1 != window.End()) stops.MoveTo(pStop + 2);
    }
    pStop = stops.Next();
  }
  cell.strText = {pBegin, static_cast<std::size_t>(pStop - pBegin)};
  // TSV has no quotes that tell an empty text; where it has a mark for null, there is one.
  const bool bNothing = how.eDialect == Dialect::Csv || !how.strNull;
  cell.eKind = pStop == pBegin && bNothing ? Kind::Null : Kind::Text;
  if (how.strNull && cell.strText == *how.strNull) {
    cell.eKind = Kind::Null;
    cell.strText = {};
  } else if (bEscape) {
    vRewrite.push_back(cell.nColumn);
  }
  p = pStop;
  return PassEnd(p);
}

// A field in quotes.
CsvSource::End CsvSource::ReadQuoted(Stops& stops, Cell& cell, const char*& p) {
  const char* const pBegin = p + 1;
  const char* const pEnd = window.End();
  bool bDoubled = false;
  const char* pQuote = pBegin;
  while (true) {
    pQuote =
        static_cast<const char*>(std::memchr(pQuote, '"', static_cast<std::size_t>(pEnd - pQuote)));
    if (!pQuote || (pQuote + 1 == pEnd && !bLast)) {
      if (bLast) window.Refuse(p, "the quoted field that begins here has no end");
      return End::TextTooShort;
    }
    if (pQuote[1] != '"' || pQuote + 1 == pEnd) break;
    bDoubled = true;
    pQuote += 2;
  }
  cell.strText = {pBegin, static_cast<std::size_t>(pQuote - pBegin)};
  cell.eKind = Kind::Text;
  if (bDoubled) vRewrite.push_back(cell.nColumn);
  p = pQuote + 1;
  if (p != pEnd && *p != how.chDelimiter && *p != '\n' && *p != '\r') {
    window.Refuse(p, "text behind a closing quote");
  }
  const End eEnd = PassEnd(p);
  stops.MoveTo(p);
  return eEnd;
}

// Moves over what ends the field.
CsvSource::End CsvSource::PassEnd(const char*& p) const {
  const char* const pEnd = window.End();
  if (p == pEnd) return bLast ? End::Record : End::TextTooShort;
  if (*p == how.chDelimiter) {
    ++p;
    return End::Field;
  }
  if (*p == '\r') {
    if (p + 1 == pEnd && !bLast) return End::TextTooShort;
    ++p;
  }
  p += *p == '\n' ? 1 : 0;
  return End::Record;
}

}  // namespace qxrs

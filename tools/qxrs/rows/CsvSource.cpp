// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading CSV and TSV in a window that moves over the input. A record that the window's end cuts is
// read again when more of it is there.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "text/Block.h"
#include "tools/qxrs/rows/Csv.h"
#include "tools/qxrs/support/Input.h"

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

// Finds the bytes that end or interrupt a field, sixteen at a time.
class Stops {
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

class CsvSource : public RowSource {
 public:
  CsvSource(Input& input, CsvReading howToRead)
      : window(input), how(std::move(howToRead)), bCsv(how.eDialect == Dialect::Csv) {
    window.Start();
    pRecord = window.Begin();
    if (how.chDelimiter == '\0') how.chDelimiter = bCsv ? GuessDelimiter() : '\t';
    if (how.vNames.empty()) {
      Row row;
      if (!NextRecord(row)) {
        window.Refuse(window.Begin(), "the text is empty; the first line has to name the columns");
      }
      for (const Cell& cell : row) {
        how.vNames.emplace_back(cell.strText);
      }
    }
    for (const std::string& strName : how.vNames) {
      Column column;
      column.strName = strName;
      column.eKind = Kind::Text;
      if (!columns.Add(std::move(column))) window.Refuse(pRecord, RepeatedName(strName));
    }
  }

  const Columns& GetColumns() const override { return columns; }
  bool AllColumnsKnown() const override { return true; }

  bool Next(Row& row) override {
    if (!NextRecord(row)) return false;
    if (row.size() != columns.Count()) {
      window.Refuse(pRecord, std::to_string(row.size()) + (row.size() == 1 ? " field" : " fields") +
                                 " instead of " + std::to_string(columns.Count()));
    }
    return true;
  }

 private:
  enum class End { Field, Record, TextTooShort };

  // The delimiter of the first line: a comma when it has one, or none of the others.
  char GuessDelimiter() {
    while (window.Text().find('\n') == std::string_view::npos && window.Fill()) {
    }
    bool bQuoted = false;
    std::string strOthers;
    for (const char c : window.Text()) {
      if (c == '"') bQuoted = !bQuoted;
      if (bQuoted) continue;
      if (c == ',') return c;
      if (c == '\n') break;
      if (c == ';' || c == '\t') strOthers += c;
    }
    return strOthers.empty() ? ',' : strOthers.front();
  }

  // The fields of the next record; false when there is none. A blank line is a record only where it
  // can be the null of a single column.
  bool NextRecord(Row& row) {
    do {
      while (!ReadRecord(row)) {
        bLast = !window.Fill();
        if (bLast && window.Begin() == window.End()) return false;
      }
    } while (row.size() == 1 && row[0].eKind == Kind::Null && columns.Count() != 1);
    return true;
  }

  // Reads the record at the window's beginning and uses it; false when the window ends too soon.
  bool ReadRecord(Row& row) {
    const char* p = window.Begin();
    if (p == window.End()) return false;
    pRecord = p;
    Stops stops(p, window.End(), how.chDelimiter, bCsv ? '"' : '\\');
    row.clear();
    vRewrite.clear();
    End eEnd = End::Field;
    while (eEnd == End::Field) {
      Cell& cell = row.emplace_back();
      cell.nColumn = static_cast<std::uint32_t>(row.size() - 1);
      eEnd = *p == '"' && bCsv ? ReadQuoted(stops, cell, p) : ReadField(stops, cell, p);
    }
    if (eEnd == End::TextTooShort) return false;
    window.UseUpTo(p);
    for (const std::uint32_t n : vRewrite) {
      // The record is complete now: its texts are rewritten where they lie.
      std::string_view& strText = row[n].strText;
      char* const pText = window.Begin() - (p - strText.data());
      const char* const pEnd = pText + strText.size();
      const char* const pBehind = bCsv ? Unquote(pText, pEnd) : UnescapeTsv(pText, pEnd);
      strText = {pText, static_cast<std::size_t>(pBehind - pText)};
    }
    return true;
  }

  // A field without quotes.
  End ReadField(Stops& stops, Cell& cell, const char*& p) {
    bool bEscape = false;
    const char* const pStop = bCsv ? stops.Next() : FindEndOfTsv(stops, &bEscape);
    if (bCsv && *pStop == '"') window.Refuse(pStop, "a quote inside a field without quotes");
    cell.strText = {p, static_cast<std::size_t>(pStop - p)};
    // TSV has no quotes that tell an empty text; where it has a mark for null, there is one.
    const bool bNull =
        how.strNull ? cell.strText == *how.strNull || (bCsv && pStop == p) : pStop == p;
    cell.eKind = bNull ? Kind::Null : Kind::Text;
    if (bNull) {
      cell.strText = {};
    } else if (bEscape) {
      vRewrite.push_back(cell.nColumn);
    }
    p = pStop;
    return PassEnd(p);
  }

  // A carriage return ends a field of TSV only in front of a line feed.
  const char* FindEndOfTsv(Stops& stops, bool* pbEscape) {
    while (true) {
      const char* const pStop = stops.Next();
      if (pStop == window.End() || *pStop == how.chDelimiter || *pStop == '\n') return pStop;
      const bool bLastByte = pStop + 1 == window.End();
      if (*pStop == '\r') {
        if (bLastByte ? !bLast : pStop[1] == '\n') return pStop;
      } else {
        *pbEscape = true;
        if (!bLastByte && pStop[1] == '\\') stops.MoveTo(pStop + 2);
      }
    }
  }

  // A field in quotes.
  End ReadQuoted(Stops& stops, Cell& cell, const char*& p) {
    const char* const pEnd = window.End();
    bool bDoubled = false;
    const char* pQuote = p + 1;
    while (true) {
      pQuote = static_cast<const char*>(
          std::memchr(pQuote, '"', static_cast<std::size_t>(pEnd - pQuote)));
      const bool bCut = !pQuote || (pQuote + 1 == pEnd && !bLast);
      if (bCut && bLast) window.Refuse(p, "the quoted field that begins here has no end");
      if (bCut) return End::TextTooShort;
      if (pQuote[1] != '"') break;  // a NUL stands behind the end
      bDoubled = true;
      pQuote += 2;
    }
    cell.strText = {p + 1, static_cast<std::size_t>(pQuote - p - 1)};
    cell.eKind = Kind::Text;
    if (bDoubled) vRewrite.push_back(cell.nColumn);
    p = pQuote + 1;
    const End eEnd = PassEnd(p);
    stops.MoveTo(p);
    return eEnd;
  }

  // Moves over what ends the field.
  End PassEnd(const char*& p) {
    const char* const pEnd = window.End();
    if (p == pEnd) return bLast ? End::Record : End::TextTooShort;
    const char c = *p++;
    if (c == how.chDelimiter) return End::Field;
    if (c == '\n') return End::Record;
    if (c != '\r') window.Refuse(p - 1, "text behind a closing quote");
    if (p == pEnd && !bLast) return End::TextTooShort;
    p += *p == '\n' ? 1 : 0;
    return End::Record;
  }

  Window window;
  CsvReading how;
  const bool bCsv;
  Columns columns;
  const char* pRecord = nullptr;        // the beginning of the record that was read last
  bool bLast = false;                   // the window reaches the end of the input
  std::vector<std::uint32_t> vRewrite;  // cells of the record with escapes or doubled quotes
};

}  // namespace

std::unique_ptr<RowSource> OpenCsvRows(Input& input, CsvReading how) {
  return std::make_unique<CsvSource>(input, std::move(how));
}

}  // namespace qxrs

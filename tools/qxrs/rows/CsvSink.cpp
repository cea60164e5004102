// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Writing CSV and TSV.

#include <cstring>
#include <utility>

#include "text/Scan.h"
#include "tools/qxrs/rows/Csv.h"
#include "tools/qxrs/rows/Values.h"

namespace qxrs {

namespace {

constexpr const char* kHalfPair = "half a pair of surrogates, which is no character, became U+FFFD";
constexpr const char* kLikeNull = "a text looks like a null in TSV; --null sets another mark";
constexpr const char* kLateColumn = "a column that the first row does not have was left out";

// The bytes that TSV escapes, and the letters of the escapes.
constexpr std::string_view kEscaped = "\t\n\r\\";
constexpr std::string_view kLetters = "tnr\\";

}  // namespace

CsvSink::CsvSink(Output& outputText, CsvWriting howToWrite, Warnings& lossesSeen)
    : output(outputText),
      how(std::move(howToWrite)),
      warnings(lossesSeen),
      strLineEnd(how.bCrLf ? "\r\n" : "\n") {}

void CsvSink::Begin(const Columns& columns, bool) {
  pColumns = &columns;
  nColumns = columns.Count();
  if (how.bMark) output.Write(kByteOrderMark);
  for (std::size_t i = 0; i < nColumns; ++i) {
    if (i != 0) {
      output.Write({&how.chDelimiter, 1});
    }
    WriteText(columns[i].strName);
  }
  if (nColumns != 0) output.Write(strLineEnd);
}

void CsvSink::Write(const Row& row) {
  ++nRow;
  vPlaces.assign(nColumns, nullptr);
  for (const Cell& cell : row) {
    if (cell.nColumn < nColumns) {
      vPlaces[cell.nColumn] = &cell;
    } else {
      warnings.Add(kLateColumn, nRow, (*pColumns)[cell.nColumn].strName);
    }
  }
  for (std::size_t i = 0; i < nColumns; ++i) {
    if (i != 0) {
      *output.Room(1) = how.chDelimiter;
      output.Use(output.Room(1) + 1);
    }
    WriteField(vPlaces[i]);
  }
  if (nColumns != 0) output.Write(strLineEnd);
}

void CsvSink::WriteField(const Cell* pCell) {
  if (!pCell || pCell->eKind == Kind::Null) {
    output.Write(how.strNull);
    return;
  }
  bool bWhole = true;
  if (how.eDialect == Dialect::Tsv && pCell->strText == how.strNull) {
    warnings.Add(kLikeNull, nRow, (*pColumns)[pCell->nColumn].strName);
  }
  WriteText(ShownText(*pCell, strBuffer, &bWhole));
  if (!bWhole) warnings.Add(kHalfPair, nRow, (*pColumns)[pCell->nColumn].strName);
}

// Whether a field can stand as it is.
bool CsvSink::IsPlain(std::string_view strText) const {
  const char* const pEnd = strText.data() + strText.size();
  const bool bTsv = how.eDialect == Dialect::Tsv;
  const char chMark = bTsv ? '\\' : '"';
  const auto Find = [&](JSON::Block16 block) {
    return block.Equals(how.chDelimiter) | block.Equals('\n') | block.Equals('\r') |
           block.Equals(chMark);
  };
  return JSON::FindInBlocks(strText.data(), pEnd, Find) == pEnd;
}

// In CSV quotes tell the empty text, and a text that reads like a null, from a null, and a byte
// order mark that belongs to a name from one that does not.
void CsvSink::WriteText(std::string_view strText) {
  const bool bPlain = IsPlain(strText);
  if (how.eDialect == Dialect::Tsv) {
    if (bPlain) {
      output.Write(strText);
      return;
    }
    for (const char c : strText) {
      const std::size_t n = kEscaped.find(c);
      output.Write(n == std::string_view::npos ? std::string(1, c)
                                               : std::string{'\\', kLetters[n]});
    }
    return;
  }
  if (bPlain && !how.bQuoteAll && !strText.empty() && strText != how.strNull &&
      strText.substr(0, kByteOrderMark.size()) != kByteOrderMark) {
    output.Write(strText);
    return;
  }
  char* p = output.Room(2 * strText.size() + 2);
  *p++ = '"';
  for (const char c : strText) {
    *p++ = c;
    if (c == '"') *p++ = '"';
  }
  *p++ = '"';
  output.Use(p);
}

}  // namespace qxrs

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Writing CSV and TSV.

#include <utility>

#include "text/Scan.h"
#include "tools/qxrs/rows/Csv.h"
#include "tools/qxrs/rows/Values.h"
#include "tools/qxrs/support/Input.h"

namespace qxrs {

namespace {

constexpr const char* kHalfPair = "half a pair of surrogates, which is no character, became U+FFFD";
constexpr const char* kLikeNull = "a text looks like a null in TSV; --null sets another mark";
constexpr const char* kLateColumn = "a column that the first row does not have was left out";

// The bytes that TSV escapes, and the letters of the escapes.
constexpr std::string_view kEscaped = "\t\n\r\\";
constexpr std::string_view kLetters = "tnr\\";

class CsvSink : public RowSink {
 public:
  CsvSink(Output& outputText, CsvWriting howToWrite, Warnings& lossesSeen)
      : output(outputText),
        how(std::move(howToWrite)),
        bTsv(how.eDialect == Dialect::Tsv),
        warnings(lossesSeen),
        strLineEnd(how.bCrLf ? "\r\n" : "\n") {}

  Needs GetNeeds() const override { return Needs::Columns; }

  void Begin(const Columns& columns, bool) override {
    pColumns = &columns;
    nColumns = columns.Count();
    if (how.bMark) output.Write(kByteOrderMark);
    for (std::size_t i = 0; i < nColumns; ++i) {
      if (i != 0) output.Write({&how.chDelimiter, 1});
      WriteText(columns[i].strName);
    }
    if (nColumns != 0) output.Write(strLineEnd);
  }

  void Write(const Row& row) override {
    ++nRow;
    vPlaces.assign(nColumns, nullptr);
    for (const Cell& cell : row) {
      if (cell.nColumn < nColumns) {
        vPlaces[cell.nColumn] = &cell;
      } else {
        Warn(kLateColumn, cell);
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

  void End() override {}
  void Flush() override { output.Flush(); }

 private:
  void Warn(const char* szReason, const Cell& cell) {
    warnings.Add(szReason, nRow, (*pColumns)[cell.nColumn].strName);
  }

  void WriteField(const Cell* pCell) {
    if (!pCell || pCell->eKind == Kind::Null) {
      output.Write(how.strNull);
      return;
    }
    bool bWhole = true;
    if (bTsv && pCell->strText == how.strNull) Warn(kLikeNull, *pCell);
    WriteText(ShownText(*pCell, strBuffer, &bWhole));
    if (!bWhole) Warn(kHalfPair, *pCell);
  }

  // Whether a field has nothing in it that is quoted or escaped.
  bool IsPlain(std::string_view strText) const {
    const char* const pEnd = strText.data() + strText.size();
    const char chMark = bTsv ? '\\' : '"';
    const auto Marks = [&](JSON::Block16 block) {
      return block.Equals(how.chDelimiter) | block.Equals('\n') | block.Equals('\r') |
             block.Equals(chMark);
    };
    return JSON::FindInBlocks(strText.data(), pEnd, Marks) == pEnd;
  }

  void WriteText(std::string_view strText) {
    const bool bPlain = IsPlain(strText);
    if (bPlain && (bTsv || !IsQuotedAnyway(strText))) {
      output.Write(strText);
    } else if (bTsv) {
      WriteEscaped(strText);
    } else {
      WriteQuoted(strText);
    }
  }

  // Quotes tell the empty text, and a text that reads like a null, from a null, and a byte order
  // mark that belongs to a name from one that does not.
  bool IsQuotedAnyway(std::string_view strText) const {
    return how.bQuoteAll || strText.empty() || strText == how.strNull ||
           strText.substr(0, kByteOrderMark.size()) == kByteOrderMark;
  }

  void WriteEscaped(std::string_view strText) {
    for (const char c : strText) {
      const std::size_t n = kEscaped.find(c);
      output.Write(n == std::string_view::npos ? std::string(1, c)
                                               : std::string{'\\', kLetters[n]});
    }
  }

  void WriteQuoted(std::string_view strText) {
    char* p = output.Room(2 * strText.size() + 2);
    *p++ = '"';
    for (const char c : strText) {
      *p++ = c;
      if (c == '"') *p++ = '"';
    }
    *p++ = '"';
    output.Use(p);
  }

  Output& output;
  const CsvWriting how;
  const bool bTsv;
  Warnings& warnings;
  const Columns* pColumns = nullptr;
  const std::string strLineEnd;
  std::size_t nColumns = 0;
  std::vector<const Cell*> vPlaces;  // the cells of a row in the order of the columns
  std::string strBuffer;
  unsigned long long nRow = 0;
};

}  // namespace

std::unique_ptr<RowSink> OpenCsvSink(Output& output, CsvWriting how, Warnings& warnings) {
  return std::make_unique<CsvSink>(output, std::move(how), warnings);
}

}  // namespace qxrs

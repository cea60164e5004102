// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows from and to delimited text: CSV (RFC 4180), where a field that holds a delimiter, a quote or
// a line break stands in quotes and spaces belong to the field; and TSV, which has no quotes but
// the escapes \t, \n, \r and \\. The first line names the columns. A field of which nothing is
// there, not even quotes, is a null.

#ifndef QXRECORDSET_TOOLS_ROWS_CSV_H
#define QXRECORDSET_TOOLS_ROWS_CSV_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/qxrs/rows/Rows.h"
#include "tools/qxrs/support/Output.h"
#include "tools/qxrs/support/Warnings.h"
#include "tools/qxrs/support/Window.h"

namespace qxrs {

enum class Dialect { Csv, Tsv };

struct CsvReading {
  Dialect eDialect = Dialect::Csv;
  char chDelimiter = '\0';             // NUL: what the first line has, of comma, semicolon, tab
  std::optional<std::string> strNull;  // a field that stands for null, too
  std::vector<std::string> vNames;     // of the columns; empty: the first line tells them
};

class CsvSource : public RowSource {
 public:
  // Reads the first line.
  CsvSource(Input& input, CsvReading howToRead);

  const Columns& GetColumns() const override { return columns; }
  bool AllColumnsKnown() const override { return true; }
  bool Next(Row& row) override;

 private:
  // Finds the bytes that end or interrupt a field, sixteen at a time.
  class Stops;
  enum class End { Field, Record, TextTooShort };

  bool NextRecord(Row& row);
  bool ReadRecord(Row& row);
  End ReadField(Stops& stops, Cell& cell, const char*& p);
  End ReadQuoted(Stops& stops, Cell& cell, const char*& p);
  End PassEnd(const char*& p) const;
  char GuessDelimiter();
  void TakeNames(const Row& row);

  Window window;
  CsvReading how;
  Columns columns;
  const char* pRecord = nullptr;        // the beginning of the record that was read last
  bool bLast = false;                   // the window reaches the end of the input
  std::vector<std::uint32_t> vRewrite;  // cells of the record with escapes or doubled quotes
};

struct CsvWriting {
  Dialect eDialect = Dialect::Csv;
  char chDelimiter = ',';
  std::string strNull;     // written for null
  bool bCrLf = false;      // lines end with a carriage return and a line feed
  bool bMark = false;      // a byte order mark stands in front
  bool bQuoteAll = false;  // every field stands in quotes, but for nulls
};

class CsvSink : public RowSink {
 public:
  CsvSink(Output& outputText, CsvWriting howToWrite, Warnings& lossesSeen);

  Needs GetNeeds() const override { return Needs::Columns; }
  void Begin(const Columns& columns, bool bAllColumns) override;
  void Write(const Row& row) override;
  void End() override {}
  void Flush() override { output.Flush(); }

 private:
  void WriteField(const Cell* pCell);
  void WriteText(std::string_view strText);
  bool IsPlain(std::string_view strText) const;

  Output& output;
  const CsvWriting how;
  Warnings& warnings;
  const Columns* pColumns = nullptr;
  const std::string strLineEnd;
  std::size_t nColumns = 0;
  std::vector<const Cell*> vPlaces;  // the cells of a row in the order of the columns
  std::string strBuffer;
  unsigned long long nRow = 0;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_CSV_H

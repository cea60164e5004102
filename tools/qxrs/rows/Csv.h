// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows from and to CSV (RFC 4180): the first line names the columns, a field that holds a comma, a
// quote or a line break stands in quotes, and spaces belong to the field.

#ifndef QXRECORDSET_TOOLS_ROWS_CSV_H
#define QXRECORDSET_TOOLS_ROWS_CSV_H

#include <csv.h>

#include <deque>
#include <exception>
#include <string>
#include <vector>

#include "tools/qxrs/rows/Columns.h"
#include "tools/qxrs/rows/FieldTypes.h"
#include "tools/qxrs/rows/LineReader.h"
#include "tools/qxrs/support/Output.h"

namespace qxrs {

class CsvSource : public RowSource {
 public:
  CsvSource(Input& input, char chDelimiter, FieldTypes fieldTypes);
  ~CsvSource() override;

  const std::vector<std::string>* Columns() override { return &vColumns; }
  bool Next(Row& row) override;

 private:
  struct Record {
    std::vector<Field> vFields;
    unsigned long long nLine;  // where it begins
  };

  bool NextRecord();
  void FeedLine(std::string_view strLine);
  void FeedEnd();
  void TakeField(const char* pText, std::size_t nLength);
  void TakeRecord();

  // libcsv reports by callbacks, which must not throw through its C code.
  static void OnField(void* pText, std::size_t nLength, void* pSource);
  static void OnRecord(int nEnd, void* pSource);
  template <typename Step>
  void Guard(Step step);

  LineReader lines;
  const FieldTypes types;
  std::vector<std::string> vColumns;
  csv_parser parser{};
  std::deque<Record> vRecords;    // complete ones; the first is the one Next() gave
  std::vector<Field> vFields;     // of the record that is being read
  unsigned long long nBegan = 1;  // the line where that record begins
  bool bOpen = false;             // it goes on in the next line
  bool bEnd = false;
  std::exception_ptr pFailure;  // what a callback could not throw
};

class CsvSink : public ColumnSink {
 public:
  // Nulls, and cells that are not there, become `strNullField`.
  CsvSink(Output& outputText, char chFieldDelimiter, std::string strNullField);

  void End() override {}

 private:
  void BeginColumns() override;
  void WriteCells(const std::vector<Cell>& vCells) override;
  std::string Quoted(std::string_view strText) const;
  void WriteLine(const std::string& strLine);

  Output& output;
  const std::string strDelimiter;
  const std::string strNull;
  const std::string strSpecial;  // bytes that need quotes around their field
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_CSV_H

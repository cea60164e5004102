// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows from and to TSV: fields between tabs, without quotes. Tabs, line breaks and backslashes
// inside a field are written \t, \n, \r and \\.

#ifndef QXRECORDSET_TOOLS_ROWS_TSV_H
#define QXRECORDSET_TOOLS_ROWS_TSV_H

#include <string>
#include <vector>

#include "tools/qxrs/rows/Columns.h"
#include "tools/qxrs/rows/FieldTypes.h"
#include "tools/qxrs/rows/LineReader.h"
#include "tools/qxrs/support/Output.h"

namespace qxrs {

class TsvSource : public RowSource {
 public:
  TsvSource(Input& input, FieldTypes fieldTypes);

  const std::vector<std::string>* Columns() override { return &vColumns; }
  bool Next(Row& row) override;

 private:
  bool NextFields();

  LineReader lines;
  const FieldTypes types;
  std::vector<std::string> vColumns;
  std::vector<Field> vFields;  // of the current line
};

class TsvSink : public ColumnSink {
 public:
  // Nulls, and cells that are not there, become `strNullField`.
  TsvSink(Output& outputText, std::string strNullField);

  void End() override {}

 private:
  void BeginColumns() override;
  void WriteCells(const std::vector<Cell>& vCells) override;

  Output& output;
  const std::string strNull;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_TSV_H

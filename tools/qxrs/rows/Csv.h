// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows from and to delimited text: CSV (RFC 4180), where a field that holds a delimiter, a quote or
// a line break stands in quotes and spaces belong to the field; and TSV, which has no quotes but
// the escapes \t, \n, \r and \\. The first line names the columns. A field of which nothing is
// there, not even quotes, is a null.

#ifndef QXRECORDSET_TOOLS_ROWS_CSV_H
#define QXRECORDSET_TOOLS_ROWS_CSV_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/qxrs/rows/Rows.h"
#include "tools/qxrs/support/Errors.h"
#include "tools/qxrs/support/Input.h"
#include "tools/qxrs/support/Output.h"

namespace qxrs {

enum class Dialect { Csv, Tsv };

struct CsvReading {
  Dialect eDialect = Dialect::Csv;
  char chDelimiter = '\0';             // NUL: what the first line has, of comma, semicolon, tab
  std::optional<std::string> strNull;  // a field that stands for null, too
  std::vector<std::string> vNames;     // of the columns; empty: the first line tells them
};

// Reads the first line.
std::unique_ptr<RowSource> OpenCsvRows(Input& input, CsvReading how);

struct CsvWriting {
  Dialect eDialect = Dialect::Csv;
  char chDelimiter = ',';
  std::string strNull;     // written for null
  bool bCrLf = false;      // lines end with a carriage return and a line feed
  bool bMark = false;      // a byte order mark stands in front
  bool bQuoteAll = false;  // every field stands in quotes, but for nulls
};

std::unique_ptr<RowSink> OpenCsvSink(Output& output, CsvWriting how, Warnings& warnings);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_CSV_H

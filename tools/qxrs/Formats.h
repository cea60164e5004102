// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The formats that rows can be read from and written to, by name.

#ifndef QXRECORDSET_TOOLS_FORMATS_H
#define QXRECORDSET_TOOLS_FORMATS_H

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/qxrs/rows/Csv.h"
#include "tools/qxrs/rows/Json.h"
#include "tools/qxrs/rows/Sql.h"

namespace qxrs {

// RecordSet and Json are read alike; they differ in what is written.
enum class Format { RecordSet, Json, Jsonl, Csv, Tsv, Sql, Table };

// By name: rs, json, jsonl, csv, tsv, sql, table; or what files of the format end in.
std::optional<Format> FormatNamed(const std::string& strName);

// By the end of a file's name, .gz and .zst aside, or by the prefix odbc: of a database.
std::optional<Format> FormatOfFile(const std::string& strPath);

struct ReadOptions {
  std::string strInput = "-";
  std::optional<Format> eFrom;  // none: by the file's name, else JSON
  CsvReading csv;
  bool bInfer = false;                // texts become what their whole column can be read as
  std::vector<std::string> vColumns;  // only these, in this order; empty: all
  std::string strQuery;               // of a database; empty: the table
  std::string strTable;               // empty: the only one
  unsigned nMost = 0;                 // rows; 0: all
};

struct WriteOptions {
  std::string strOutput = "-";
  std::optional<Format> eTo;  // none: by the file's name, else a record set
  CsvWriting csv;
  bool bOwnDelimiter = false;  // the delimiter was given
  HostTexts eTexts = HostTexts::None;
  SqlTarget sql;
  unsigned nWidth = 0;  // of a table; 0: that of the terminal
  When eColor = When::Auto;
  bool bUnbuffered = false;
};

// What the commands that pass rows on have in common.
struct RowOptions {
  ReadOptions read;
  WriteOptions write;
  When eProgress = When::Auto;
  bool bStrict = false;
};

// Rows that are read, with what they are read from.
struct OpenedRows {
  std::unique_ptr<Input> pInput;  // null: a database
  std::unique_ptr<RowSource> pRows;
  std::string strName;  // for messages
};

OpenedRows OpenRows(const ReadOptions& options, Progress& progress, Warnings& warnings);

// Reads what the options say, and writes it, or what `pick` makes of the rows.
using Pick = std::function<std::unique_ptr<RowSource>(RowSource&)>;
int Convert(const RowOptions& options);
int Convert(const RowOptions& options, const Pick& pick);

// Writes all rows as a table of aligned columns for people, in lines of `nWidth` columns, or as
// long as they are when that is 0: texts are cut, and columns for which that is not enough are left
// out.
void WriteTable(RowSource& source, std::size_t nWidth, bool bColor, Output& output);

// Writes rows as the options say, and reports the losses.
void WriteRows(RowSource& rows, const WriteOptions& options, Progress& progress,
               Warnings& warnings);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_FORMATS_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows from JSON: record set text, an array of objects, and JSON Lines. All three stream.

#ifndef QXRECORDSET_TOOLS_ROWS_JSONSOURCES_H
#define QXRECORDSET_TOOLS_ROWS_JSONSOURCES_H

#include <string_view>

#include "tools/qxrs/rows/JsonBatches.h"
#include "tools/qxrs/rows/JsonCells.h"
#include "tools/qxrs/rows/LineReader.h"
#include "tools/qxrs/rows/Rows.h"

namespace qxrs {

// Record set text, read as CQXRecordSet::SetString reads it: a null ends the rows, rows without
// cells count only in front of a row with cells. A text that is no record set is refused.
class RecordSetSource : public RowSource {
 public:
  explicit RecordSetSource(Input& input);
  bool Next(Row& row) override;

 private:
  bool FindRowWithCells();
  const JSON::JSONValue* NextElement();
  bool NextBatch();

  JsonBatches batches;
  JsonCells cells;
  const JSON::JSONValue* pRows = nullptr;    // the array of rows in the current batch
  const JSON::JSONValue* pSingle = nullptr;  // the one row of a text without such an array
  int nNext = 0;                             // ordinal of the next element of pRows
  bool bRowsEnded = false;                   // a null was met; what follows is only parsed
  unsigned long long nEmptyRows = 0;         // rows without cells in front of rowAhead
  Row rowAhead;                              // empty: to be found
};

// A JSON array of objects.
class JsonArraySource : public RowSource {
 public:
  JsonArraySource(Input& input, LongSize eLong);
  bool Next(Row& row) override;

 private:
  const JSON::JSONValue* NextElement();

  JsonBatches batches;
  JsonCells cells;
  int nNext = 0;                 // ordinal of the next element in the current batch
  bool bBatch = false;           // there is a current batch
  unsigned long long nRows = 0;  // given so far
};

// One JSON object on each line. Blank lines are passed over.
class JsonLinesSource : public RowSource {
 public:
  JsonLinesSource(Input& input, LongSize eLong);
  bool Next(Row& row) override;

 private:
  void ParseLine(std::string_view strLine);

  LineReader lines;
  JsonCells cells;
  JSON::Message message;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_JSONSOURCES_H

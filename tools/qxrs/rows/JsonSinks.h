// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows to JSON: record set text, an array of objects, and JSON Lines. All three stream. The library
// writes each row; what stands around the rows is written here.

#ifndef QXRECORDSET_TOOLS_ROWS_JSONSINKS_H
#define QXRECORDSET_TOOLS_ROWS_JSONSINKS_H

#include <string>

#include "tools/qxrs/rows/Rows.h"
#include "tools/qxrs/support/Output.h"

namespace qxrs {

// Record set text, as CQXRecordSet::GetString writes it, with one difference: a text stays a text
// even when it reads like an object.
class RecordSetSink : public RowSink {
 public:
  explicit RecordSetSink(Output& outputText) : output(outputText) {}
  void Write(const Row& row) override;
  void End() override;

 private:
  Output& output;
  std::string strFirst;  // the first row, held back: alone it is the whole text
  unsigned long long nRows = 0;
};

// [{...},{...}], one object on each line.
class JsonArraySink : public RowSink {
 public:
  explicit JsonArraySink(Output& outputText) : output(outputText) {}
  void Write(const Row& row) override;
  void End() override;

 private:
  Output& output;
  bool bFirst = true;
};

// {...} on each line.
class JsonLinesSink : public RowSink {
 public:
  explicit JsonLinesSink(Output& outputText) : output(outputText) {}
  void Write(const Row& row) override;
  void End() override {}

 private:
  Output& output;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_JSONSINKS_H

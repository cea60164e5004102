// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows to JSON.

#include "tools/qxrs/rows/JsonSinks.h"

#include <algorithm>
#include <utility>

namespace qxrs {

namespace {

void WriteValue(JSON::Serialize& writer, const Cell& cell) {
  const auto nLength = static_cast<int>(cell.strText.size());
  switch (cell.eType) {
    case CQXRecordSet::QX_NULL:
      writer.JS(nullptr);
      return;
    case CQXRecordSet::QX_BOOL:
      writer.JS(cell.strText == "1" ? "true" : "false");
      return;
    case CQXRecordSet::QX_LONG:
    case CQXRecordSet::QX_RECORDSET:
      writer.JS_N(cell.strText.data(), nLength);
      return;
    default:
      writer.V(cell.strText);
  }
}

std::string ObjectText(const Row& row) {
  constexpr int kReserve = 256;
  JSON::Serialize writer(kReserve);
  writer.OO();
  for (const Cell& cell : row) {
    writer.N(cell.strColumn);
    WriteValue(writer, cell);
  }
  return writer.OC().String();
}

}  // namespace

void RecordSetSink::Write(const Row& row) {
  Row rowSorted = row;
  std::sort(rowSorted.begin(), rowSorted.end(),
            [](const Cell& a, const Cell& b) { return a.strColumn < b.strColumn; });
  std::string strRow = ObjectText(rowSorted);
  if (nRows++ == 0) {
    strFirst = std::move(strRow);
    return;
  }
  if (nRows == 2) {
    output.Write("{\"rows\":[" + strFirst);
  }
  output.Write(",");
  output.Write(strRow);
}

void RecordSetSink::End() {
  if (nRows > 1) {
    output.Write("]}\n");
  } else {
    output.Write(nRows == 0 ? "{}\n" : strFirst + "\n");
  }
}

void JsonArraySink::Write(const Row& row) {
  output.Write(bFirst ? "[" : ",\n ");
  output.Write(ObjectText(row));
  bFirst = false;
}

void JsonArraySink::End() { output.Write(bFirst ? "[]\n" : "]\n"); }

void JsonLinesSink::Write(const Row& row) {
  output.Write(ObjectText(row));
  output.Write("\n");
}

}  // namespace qxrs

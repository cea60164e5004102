// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// TSV.

#include "tools/qxrs/rows/Tsv.h"

#include <utility>

namespace qxrs {

namespace {

// The bytes that have an escape, and the letters of the escapes.
constexpr std::string_view kEscaped = "\t\n\r\\";
constexpr std::string_view kLetters = "tnr\\";

std::string Escaped(std::string_view strText) {
  std::string strResult;
  for (const char c : strText) {
    const std::size_t nEscape = kEscaped.find(c);
    if (nEscape == std::string_view::npos) {
      strResult += c;
    } else {
      strResult += {'\\', kLetters[nEscape]};
    }
  }
  return strResult;
}

// A backslash in front of any other letter stands for itself.
std::string Unescaped(std::string_view strField) {
  std::string strResult;
  for (std::size_t i = 0; i < strField.size(); ++i) {
    const std::size_t nEscape = strField[i] == '\\' && i + 1 < strField.size()
                                    ? kLetters.find(strField[i + 1])
                                    : std::string_view::npos;
    if (nEscape == std::string_view::npos) {
      strResult += strField[i];
    } else {
      strResult += kEscaped[nEscape];
      ++i;
    }
  }
  return strResult;
}

std::string_view WithoutLineEnd(std::string_view strLine) {
  if (!strLine.empty() && strLine.back() == '\n') {
    strLine.remove_suffix(1);
  }
  if (!strLine.empty() && strLine.back() == '\r') {
    strLine.remove_suffix(1);
  }
  return strLine;
}

}  // namespace

TsvSource::TsvSource(Input& input, FieldTypes fieldTypes)
    : lines(input), types(std::move(fieldTypes)), vColumns(types.vColumnNames) {
  if (!vColumns.empty()) {
    return;
  }
  if (!NextFields()) {
    lines.Refuse(0, "the text is empty; the first line has to name the columns");
  }
  for (Field& field : vFields) {
    vColumns.push_back(std::move(field.strText));
  }
  if (const auto strReason = RepeatedColumn(vColumns)) {
    lines.Refuse(0, *strReason);
  }
}

bool TsvSource::Next(Row& row) {
  if (!NextFields()) {
    return false;
  }
  if (vFields.size() != vColumns.size()) {
    lines.RefuseLine(lines.Number(), FieldCountReason(vFields.size(), vColumns.size()));
  }
  row.clear();
  for (std::size_t i = 0; i < vColumns.size(); ++i) {
    row.push_back(types.MakeCell(vColumns[i], vFields[i]));
  }
  return true;
}

bool TsvSource::NextFields() {
  std::string_view strLine;
  if (!lines.Next(strLine)) {
    return false;
  }
  const std::size_t nNul = strLine.find('\0');
  if (nNul != std::string_view::npos) {
    lines.Refuse(nNul, "a NUL byte, which a text of a record set cannot hold");
  }
  strLine = WithoutLineEnd(strLine);
  vFields.clear();
  while (true) {
    const std::size_t nTab = strLine.find('\t');
    const std::string_view strField = strLine.substr(0, nTab);
    // Compared as it stands: a null written \N is no text with an escape.
    vFields.push_back({Unescaped(strField), strField.empty(), types.IsNull(strField)});
    if (nTab == std::string_view::npos) {
      return true;
    }
    strLine.remove_prefix(nTab + 1);
  }
}

TsvSink::TsvSink(Output& outputText, std::string strNullField)
    : output(outputText), strNull(std::move(strNullField)) {}

void TsvSink::BeginColumns() {
  if (Names().empty()) {
    return;
  }
  std::string strLine;
  for (const std::string& strColumn : Names()) {
    strLine += &strColumn == &Names().front() ? "" : "\t";
    strLine += Escaped(strColumn);
  }
  output.Write(strLine + "\n");
}

void TsvSink::WriteCells(const std::vector<Cell>& vCells) {
  if (vCells.empty()) {
    return;
  }
  std::string strLine;
  for (const Cell& cell : vCells) {
    strLine += &cell == &vCells.front() ? "" : "\t";
    strLine += cell.eType == CQXRecordSet::QX_NULL ? strNull : Escaped(ShownText(cell));
  }
  output.Write(strLine + "\n");
}

}  // namespace qxrs

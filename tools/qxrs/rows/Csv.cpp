// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// CSV by libcsv, fed line by line so that every complaint knows its line.

#include "tools/qxrs/rows/Csv.h"

#include <new>
#include <utility>

#include "tools/qxrs/support/Document.h"

namespace qxrs {

namespace {

constexpr unsigned char kOptions = CSV_STRICT | CSV_STRICT_FINI | CSV_EMPTY_IS_NULL;

// By default libcsv drops spaces around a field.
int IsNoSpace(unsigned char) { return 0; }

bool IsBlank(std::string_view strLine) {
  return strLine.find_first_not_of("\r\n") == std::string_view::npos;
}

}  // namespace

// ---- Reading ------------------------------------------------------------------------------------

CsvSource::CsvSource(Input& input, char chDelimiter, FieldTypes fieldTypes)
    : lines(input), types(std::move(fieldTypes)), vColumns(types.vColumnNames) {
  if (csv_init(&parser, kOptions) != 0) {
    throw std::bad_alloc();
  }
  csv_set_delim(&parser, static_cast<unsigned char>(chDelimiter));
  csv_set_space_func(&parser, IsNoSpace);
  if (!vColumns.empty()) {
    return;
  }
  if (!NextRecord()) {
    lines.Refuse(0, "the text is empty; the first line has to name the columns");
  }
  for (Field& field : vRecords.front().vFields) {
    vColumns.push_back(std::move(field.strText));
  }
  if (const auto strReason = RepeatedColumn(vColumns)) {
    lines.Refuse(0, *strReason);
  }
}

CsvSource::~CsvSource() { csv_free(&parser); }

bool CsvSource::Next(Row& row) {
  if (!NextRecord()) {
    return false;
  }
  const Record& record = vRecords.front();
  if (record.vFields.size() != vColumns.size()) {
    lines.RefuseLine(record.nLine, FieldCountReason(record.vFields.size(), vColumns.size()));
  }
  row.clear();
  for (std::size_t i = 0; i < vColumns.size(); ++i) {
    row.push_back(types.MakeCell(vColumns[i], record.vFields[i]));
  }
  return true;
}

// Drops the first record and sees to it that there is another.
bool CsvSource::NextRecord() {
  if (!vRecords.empty()) {
    vRecords.pop_front();
  }
  std::string_view strLine;
  while (vRecords.empty() && !bEnd) {
    if (lines.Next(strLine)) {
      FeedLine(strLine);
    } else {
      FeedEnd();
    }
  }
  return !vRecords.empty();
}

void CsvSource::FeedLine(std::string_view strLine) {
  const std::size_t nNul = strLine.find('\0');
  if (nNul != std::string_view::npos) {
    lines.Refuse(nNul, "a NUL byte, which a text of a record set cannot hold");
  }
  if (!bOpen) {
    nBegan = lines.Number();
  }
  const std::size_t nUsed =
      csv_parse(&parser, strLine.data(), strLine.size(), OnField, OnRecord, this);
  if (pFailure) {
    std::rethrow_exception(pFailure);
  }
  if (nUsed != strLine.size()) {
    if (csv_error(&parser) != CSV_EPARSE) {
      throw std::bad_alloc();
    }
    lines.Refuse(nUsed, strLine[nUsed] == '"' ? "a quote inside a field without quotes"
                                              : "text behind a closing quote");
  }
  bOpen = vRecords.empty() && (bOpen || !IsBlank(strLine));
}

void CsvSource::FeedEnd() {
  bEnd = true;
  const int nError = csv_fini(&parser, OnField, OnRecord, this);
  if (pFailure) {
    std::rethrow_exception(pFailure);
  }
  if (nError != 0) {
    lines.RefuseLine(nBegan, "a quoted field in the record that begins here has no end");
  }
}

void CsvSource::TakeField(const char* pText, std::size_t nLength) {
  const std::string_view strText(pText ? pText : "", nLength);
  vFields.push_back({std::string(strText), pText == nullptr, types.IsNull(strText)});
}

void CsvSource::TakeRecord() {
  vRecords.push_back({std::move(vFields), nBegan});
  vFields.clear();
}

template <typename Step>
void CsvSource::Guard(Step step) {
  try {
    step();
  } catch (...) {
    pFailure = std::current_exception();
  }
}

void CsvSource::OnField(void* pText, std::size_t nLength, void* pSource) {
  auto& source = *static_cast<CsvSource*>(pSource);
  source.Guard([&] { source.TakeField(static_cast<const char*>(pText), nLength); });
}

void CsvSource::OnRecord(int, void* pSource) {
  auto& source = *static_cast<CsvSource*>(pSource);
  source.Guard([&] { source.TakeRecord(); });
}

// ---- Writing ------------------------------------------------------------------------------------

CsvSink::CsvSink(Output& outputText, char chFieldDelimiter, std::string strNullField)
    : output(outputText),
      strDelimiter(1, chFieldDelimiter),
      strNull(std::move(strNullField)),
      strSpecial("\"\r\n" + strDelimiter) {}

void CsvSink::BeginColumns() {
  if (Names().empty()) {
    return;
  }
  std::string strLine;
  for (const std::string& strColumn : Names()) {
    strLine += &strColumn == &Names().front() ? "" : strDelimiter;
    strLine += Quoted(strColumn);
  }
  WriteLine(strLine);
}

void CsvSink::WriteCells(const std::vector<Cell>& vCells) {
  if (vCells.empty()) {
    return;
  }
  std::string strLine;
  for (const Cell& cell : vCells) {
    strLine += &cell == &vCells.front() ? "" : strDelimiter;
    strLine += cell.eType == CQXRecordSet::QX_NULL ? strNull : Quoted(ShownText(cell));
  }
  WriteLine(strLine);
}

// Quotes tell the empty text, and a text that reads like a null, from a null, and a byte order mark
// that belongs to a name from one that does not.
std::string CsvSink::Quoted(std::string_view strText) const {
  const bool bPlain = !strText.empty() &&
                      strText.find_first_of(strSpecial) == std::string_view::npos &&
                      strText.front() != ' ' && strText.back() != ' ' && strText != strNull &&
                      strText.substr(0, kByteOrderMark.size()) != kByteOrderMark;
  if (bPlain) {
    return std::string(strText);
  }
  std::string strResult = "\"";
  for (const char c : strText) {
    strResult.append(c == '"' ? 2 : 1, c);
  }
  return strResult + '"';
}

// Readers skip an empty line, so that a row of one empty field needs something on it.
void CsvSink::WriteLine(const std::string& strLine) {
  output.Write(strLine.empty() ? "\"\"" : strLine);
  output.Write("\n");
}

}  // namespace qxrs

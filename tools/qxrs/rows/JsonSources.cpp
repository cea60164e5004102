// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows from JSON.

#include "tools/qxrs/rows/JsonSources.h"

#include <utility>

#include "tools/qxrs/support/Document.h"

namespace qxrs {

// ---- Record set text ----------------------------------------------------------------------------

RecordSetSource::RecordSetSource(Input& input)
    : batches(input, JsonBatches::Form::RecordSet), cells(JsonCells::Reading::RecordSet) {}

bool RecordSetSource::Next(Row& row) {
  if (rowAhead.empty() && !FindRowWithCells()) {
    return false;
  }
  row.clear();
  if (nEmptyRows > 0) {
    --nEmptyRows;
  } else {
    row.swap(rowAhead);
  }
  return true;
}

bool RecordSetSource::FindRowWithCells() {
  while (const JSON::JSONValue* pElement = NextElement()) {
    cells.Read(*pElement, rowAhead);
    if (!rowAhead.empty()) {
      return true;
    }
    ++nEmptyRows;
  }
  return false;
}

const JSON::JSONValue* RecordSetSource::NextElement() {
  while (true) {
    if (pSingle) {
      return std::exchange(pSingle, nullptr);
    }
    const JSON::JSONValue* pElement = pRows ? pRows->GetByOrdinal(nNext++) : nullptr;
    bRowsEnded = bRowsEnded || (pElement && pElement->eType == JSON::jtNull);
    if (pElement && !bRowsEnded) {
      return pElement;
    }
    if (!NextBatch()) {
      return nullptr;
    }
  }
}

bool RecordSetSource::NextBatch() {
  pRows = nullptr;
  if (!batches.Next()) {
    return false;
  }
  const JSON::Message& document = batches.Document();
  if (document.eType != JSON::jtObject) {
    batches.Refuse(kNoRecordSet);
  }
  const JSON::JSONValue& rows = document["rows"];
  if (rows.eType == JSON::jtArray) {
    pRows = &rows;
    nNext = 0;
  } else {
    pSingle = &document;
  }
  return true;
}

// ---- Array of objects ---------------------------------------------------------------------------

JsonArraySource::JsonArraySource(Input& input, LongSize eLong)
    : batches(input, JsonBatches::Form::Array), cells(JsonCells::Reading::Foreign, eLong) {}

bool JsonArraySource::Next(Row& row) {
  const JSON::JSONValue* pElement = NextElement();
  if (!pElement) {
    return false;
  }
  ++nRows;
  if (pElement->eType != JSON::jtObject) {
    batches.Refuse("element " + std::to_string(nRows) + " of the array is no object");
  }
  cells.Read(*pElement, row);
  return true;
}

const JSON::JSONValue* JsonArraySource::NextElement() {
  while (true) {
    if (bBatch) {
      const JSON::JSONValue* pElement = batches.Document().GetByOrdinal(nNext++);
      if (pElement) {
        return pElement;
      }
    }
    bBatch = batches.Next();
    if (!bBatch) {
      return nullptr;
    }
    nNext = 0;
    if (batches.Document().eType != JSON::jtArray) {
      batches.Refuse("expected an array of objects");
    }
  }
}

// ---- JSON Lines ---------------------------------------------------------------------------------

JsonLinesSource::JsonLinesSource(Input& input, LongSize eLong)
    : lines(input), cells(JsonCells::Reading::Foreign, eLong) {}

bool JsonLinesSource::Next(Row& row) {
  std::string_view strLine;
  do {
    if (!lines.Next(strLine)) {
      return false;
    }
  } while (strLine.find_first_not_of(kWhiteSpace) == std::string_view::npos);
  ParseLine(strLine);
  cells.Read(message, row);
  return true;
}

void JsonLinesSource::ParseLine(std::string_view strLine) {
  if (const auto refusal = Parse(message, std::string(strLine))) {
    lines.Refuse(refusal->nOffset, refusal->strReason);
  }
  if (message.eType != JSON::jtObject) {
    lines.Refuse(0, "expected an object");
  }
  // The library ignores what follows a document; here it would be a lost row.
  const auto nRead = static_cast<std::size_t>(message.pCursor - message.pStart);
  const std::size_t nMore = strLine.find_first_not_of(kWhiteSpace, nRead);
  if (nMore != std::string_view::npos) {
    lines.Refuse(nMore, "text behind the object");
  }
}

}  // namespace qxrs

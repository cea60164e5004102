// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Writing a record set as JSON text: GetString(), and json_walk_obj(), which writes a parsed object
// through the streaming writer.

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "json/JSONMessage.h"
#include "json/JSONSerialize.h"
#include "memory/KeptBlocks.h"
#include "memory/Spare.h"
#include "recordset/QXRecordSet.h"
#include "recordset/RowWriter.h"
#include "recordset/Table.h"
#include "text/ReadDecimal.h"

using recordset::RowWriter;
using recordset::Table;

namespace {

constexpr std::size_t kTextBytes = 1024;  // reserved for a text

// Everything but objects, the name included. The text is read as the C library reads it, not by its
// length.
void WriteWalkedScalar(JSON::Serialize& writer, const JSON::JSONValue& value) {
  switch (value.eType) {
    case JSON::jtBoolean:
      writer.AppendString(value.pText != nullptr && *value.pText == 't' ? "true" : "false");
      break;
    case JSON::jtInteger:
      writer.V(JSON::ReadDecimal<long>(value.pText));
      break;
    case JSON::jtString:
      writer.V(value.pText);
      break;
    default:
      writer.JS(nullptr);
  }
}

}  // namespace

// The memory of the last text, which the next one needs again, or an estimate of what a first text
// needs. A kept buffer is as long as the text that it held, so that it is not filled before it is
// written.
std::string CQXRecordSet::BufferForText() {
  std::string buffer = std::move(strText);
  strText.clear();
  if (buffer.capacity() < kTextBytes && pTable != nullptr) buffer.swap(pTable->strSpare);
  if (buffer.capacity() < kTextBytes) {
    const std::size_t nTable = pTable != nullptr ? pTable->Footprint() : 0;
    const std::size_t nEstimate = std::clamp(nTable - nTable / 4, kTextBytes, buffer.max_size());
    memory::WithSpare(kTextBytes, nEstimate - kTextBytes, [&buffer](std::size_t nRoom) {
      memory::KeptBlocks::TakeText(buffer, nRoom);
      buffer.reserve(nRoom);
    });
  }
  return buffer;
}

const std::string& CQXRecordSet::GetString() {
  if (!bModified) return strText;
  Table& table = EnsureTable();
  if (table.bTextIsCurrent) return strText;
  RowWriter writer(table, BufferForText());
  if (lRowsCount <= 0) {
    writer.Raw("{}");
  } else if (lRowsCount == 1) {
    writer.Row(1);
  } else {
    writer.Raw("{\"rows\":[");
    for (long i = 0; i < lRowsCount; ++i) {
      if (i != 0) writer.Raw(",");
      writer.Row(i + 1);
    }
    writer.Raw("]}");
  }
  strText = std::move(writer).Finish();
  table.bTextIsCurrent = true;
  return strText;
}

const std::string& CQXRecordSet::GetStringRef() const { return strText; }

// Objects within objects wait on a stack of their own, so that no nesting is too deep.
void json_walk_obj(JSON::Serialize& writer, JSON::JSONValue const* value, int nested) {
  std::vector<std::pair<const JSON::JSONValue*, int>> vOuter;  // object, next ordinal
  const JSON::JSONValue* pObject = value;
  int nOrdinal = 0;
  if (nested == 0) writer.OO();
  for (;;) {
    const JSON::JSONValue* const pMember = pObject->GetByOrdinal(nOrdinal);
    if (pMember == nullptr) {
      if (vOuter.empty()) break;
      pObject = vOuter.back().first;
      nOrdinal = vOuter.back().second;
      vOuter.pop_back();
      writer.OC();
      continue;
    }
    const char* const name = pObject->pComposite->NameAt(nOrdinal++);
    if (name == nullptr) continue;
    writer.N(name);
    if (pMember->eType == JSON::jtObject) {
      vOuter.emplace_back(pObject, nOrdinal);
      pObject = pMember;
      nOrdinal = 0;
      writer.OO();
    } else {
      WriteWalkedScalar(writer, *pMember);
    }
  }
  if (nested == 0) writer.OC();
}

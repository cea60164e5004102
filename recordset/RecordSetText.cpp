// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Writing a record set as JSON text: GetString(), and json_walk_obj(), which writes a parsed object
// through the streaming writer.

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "json/JSONMessage.h"
#include "json/JSONSerialize.h"
#include "recordset/IntegerText.h"
#include "recordset/QXRecordSet.h"
#include "recordset/RowWriter.h"
#include "recordset/Table.h"
#include "text/ReadDecimal.h"

using recordset::RowWriter;

namespace {

constexpr std::size_t kTextBytes = 1024;  // reserved for a text

// An integer as the library writes it; digits that are so already are not converted.
void WriteInteger(JSON::Serialize& writer, std::string_view text) {
  if (recordset::IsCanonicalInteger(text)) {
    writer.JS_N(text.data(), static_cast<int>(text.size()));
  } else {
    writer.V(JSON::ReadDecimal<long>(text));
  }
}

// Everything but objects, the name included.
void WriteWalkedScalar(JSON::Serialize& writer, const JSON::JSONValue& value) {
  const std::string_view text(value.pText, static_cast<std::size_t>(value.nLength));
  switch (value.eType) {
    case JSON::jtBoolean:
      writer.AppendString(!text.empty() && text.front() == 't' ? "true" : "false");
      break;
    case JSON::jtInteger:
      WriteInteger(writer, text);
      break;
    case JSON::jtString:
      if (value.pText != nullptr) {
        writer.V(text);
        break;
      }
      [[fallthrough]];
    default:
      writer.JS(nullptr);
  }
}

}  // namespace

// The memory of the last text, which the next one needs again, or about as much as a first text is
// going to need.
std::string CQXRecordSet::BufferForText() {
  std::string buffer = std::move(strText);
  strText.clear();
  if (buffer.capacity() < kTextBytes) {
    const std::size_t nTable = pTable != nullptr ? pTable->Footprint() : 0;
    buffer.reserve(std::max(kTextBytes, nTable - nTable / 4));
  }
  return buffer;
}

const std::string& CQXRecordSet::GetString() {
  if (!bModified) return strText;
  RowWriter writer(EnsureTable(), BufferForText());
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

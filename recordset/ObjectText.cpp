// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// json_walk_obj(), which writes a parsed object through the streaming writer, and the objects in
// cells, which are written by it.

#include "recordset/ObjectText.h"

#include <climits>
#include <utility>
#include <vector>

#include "json/JSONSerialize.h"
#include "recordset/QXRecordSet.h"
#include "text/ReadDecimal.h"

namespace {

constexpr int kObjectBytes = 1024;  // reserved for the text of an object

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

// The outer objects are kept on a stack in the heap, so that the nesting may have any depth.
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

namespace recordset {

// The message parses in place, so it gets a copy.
std::string_view ObjectText::Rewritten(std::string_view text) {
  if (text.size() > INT_MAX) return {};
  strText_.assign(text);
  if (!message_) message_.emplace(true);
  if (!message_->Parse(strText_.data(), static_cast<int>(text.size()))) return {};
  JSON::Serialize writer(kObjectBytes);
  json_walk_obj(writer, &*message_, 0);
  strText_ = writer.String();
  return strText_;
}

}  // namespace recordset

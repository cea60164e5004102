// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Loading a record set the plain way: the text is parsed with JSON::Message, the tree is walked,
// and every cell is set with SetValue(). Tests hold CQXRecordSet::SetString against it.

#ifndef QXRECORDSET_TESTS_SUPPORT_PLAINLOAD_H
#define QXRECORDSET_TESTS_SUPPORT_PLAINLOAD_H

#include <cstddef>
#include <cstdlib>
#include <string>

#include "json/JSONMessage.h"
#include "recordset/QXRecordSet.h"

namespace Plain {

inline std::string WrittenAnew(const JSON::JSONValue& object) {
  JSON::Serialize writer(0);
  json_walk_obj(writer, &object, 0);
  return writer.String();
}

inline void SetCell(CQXRecordSet& set, const char* name, const JSON::JSONValue& value, long row) {
  switch (value.eType) {
    case JSON::jtObject:
      return set.SetValue(name, WrittenAnew(value).c_str(), row, CQXRecordSet::QX_RECORDSET);
    case JSON::jtBoolean:
      return set.SetValue(name, *value.pText == 't', row);
    case JSON::jtInteger:
      return set.SetValue(
          name,
          std::strtol(std::string(value.pText, static_cast<std::size_t>(value.nLength)).c_str(),
                      nullptr, 10),
          row);
    case JSON::jtString:
      return set.SetValue(name, value.pText, row);
    case JSON::jtNull:
      return set.SetValue(name, "", row, CQXRecordSet::QX_NULL);
    default:
      return set.SetValue(name, "", row);
  }
}

inline void SetRow(CQXRecordSet& set, const JSON::JSONValue& object, long row) {
  for (int i = 0; i < object.Size(); ++i) {
    SetCell(set, object.pComposite->NameAt(i), object[i], row);
  }
}

inline void Load(CQXRecordSet& set, const std::string& text) {
  set.SetString("");  // written, whatever the text is
  JSON::Message message;
  const bool bParsed = message.Parse(text.data(), static_cast<int>(text.size()));
  if (!bParsed || message.eType != JSON::jtObject) return;
  const JSON::JSONValue& rows = message["rows"];
  if (rows.eType != JSON::jtArray) return SetRow(set, message, 1);
  for (int i = 0; i < rows.Size() && rows[i].eType != JSON::jtNull; ++i) {
    if (rows[i].eType == JSON::jtObject) SetRow(set, rows[i], i + 1L);
  }
}

// Everything that can be seen of a record set.
inline std::string Picture(CQXRecordSet& set) {
  std::string picture = std::to_string(set.GetRowsCount()) + " rows;";
  for (long i = 0; i < set.GetColumnCount(); ++i) {
    const std::string name = set.GetColumnName(i);
    picture += ' ' + name + '=' + std::to_string(set.GetColumnIndex(name.c_str()));
  }
  return picture + '\n' + set.Dump() + set.GetString();
}

}  // namespace Plain

#endif  // QXRECORDSET_TESTS_SUPPORT_PLAINLOAD_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A plug-in that brings the library with it, linked in from the archive.

#include <string>

#include "json/JSONMessage.h"
#include "json/JSONSerialize.h"
#include "params/CParamsX.h"
#include "recordset/QXRecordSet.h"

// Whether a record set, a document, a writer and a parameter string all agree on the number.
extern "C" [[gnu::visibility("default")]] bool UseTheLibrary(long nNumber);
extern "C" bool UseTheLibrary(long nNumber) {
  CQXRecordSet rows;
  rows.SetValue("n", nNumber);
  CParamsRS params;
  params.addParam(rows.GetString());
  JSON::Message message;
  if (!message.Parse(params.getStringParamAt(0).c_str(), -1)) return false;
  JSON::Serialize writer(64);
  json_walk_obj(writer, &message, 0);
  return CQXRecordSet(writer.String()).GetValueAsLong("n") == nNumber;
}

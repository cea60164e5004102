// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The text of an object in a cell: the object is parsed and written again, so that it has the form
// that the library writes.

#ifndef QXRECORDSET_RECORDSET_OBJECTTEXT_H
#define QXRECORDSET_RECORDSET_OBJECTTEXT_H

#include <optional>
#include <string>
#include <string_view>

#include "json/JSONMessage.h"

namespace recordset {

class ObjectText {
 public:
  // The object that `text` begins with, as json_walk_obj() writes it; valid until the next call.
  // Empty when the text is no complete object.
  std::string_view Rewritten(std::string_view text);

 private:
  std::string strText_;
  std::optional<JSON::Message> message_;  // made for the first object
};

}  // namespace recordset

#endif  // QXRECORDSET_RECORDSET_OBJECTTEXT_H

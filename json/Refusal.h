// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What a parse that fails tells Message::Parse(), which makes a ParseError of it.

#ifndef QXRECORDSET_JSON_REFUSAL_H
#define QXRECORDSET_JSON_REFUSAL_H

#include <cstddef>

#include "text/Fault.h"

namespace JSON {

struct Refusal {
  std::size_t nStop = 0;  // offset in the text
  Fault fault = Fault::kUnknown;
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_REFUSAL_H

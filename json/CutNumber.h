// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The number that the end of a failed text cuts off. Every other number has a byte behind it that
// ends it for a reader; this one runs up to the end of the text, where there may be nothing
// that can be read.

#ifndef QXRECORDSET_JSON_CUTNUMBER_H
#define QXRECORDSET_JSON_CUTNUMBER_H

#include "json/JSONValue.h"

namespace JSON {

// When the value that was read last is a number that runs up to pEnd, it gets a private copy of all
// of it; its nLength stays as parsed, one byte short. REQUIRES: the container was filled from a
// text that ends at pEnd and was refused.
void OwnCutNumber(CompositeValue& container, const char* pEnd);

}  // namespace JSON

#endif  // QXRECORDSET_JSON_CUTNUMBER_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What a record set does not keep of a text that it loads.

#ifndef QXRECORDSET_TOOLS_LOSSES_H
#define QXRECORDSET_TOOLS_LOSSES_H

#include <string>

#include "tools/qxrs/support/Warnings.h"

namespace qxrs {

// REQUIRES: the library accepts `strText`, and it is an object.
void CountLosses(const std::string& strText, Warnings& warnings);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_LOSSES_H

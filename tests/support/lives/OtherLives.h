// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The lives of documents that are nothing but deep, of writers and of parameter strings.

#ifndef QXRECORDSET_TESTS_SUPPORT_LIVES_OTHERLIVES_H
#define QXRECORDSET_TESTS_SUPPORT_LIVES_OTHERLIVES_H

#include <memory>

#include "tests/support/lives/Life.h"

namespace Support {

std::unique_ptr<Life> MakeChainLife(World& common);

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_LIVES_OTHERLIVES_H

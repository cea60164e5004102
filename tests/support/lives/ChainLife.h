// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The life of a document that is nothing but deep.

#ifndef QXRECORDSET_TESTS_SUPPORT_LIVES_CHAINLIFE_H
#define QXRECORDSET_TESTS_SUPPORT_LIVES_CHAINLIFE_H

#include <memory>

#include "tests/support/lives/Life.h"

namespace Support {

std::unique_ptr<Life> MakeChainLife(World& common);

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_LIVES_CHAINLIFE_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The life of a record set, beside a model that is nothing but nested maps. Profiles of row numbers
// and columns drive the cells through every way of storing them: dense rows, rows written
// backwards, rows far off, columns far apart.

#ifndef QXRECORDSET_TESTS_SUPPORT_LIVES_CELLLIFE_H
#define QXRECORDSET_TESTS_SUPPORT_LIVES_CELLLIFE_H

#include <cstddef>
#include <memory>

#include "tests/support/lives/Life.h"

namespace Support {

constexpr std::size_t kRecordSetProfiles = 8;

std::unique_ptr<Life> MakeRecordSetLife(World& common, std::size_t nProfile);

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_LIVES_CELLLIFE_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Support::CellPlayer plays everything a host can do on a record set, and does the same to a model
// that is nothing but nested maps. Profiles of row numbers and columns drive the cells through
// every way of storing them: dense rows, rows written backwards, rows far off, columns far apart.

#ifndef QXRECORDSET_TESTS_SUPPORT_CELLPLAYER_H
#define QXRECORDSET_TESTS_SUPPORT_CELLPLAYER_H

#include <cstddef>
#include <memory>
#include <string>

#include "tests/support/Random.h"

namespace Support {

class CellPlayer {
 public:
  static constexpr std::size_t kProfileCount = 8;

  static std::unique_ptr<CellPlayer> Make(std::size_t nProfile, const Random& choices);
  virtual ~CellPlayer() = default;

  // Takes one step, and compares what it reads, or everything: cells, columns, text and dump. The
  // first thing that ever differed, or "".
  virtual const std::string& Step() = 0;
  virtual const std::string& CheckAll() = 0;

  // See Random::UsedUp.
  virtual bool UsedUp() const = 0;
};

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_CELLPLAYER_H

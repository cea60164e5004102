// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A walk through a tree keeps one record for each container that it is in. The records of the
// outermost levels lie in the walk itself, which is enough for nearly every document; deeper ones
// lie on the heap, so that the depth of a tree is never the depth of the calls.

#ifndef QXRECORDSET_JSON_LEVELS_H
#define QXRECORDSET_JSON_LEVELS_H

#include <cassert>
#include <cstddef>
#include <vector>

namespace JSON {

// Level is a plain record.
template <typename Level>
class Levels {  // NOLINT(cppcoreguidelines-pro-type-member-init): records are written when pushed
 public:
  bool IsEmpty() const { return nCount_ == 0; }

  // The innermost level. REQUIRES: not empty. Push() may move it.
  Level& Innermost() {
    assert(nCount_ != 0);
    return nCount_ <= kNear ? aNear_[nCount_ - 1] : vFar_.back();
  }

  // The record of a caller that inlines this stays in registers.
  void Push(const Level& level) {
    if (nCount_ < kNear) {
      aNear_[nCount_] = level;
    } else {
      PushFar(level);
    }
    ++nCount_;
  }
  void Pop() {
    assert(nCount_ != 0);
    if (nCount_ > kNear) vFar_.pop_back();
    --nCount_;
  }

 private:
  static constexpr std::size_t kNear = 16;

  [[gnu::noinline]] void PushFar(Level level) { vFar_.push_back(level); }

  std::size_t nCount_ = 0;
  Level aNear_[kNear];  // the outermost levels
  std::vector<Level> vFar_;
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_LEVELS_H

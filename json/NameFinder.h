// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Finding names in an object that grows. Sorting its names for each lookup would make the work grow
// with their square, so the names stay as they were added. What is known of them is a state that is
// kept in bSorted, which reads as true where names are said to be sorted:
//
//   kStale    nothing
//   kSorted   all are sorted
//   kClaimed  somebody said so; names may have been appended since
//   kGrown    the first nOrdered are sorted, the others were appended
//   kHashed   a hash table says where they stand, apart from the last ones, which it does not have
//             yet. The names' block on the heap leads to it (json/Items.h).
//
// What the others say holds as long as nobody but the library had access to the names, which are
// borrowed for that time:
//
//   1. Access to the sequence of names marks it as handed out; here that mark is taken away.
//   2. A host that changes names by other ways, such as an old reference, has to set bSorted to
//      false. That makes the state kStale, even where bSorted was false before.

#ifndef QXRECORDSET_JSON_NAMEFINDER_H
#define QXRECORDSET_JSON_NAMEFINDER_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "json/Items.h"
#include "json/JSONValue.h"
#include "text/NameHash.h"

namespace JSON {

class NameFinder {
 public:
  using NameMap = ObjectValue::NameMap;
  using Order = ObjectValue::Order;

  // Up to this many names are sorted, or looked through, in less time than they are hashed.
  static constexpr std::uint32_t kFewNames = 12;

  // The ordinal of the first member of that name, or -1, without sorting the names. When there is
  // no memory for a table, they are looked through.
  static int Find(const ObjectValue& object, const char* name, int nLength);

  // The same for a name without a NUL that is appended when it is not there. Only a few names are
  // sorted, and only if it is there.
  static int FindOrMiss(const ObjectValue& object, const char* name, int nLength);

  // An update has appended the name that FindOrMiss() did not find.
  static void NoteAppended(ObjectValue& object) noexcept;

  // The names were sorted just now.
  static void NoteSorted(const ObjectValue& object) noexcept {
    object.bSorted.eState = Order::kSorted;
    if (Items::AreOnHeap(object.vNameMap)) {
      Drop(object);
      Items::Borrow(object.vNameMap);
    }
  }

  // The names are going to be released.
  static void Forget(const ObjectValue& object) noexcept;

  // How many names may stand where they do not belong, behind sorted ones.
  static std::uint32_t CountNew(const ObjectValue& object) noexcept;

 private:
  // Beyond that not all sorted names are known to be sorted.
  static constexpr std::uint32_t kMostOrdered = (std::uint32_t{1} << 29) - 1;

  struct Slot {
    std::uint32_t nHash;
    std::uint32_t nPlace;  // of the name, from 1 on; 0: the slot is free
  };

  static bool Is(const ObjectValue& object, std::uint32_t nState) noexcept;
  static bool HasFewNew(const ObjectValue& object) noexcept;
  static int FindGrown(const ObjectValue& object, const char* name, int nLength,
                       bool bPlain) noexcept;
  static NameFinder& Current(const ObjectValue& object);
  static void Drop(const ObjectValue& object) noexcept;

  std::uint32_t HashOf(const char* name, int nLength) const noexcept;
  Slot& SlotFor(const NameMap* pNames, std::uint32_t nHash, const char* name, int nLength) noexcept;
  void Add(const NameMap* pNames) noexcept;
  void AddMissed(std::uint32_t nCount) noexcept;
  void MakeRoom();

  const NameHash hash_;
  std::uint32_t nNames_ = 0;   // names that were added
  std::uint32_t nMissed_ = 0;  // the hash of the name that was not found last
  Slot* pFree_ = nullptr;      // and where it would be entered; null when it was
  std::vector<Slot> vSlots_;   // more than twice as many, a power of two; of equal names the first
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_NAMEFINDER_H

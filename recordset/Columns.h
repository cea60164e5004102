// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The columns of a table: names, in the order in which they were added. A few columns are simply
// searched, many are found by hash.
//
// Hosts clear a record set and fill it with a table of the same kind. So the columns that are
// removed are remembered: as long as a text has the same names in the same order, each column is
// restored after one comparison. The invariants:
//
//   1. The columns form a list by position, in memory that does not move: first nCount_ columns
//      that are there, then those that are remembered, up to position nRemembered_, then places
//      that are free.
//   2. A column that is remembered keeps the first bytes of its name, which a short name is all of,
//      and what a host asked for behind it. Its text is empty.
//   3. The column that a text is expected to name behind a column that is there, is there, too. The
//      one that a host is expected to ask for may be remembered: then none of its cells exists.
//   4. bBeyond says whether the names up to that of a column ascend. It holds for a remembered
//      column as well, since the same columns are before it when it is restored.

#ifndef QXRECORDSET_RECORDSET_COLUMNS_H
#define QXRECORDSET_RECORDSET_COLUMNS_H

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string_view>
#include <vector>

#include "memory/BumpBlocks.h"
#include "recordset/TextStore.h"
#include "text/ExpectedName.h"
#include "text/NameHash.h"
#include "text/ShortBytes.h"

namespace recordset {

struct Column {
  // Who looks for columns: a host, or the reader of a text.
  enum User : unsigned { kHost, kText, kUsers };

  JSON::ExpectedName name;
  std::uint32_t nHash = 0;               // once there is a hash table
  std::uint32_t nPosition : 30;          // 0-based
  std::uint32_t bPlainName : 1;          // nothing in it has to be escaped
  std::uint32_t bBeyond : 1;             // the names up to this one ascend
  mutable const Column* apNext[kUsers];  // expected behind this one; see ExpectedColumn.h
  Column* pBehind;                       // in the list

  // Constructed in place: a copy would read a name that was just written, and wait for the write.
  Column(std::string_view text, JSON::Block16 start, std::uint32_t nAt, bool bIsBeyond,
         const Column* pFirst, Column* pNextInList);

  std::uint32_t Index() const { return nPosition + 1; }
  std::string_view Name() const { return {name.Text(), name.Length()}; }

  bool Is(std::string_view text) const {
    return name.Length() == text.size() && JSON::SameBytes(name.Text(), text.data(), text.size());
  }
  bool Is(const char* text) const {
    // A call out of the library costs more than the bytes of a short name.
    for (const char* p = name.Text(); *p == *text; ++p, ++text) {
      if (*p == '\0') return true;
    }
    return false;
  }
};

class Columns {
 public:
  // The names are stored in `texts`, which must outlive this object.
  explicit Columns(TextStore& texts) noexcept : texts_(texts), blocks_(nullptr, 0) {}
  Columns(const Columns&) = delete;
  Columns& operator=(const Columns&) = delete;
  ~Columns() = default;

  // The list begins with Count() columns that are there; null, or free places, follow.
  std::uint32_t Count() const { return nCount_; }
  const Column* First() const { return pFirst_; }
  bool Has(const Column& column) const { return column.nPosition < nCount_; }

  // How many columns were ever added, those that were there again not counted: while it stays, the
  // first n columns are the same ones whenever there are so many.
  std::uint64_t Added() const { return nAdded_; }

  // Whether the columns are in the byte-wise order of their names.
  bool Ascend() const { return pLast_ == nullptr || pLast_->bBeyond != 0; }

  // The column with that name, or null.
  const Column* Find(std::string_view name) const;

  // The same, but a new name becomes a column. `start` begins with the first bytes of the name.
  // When memory runs out, nothing has changed.
  const Column& FindOrAdd(std::string_view name, JSON::Block16 start);
  const Column& FindOrAdd(std::string_view name) {
    return FindOrAdd(name, JSON::ExpectedName::FirstBytes(name.data(), name.size()));
  }

  // When the text at p is the name, a closing quote and a colon of the column that was removed and
  // would be the next to be added, it is there again; else null. REQUIRES: 16 bytes at p.
  const Column* AddAgain(const char* p, [[maybe_unused]] const char* pEnd) {
    assert(pEnd - p >= JSON::Block16::kBytes);
    if (nCount_ == nRemembered_) return nullptr;
    Column& column = *NextPlace();
    return column.name.MatchesShortMember(p) ? &Restore(column, p) : nullptr;
  }

  // The same for a text that ends soon behind the name.
  const Column* AddAgain(std::string_view name) {
    if (name.size() >= JSON::ExpectedName::kShortName) return nullptr;
    char aMember[2 * JSON::Block16::kBytes] = {};
    std::copy(name.begin(), name.end(), aMember);
    aMember[name.size()] = '"';
    aMember[name.size() + 1] = ':';
    return AddAgain(aMember, std::end(aMember));
  }

  // Removes all columns, and remembers them. REQUIRES: the text store is reset as well.
  void Reset() noexcept;

  // Bytes of memory in use, what is made for searching aside.
  std::size_t Footprint() const { return blocks_.Footprint(); }

 private:
  // Up to this many columns are searched one by one: a search then costs no more than a hash.
  static constexpr std::size_t kFewColumns = 16;

  Column*& NextPlace() { return pLast_ != nullptr ? pLast_->pBehind : pFirst_; }
  const Column& Add(std::string_view name, JSON::Block16 start, bool bBeyond);
  const Column& Restore(Column& column, const char* name);
  void PrepareToAdd();
  const Column& Enlist(Column& column) noexcept;
  const Column* FindInTable(std::string_view name) const;
  void MakeTable(std::size_t nSlots);
  void Enter(Column& column) noexcept;

  TextStore& texts_;
  memory::BumpBlocks blocks_;  // the columns
  Column* pFirst_ = nullptr;
  Column* pLast_ = nullptr;        // of those that are there
  std::uint32_t nCount_ = 0;       // columns that are there
  std::uint32_t nRemembered_ = 0;  // and those that are remembered
  std::uint64_t nAdded_ = 0;
  std::optional<JSON::NameHash> hash_;
  std::vector<const Column*> vSlots_;  // the hash table, at most half full
};

}  // namespace recordset

#endif  // QXRECORDSET_RECORDSET_COLUMNS_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The columns of a table: names, and their indices 1, 2, 3, ... in the order in which they were
// added.
//
// Rows are written and read in the same order of columns again and again. A lookup therefore tries
// the column first that followed the column found last when that one was found the time before: one
// comparison in the usual case. Else a few columns are simply searched, and many are found by hash.
//
// The order by name is needed for writing and listing only. It is made when it is asked for: the
// names added since the last time are sorted and merged with the others. A text that was written by
// this library has its names in order: as long as every new name comes behind all others, nothing
// has to be sorted, nor searched for a name that is behind the last.

#ifndef QXRECORDSET_RECORDSET_COLUMNS_H
#define QXRECORDSET_RECORDSET_COLUMNS_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>
#include <vector>

#include "json/ExpectedName.h"
#include "recordset/NameHash.h"
#include "recordset/ShortBytes.h"
#include "recordset/TextStore.h"

namespace recordset {

class Columns {
 public:
  // The names are stored in `texts`, which must outlive this object.
  explicit Columns(TextStore& texts) noexcept : texts_(texts) {}
  Columns(const Columns&) = delete;
  Columns& operator=(const Columns&) = delete;
  ~Columns() = default;

  struct Column {
    JSON::ExpectedName name;
    std::uint32_t nHash = 0;       // once there is a hash table
    std::uint32_t nPosition : 31;  // its index - 1
    std::uint32_t bPlainName : 1;  // nothing in it has to be escaped
    // The column that was found after this one. That it is an address makes what a lookup has to
    // wait for from the lookup before as short as it can be.
    const Column* pNext = nullptr;

    // Built in place: copying a name that was just written would have to wait for it.
    Column(const char* pName, std::size_t nLength, JSON::Block16 start, std::uint32_t nColumn,
           bool bPlain)
        : name(pName, nLength, start),
          nPosition((nColumn - 1) & 0x7FFFFFFF),
          bPlainName(bPlain ? 1 : 0) {}
  };

  const Column& At(std::uint32_t nColumn) const { return vColumns_[nColumn - 1]; }
  std::uint32_t Count() const { return static_cast<std::uint32_t>(vColumns_.size()); }

  // The name of the column with that index; it stays in place. REQUIRES: nColumn is 1 to Count().
  std::string_view NameOf(std::uint32_t nColumn) const {
    const Column& column = vColumns_[nColumn - 1];
    return {column.name.Text(), column.name.Length()};
  }

  // The index of a column, or 0. `name` ends at its NUL, or is `length` bytes long.
  std::uint32_t Find(const char* name) {
    const Column* const pColumn = Expected(name);
    return pColumn != nullptr ? pColumn->nPosition + 1 : FindElsewhere(name, std::strlen(name));
  }
  std::uint32_t Find(const char* name, std::size_t length) {
    return IsGuess(name, length) ? TakeGuess() : FindElsewhere(name, length);
  }

  // The same, but a new name becomes a column. When memory runs out, nothing has changed.
  std::uint32_t FindOrAdd(const char* name) {
    const Column* const pColumn = Expected(name);
    return pColumn != nullptr ? pColumn->nPosition + 1 : FindOrAddAny(name, std::strlen(name));
  }
  std::uint32_t FindOrAdd(const char* name, std::size_t length) {
    return IsGuess(name, length) ? TakeGuess() : FindOrAddAny(name, length);
  }

  // The column itself. REQUIRES: a whole block can be read at `name`.
  const Column& FoundOrAdded(const char* name, std::size_t length) {
    if (IsGuess(name, length)) {
      TakeGuess();
    } else {
      FindOrAddElsewhere(name, length, JSON::Block16::Load(name));
    }
    return *pLast_;
  }

  // The column that is expected next; null as long as there is none. It stays in place until a
  // column is added.
  const Column* Expected() const { return pGuess_; }

  // The column with that name when it is the one expected next, which is then found; else null.
  const Column* Expected(const char* name) {
    const Column* const pColumn = pGuess_;
    if (pColumn == nullptr || !IsText(*pColumn, name)) return nullptr;
    Found(*pColumn);
    return pColumn;
  }

  // The column that is expected next, once `column` was found.
  const Column* Found(const Column& column) {
    pLast_ = &column;
    return pGuess_ = column.pNext;
  }

  // All column indices in the byte-wise order of their names.
  const std::vector<std::uint32_t>& InNameOrder();

  // Removes all columns. REQUIRES: the text store is reset as well.
  void Reset() noexcept;

  // Bytes of memory that Reset() keeps.
  std::size_t Footprint() const;

 private:
  // Up to this many columns are searched one by one: a search then costs no more than a hash.
  static constexpr std::size_t kFewColumns = 16;

  bool IsGuess(const char* name, std::size_t length) const {
    return pGuess_ != nullptr && IsName(*pGuess_, name, length);
  }
  static bool IsName(const Column& column, const char* name, std::size_t length) {
    return column.name.Length() == length && SameBytes(column.name.Text(), name, length);
  }
  static bool IsText(const Column& column, const char* name) {
    const char* p = column.name.Text();
    if constexpr (sizeof(void*) > 4) return std::strcmp(p, name) == 0;
    // In 32-bit code a call out of the library costs more than the bytes of a short name.
    for (; *p == *name; ++p, ++name) {
      if (*p == '\0') return true;
    }
    return false;
  }

  std::uint32_t TakeGuess() {
    Found(*pGuess_);
    return pLast_->nPosition + 1;
  }

  std::uint32_t FindElsewhere(const char* name, std::size_t length);
  std::uint32_t FindOrAddAny(const char* name, std::size_t length);
  std::uint32_t FindOrAddElsewhere(const char* name, std::size_t length, JSON::Block16 start);
  bool IsBeyond(const char* name, std::size_t length) const;
  std::uint32_t Search(const char* name, std::size_t length) const;
  std::uint32_t Add(const char* name, std::size_t length, JSON::Block16 start, bool bBeyond);
  void Learn(std::uint32_t nPosition);

  void MakeRoom();
  void MakeTable(std::size_t nSlots);
  void Enter(std::uint32_t nPosition) noexcept;

  TextStore& texts_;
  std::vector<Column> vColumns_;    // by index - 1, the column's position
  const Column* pLast_ = nullptr;   // the column found last
  const Column* pGuess_ = nullptr;  // the column expected next, at pNext of that one
  bool bAscending_ = true;          // the order of addition is the order by name
  std::optional<NameHash> hash_;
  std::vector<std::uint32_t> vSlots_;   // the hash table, at most half full: indices, or 0
  std::vector<std::uint32_t> vSorted_;  // indices by name, as far as they were sorted
};

}  // namespace recordset

#endif  // QXRECORDSET_RECORDSET_COLUMNS_H

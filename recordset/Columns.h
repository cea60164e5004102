// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The columns of a table: names, and their indices 1, 2, 3, ... in the order in which they were
// added.
//
// Rows are written and read in the same order of columns again and again, but a host may ask for
// columns in another order than its texts have them. For each of the two orders a lookup tries the
// column first that followed the column found last when that one was found the time before: one
// comparison in the usual case. Else a few columns are simply searched, and many are found by hash.
//
// The order by name is needed for writing and listing only. It is made when it is asked for: the
// names added since the last time are sorted and merged with the others. A text that was written by
// this library has its names in order: as long as every new name comes behind all others, nothing
// has to be sorted, nor searched for a name that is behind the last.
//
// A record set that is cleared is mostly filled with a table of the same kind again. Columns that
// were removed by Reset() are remembered: as long as a text has the same names in the same order,
// each takes its place again after one comparison.

#ifndef QXRECORDSET_RECORDSET_COLUMNS_H
#define QXRECORDSET_RECORDSET_COLUMNS_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>
#include <vector>

#include "recordset/NameHash.h"
#include "recordset/TextStore.h"
#include "text/ExpectedName.h"
#include "text/ShortBytes.h"

namespace recordset {

class Columns {
 public:
  // The names are stored in `texts`, which must outlive this object.
  explicit Columns(TextStore& texts) noexcept : texts_(texts) {}
  Columns(const Columns&) = delete;
  Columns& operator=(const Columns&) = delete;
  ~Columns() = default;

  // Who looks for a column: a host by its name, or the reader of a text.
  enum Use : unsigned { kAsked, kInText, kUses };

  struct Column {
    JSON::ExpectedName name;
    std::uint32_t nHash = 0;       // once there is a hash table
    std::uint32_t nPosition : 30;  // its index - 1
    std::uint32_t bPlainName : 1;  // nothing in it has to be escaped
    std::uint32_t bBeyond : 1;     // the names before it are in order, and it comes behind them
    // The columns that were found after this one. That they are addresses makes what a lookup has
    // to wait for from the lookup before as short as it can be.
    const Column* apNext[kUses] = {};

    // Built in place: copying a name that was just written would have to wait for it.
    Column(const char* pName, std::size_t nLength, JSON::Block16 start, std::uint32_t nAt,
           bool bPlain, bool bIsBeyond)
        : name(pName, nLength, start),
          nPosition(nAt & kLastColumn),
          bPlainName(bPlain ? 1 : 0),
          bBeyond(bIsBeyond ? 1 : 0) {}
  };

  const Column& At(std::uint32_t nColumn) const { return vColumns_[nColumn - 1]; }
  std::uint32_t Count() const { return nCount_; }

  // The name of the column with that index; it stays in place. REQUIRES: nColumn is 1 to Count().
  std::string_view NameOf(std::uint32_t nColumn) const {
    const Column& column = vColumns_[nColumn - 1];
    return {column.name.Text(), column.name.Length()};
  }

  // A host's lookup: the index of a column, or 0. `name` ends at its NUL.
  std::uint32_t Find(const char* name) {
    const Column* const pColumn = Expected(name);
    return pColumn != nullptr && IsThere(*pColumn) ? pColumn->nPosition + 1 : FindUnexpected(name);
  }
  std::uint32_t FindUnexpected(const char* name) {
    return FindElsewhere(kAsked, name, std::strlen(name));
  }

  // The same, but a new name becomes a column. When memory runs out, nothing has changed.
  std::uint32_t FindOrAdd(const char* name) {
    const Column* const pColumn = Expected(name);
    return pColumn != nullptr && IsThere(*pColumn) ? pColumn->nPosition + 1
                                                   : FindOrAddAny(kAsked, name, std::strlen(name));
  }

  // The column with that name when it is the one that a host is expected to ask for next; else
  // null. It may be a column that is not there any more: then none of its cells exists.
  const Column* Expected(const char* name) {
    const Column* const pColumn = chains_[kAsked].pGuess;
    if (pColumn == nullptr || !IsText(*pColumn, name)) return nullptr;
    Found(kAsked, *pColumn);
    return pColumn;
  }

  // A reader's lookup: the index of the column with that name, which may be new.
  std::uint32_t FindOrAdd(const char* name, std::size_t length) {
    return IsGuess(name, length) ? TakeGuess().nPosition + 1 : FindOrAddAny(kInText, name, length);
  }

  // The column itself. REQUIRES: a whole block can be read at `name`.
  const Column& FoundOrAdded(const char* name, std::size_t length) {
    if (IsGuess(name, length)) return TakeGuess();
    return At(FindOrAddElsewhere(kInText, name, length, JSON::Block16::Load(name)));
  }

  // The column that is expected next in a text; null as long as there is none. It stays in place
  // until a column is added.
  const Column* Expected() const { return chains_[kInText].pGuess; }

  // Tells which column was found in a text.
  void Found(const Column& column) { Found(kInText, column); }

  // When the text at p is the name, a closing quote and a colon of the column that was removed and
  // would be the next to be added, it is there again, and found; else null. REQUIRES: 16 bytes at
  // p.
  const Column* AddAgain(const char* p, const char* pEnd) {
    if (nCount_ == nRemembered_) return nullptr;
    const Column& column = vColumns_[nCount_];
    const bool bSame =
        column.name.Length() < JSON::ExpectedName::kShortName && column.name.MatchesMember(p, pEnd);
    return bSame ? &Restore(p) : nullptr;
  }

  // All column indices in the byte-wise order of their names.
  const std::vector<std::uint32_t>& InNameOrder();

  // Removes all columns, and remembers them. REQUIRES: the text store is reset as well.
  void Reset() noexcept;

  // Bytes of memory in use.
  std::size_t Footprint() const;

 private:
  // Up to this many columns are searched one by one: a search then costs no more than a hash.
  static constexpr std::size_t kFewColumns = 16;

  // The columns found last and expected next, by one use.
  struct Chain {
    const Column* pLast = nullptr;
    const Column* pGuess = nullptr;
  };

  static constexpr std::uint32_t kLastColumn = 0x3FFFFFFF;

  // Positions behind those of all columns are those of columns that were removed.
  bool IsThere(const Column& column) const { return column.nPosition < nCount_; }

  bool IsGuess(const char* name, std::size_t length) const {
    const Column* const pGuess = chains_[kInText].pGuess;
    return pGuess != nullptr && IsName(*pGuess, name, length);
  }
  static bool IsName(const Column& column, const char* name, std::size_t length) {
    return column.name.Length() == length && JSON::SameBytes(column.name.Text(), name, length);
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

  void Found(Use use, const Column& column) { chains_[use] = {&column, column.apNext[use]}; }
  const Column& TakeGuess() {
    const Column& column = *chains_[kInText].pGuess;
    Found(kInText, column);
    return column;
  }

  std::uint32_t FindElsewhere(Use use, const char* name, std::size_t length);
  std::uint32_t FindOrAddAny(Use use, const char* name, std::size_t length);
  std::uint32_t FindOrAddElsewhere(Use use, const char* name, std::size_t length,
                                   JSON::Block16 start);
  bool IsBeyond(const char* name, std::size_t length) const;
  std::uint32_t Search(const char* name, std::size_t length) const;
  std::uint32_t SearchTable(const char* name, std::size_t length) const;
  std::uint32_t Add(Use use, const char* name, std::size_t length, JSON::Block16 start,
                    bool bBeyond);
  const Column& Restore(const char* name);
  void Learn(Use use, std::uint32_t nPosition);

  void PrepareToAdd();
  void Enlist(std::uint32_t nPosition) noexcept;
  void MakeRoom();
  void MakeTable(std::size_t nSlots);
  void Enter(std::uint32_t nPosition) noexcept;

  TextStore& texts_;
  std::vector<Column> vColumns_;   // by index - 1, the column's position
  std::uint32_t nCount_ = 0;       // columns that are there
  std::uint32_t nRemembered_ = 0;  // the same, and behind them those that may come again
  Chain chains_[kUses];
  bool bAscending_ = true;  // the order of addition is the order by name
  std::optional<NameHash> hash_;
  std::vector<std::uint32_t> vSlots_;   // the hash table, at most half full: indices, or 0
  std::vector<std::uint32_t> vSorted_;  // indices by name, as far as they were sorted
};

}  // namespace recordset

#endif  // QXRECORDSET_RECORDSET_COLUMNS_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What a handle of the flat interface stands for, and the one place where exceptions end.

#ifndef QXRECORDSET_RECORDSET_FLATHANDLE_H
#define QXRECORDSET_RECORDSET_FLATHANDLE_H

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "recordset/Access.h"
#include "recordset/QXRecordSet.h"
#include "recordset/RS.h"
#include "text/Block.h"

// A column index is a position in a list: hosts that go by it get an array of the names.
namespace recordset {

// Texts of cells, one behind the other with a NUL behind each. A short one is copied as a block, of
// which the next text overwrites what is too much.
class JoinedTexts {
 public:
  void Clear() { nSize_ = 0; }
  const char* Data() const { return pData_.get(); }
  std::size_t Size() const { return nSize_; }

  // Null adds an empty text.
  void Add(const Cell* pCell) {
    const std::size_t nLength = pCell != nullptr ? pCell->Length() : 0;
    constexpr std::size_t kBlock = JSON::Block16::kBytes;
    if (nRoom_ - nSize_ < nLength + kBlock) Grow(nLength + kBlock);
    char* const p = pData_.get() + nSize_;
    if (nLength == 0) {
      *p = '\0';
    } else if (nLength < kBlock) {
      JSON::Block16::Load(pCell->pText).Store(p);  // texts of a table may be read in blocks
    } else {
      std::memcpy(p, pCell->pText, nLength + 1);
    }
    nSize_ += nLength + 1;
  }

 private:
  void Grow(std::size_t nMore);

  std::unique_ptr<char[]> pData_;
  std::size_t nSize_ = 0;
  std::size_t nRoom_ = 0;
};

}  // namespace recordset

struct RS_RecordSet {
  CQXRecordSet set;
  std::vector<std::string_view> vNames;  // by index - 1; those columns that were there when asked
  recordset::JoinedTexts joined;         // of RS_GetColumnAsStrings()
  std::string strError;
  const char* szError = "";  // strError, or a constant
};

namespace recordset {

inline constexpr const char* kMemoryExhausted = "memory is exhausted";

// A function of the interface fails: with this reason, a constant.
template <typename Result>
Result Fail(RS_HANDLE handle, const char* szReason, Result result) noexcept {
  handle->szError = szReason;
  return result;
}

// What f() gives; `failed` when it throws.
template <typename Result, typename F>
Result Guarded(RS_HANDLE handle, Result failed, F f) noexcept {
  try {
    return f();
  } catch (...) {  // bad_alloc, or the length_error of a text that no memory could hold
    return Fail(handle, kMemoryExhausted, failed);
  }
}

}  // namespace recordset

#endif  // QXRECORDSET_RECORDSET_FLATHANDLE_H

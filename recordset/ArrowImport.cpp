// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Record sets in through the Arrow C data interface.

#include <cassert>
#include <climits>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <vector>

#include "recordset/FlatHandle.h"
#include "text/Bytes.h"

using recordset::Access;
using recordset::Fail;
using recordset::Guarded;

namespace {

constexpr const char* kOtherFields = "a field is neither null, boolean, integer nor text";
constexpr const char* kTooManyRows = "there are more rows than row numbers";

bool IsBitSet(const void* pBits, int64_t i) {
  const auto nByte = static_cast<const std::uint8_t*>(pBits)[i / CHAR_BIT];
  return ((nByte >> (i % CHAR_BIT)) & 1) != 0;
}

// An element of a buffer of numbers. What producers allocate is aligned, but nobody has to rely on
// it.
template <typename Number>
Number At(const void* pNumbers, int64_t i) {
  Number value;
  std::memcpy(&value, static_cast<const Number*>(pNumbers) + i, sizeof value);
  return value;
}

// Whether the metadata of a field says that its texts are record sets.
bool IsMarked(const char* pMetadata) {
  if (pMetadata == nullptr) return false;
  const auto number = [&pMetadata] {
    const auto nValue = At<std::int32_t>(pMetadata, 0);
    pMetadata += sizeof nValue;
    return nValue;
  };
  const auto word = [&] {
    const auto nLength = static_cast<std::size_t>(number());
    const std::string_view text(pMetadata, nLength);
    pMetadata += nLength;
    return text;
  };
  for (std::int32_t nPairs = number(); nPairs > 0; --nPairs) {
    const std::string_view key = word();
    const std::string_view value = word();
    if (key == "qxrecordset.type" && value == "recordset") return true;
  }
  return false;
}

// One column of an array, on its way into a column of a record set.
class Column {
 public:
  Column(CQXRecordSet& set, const ArrowSchema& field, const ArrowArray& array)
      : set_(set),
        array_(array),
        cFormat_(*field.format),
        eText_(IsMarked(field.metadata) ? CQXRecordSet::QX_RECORDSET : CQXRecordSet::QX_TEXT),
        lIndex_(set.AddColumn(field.name != nullptr ? field.name : "")) {}

  // Puts element i, counted from the array's offset, into a row.
  void Put(int64_t i, long lRow) {
    i += array_.offset;
    const void* const pValid = cFormat_ != 'n' ? array_.buffers[0] : nullptr;
    if (cFormat_ == 'n' || (pValid != nullptr && !IsBitSet(pValid, i))) {
      PutNull(lRow);
    } else if (cFormat_ == 'b') {
      Set(lRow, IsBitSet(array_.buffers[1], i) ? "1" : "0", CQXRecordSet::QX_BOOL);
    } else if (cFormat_ == 'u') {
      PutText<std::int32_t>(i, lRow);
    } else if (cFormat_ == 'U') {
      PutText<std::int64_t>(i, lRow);
    } else {
      PutNumber(i, lRow);
    }
  }

  void PutNull(long lRow) { Set(lRow, "", CQXRecordSet::QX_NULL); }

 private:
  void Set(long lRow, std::string_view text, CQXRecordSet::QX_TYPE eType) {
    Access::Set(set_, lIndex_, lRow, text, eType);
  }

  template <typename Offset>
  void PutText(int64_t i, long lRow) {
    const auto nBegin = static_cast<std::size_t>(At<Offset>(array_.buffers[1], i));
    const auto nEnd = static_cast<std::size_t>(At<Offset>(array_.buffers[1], i + 1));
    const char* const pText = static_cast<const char*>(array_.buffers[2]);
    if (nBegin == nEnd) return Set(lRow, "", eText_);
    Set(lRow, JSON::UpToNul({pText + nBegin, nEnd - nBegin}), eText_);
  }

  template <typename Integer>
  void PutInteger(int64_t i, long lRow) {
    constexpr bool bSigned = std::is_signed_v<Integer>;
    using Wide = std::conditional_t<bSigned, long long, unsigned long long>;
    const Access::Exact digits(static_cast<Wide>(At<Integer>(array_.buffers[1], i)));
    Set(lRow, digits.Text(), digits.eType);
  }

  void PutNumber(int64_t i, long lRow) {
    switch (cFormat_) {
      case 'c':
        return PutInteger<std::int8_t>(i, lRow);
      case 'C':
        return PutInteger<std::uint8_t>(i, lRow);
      case 's':
        return PutInteger<std::int16_t>(i, lRow);
      case 'S':
        return PutInteger<std::uint16_t>(i, lRow);
      case 'i':
        return PutInteger<std::int32_t>(i, lRow);
      case 'I':
        return PutInteger<std::uint32_t>(i, lRow);
      case 'l':
        return PutInteger<std::int64_t>(i, lRow);
      default:
        return PutInteger<std::uint64_t>(i, lRow);
    }
  }

  CQXRecordSet& set_;
  const ArrowArray& array_;
  const char cFormat_;
  const CQXRecordSet::QX_TYPE eText_;
  const long lIndex_;
};

bool IsKnown(const ArrowSchema& field) {
  constexpr std::string_view kFormats = "nbcCsSiIlLuU";
  return field.dictionary == nullptr && field.format[0] != '\0' && field.format[1] == '\0' &&
         kFormats.find(field.format[0]) != std::string_view::npos;
}

// Null when all fields can be taken, else why not.
const char* Refusal(const ArrowSchema& schema) {
  if (std::strcmp(schema.format, "+s") != 0) return "the data is no struct";
  for (int64_t i = 0; i < schema.n_children; ++i) {
    if (!IsKnown(*schema.children[i])) return kOtherFields;
  }
  return nullptr;
}

// REQUIRES: the schema was not refused. A struct may have an offset, which its children share, and
// nulls, which make nulls of theirs.
void Import(CQXRecordSet& set, long lRow, const ArrowSchema& schema, const ArrowArray& array) {
  assert(Refusal(schema) == nullptr);
  const void* const pValid = array.n_buffers > 0 ? array.buffers[0] : nullptr;
  std::vector<Column> vColumns;
  for (int64_t i = 0; i < schema.n_children; ++i) {
    vColumns.emplace_back(set, *schema.children[i], *array.children[i]);
  }
  for (int64_t i = 0; i < array.length; ++i) {
    const int64_t nElement = array.offset + i;
    const long lTarget = lRow + static_cast<long>(i);
    const bool bNull = pValid != nullptr && !IsBitSet(pValid, nElement);
    for (Column& column : vColumns) {
      if (bNull) {
        column.PutNull(lTarget);
      } else {
        column.Put(nElement, lTarget);
      }
    }
  }
}

int ImportRows(RS_HANDLE handle, long lRow, const ArrowSchema& schema, const ArrowArray& array) {
  const long lMost = lRow > 0 ? LONG_MAX - lRow : LONG_MAX;
  if (array.length > lMost) return Fail(handle, kTooManyRows, 0);
  return Guarded(handle, 0, [&] {
    Import(handle->set, lRow, schema, array);
    return 1;
  });
}

// What a stream says of its failure; kept, because the stream is released.
int FailAsStream(RS_HANDLE handle, ArrowArrayStream& stream) {
  const char* const szError = stream.get_last_error(&stream);
  return Guarded(handle, 0, [&] {
    handle->strError = szError != nullptr ? szError : "the stream failed";
    return Fail(handle, handle->strError.c_str(), 0);
  });
}

// Imports what is left of a stream.
int ImportBatches(RS_HANDLE handle, const ArrowSchema& schema, ArrowArrayStream& stream) {
  for (;;) {
    ArrowArray array{};
    if (stream.get_next(&stream, &array) != 0) return FailAsStream(handle, stream);
    if (array.release == nullptr) return 1;
    const int nDone = Access::RowsCount(handle->set) < LONG_MAX
                          ? ImportRows(handle, Access::RowsCount(handle->set) + 1, schema, array)
                          : Fail(handle, kTooManyRows, 0);
    array.release(&array);
    if (nDone == 0) return 0;
  }
}

}  // namespace

int RS_ImportRows(RS_HANDLE handle, long row, const struct ArrowSchema* schema,
                  const struct ArrowArray* array) {
  const char* const szRefusal = Refusal(*schema);
  if (szRefusal != nullptr) return Fail(handle, szRefusal, 0);
  return ImportRows(handle, row, *schema, *array);
}

int RS_ImportStream(RS_HANDLE handle, struct ArrowArrayStream* stream) {
  if (stream->release == nullptr) return Fail(handle, "the stream is released", 0);
  ArrowSchema schema{};
  int nDone = 0;
  if (stream->get_schema(stream, &schema) != 0) {
    nDone = FailAsStream(handle, *stream);
  } else {
    const char* const szRefusal = Refusal(schema);
    nDone =
        szRefusal != nullptr ? Fail(handle, szRefusal, 0) : ImportBatches(handle, schema, *stream);
    schema.release(&schema);
  }
  stream->release(stream);
  return nDone;
}

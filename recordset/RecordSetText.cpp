// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Writing a record set as JSON text: GetString().

#include <algorithm>
#include <string>
#include <utility>

#include "memory/KeptBlocks.h"
#include "memory/Spare.h"
#include "recordset/QXRecordSet.h"
#include "recordset/RowWriter.h"
#include "recordset/Table.h"

using recordset::RowWriter;
using recordset::Table;

namespace {

constexpr std::size_t kTextBytes = 1024;  // reserved for a text

}  // namespace

// The memory of the last text, which the next one needs again, or an estimate of what a first text
// needs. A kept buffer is as long as the text that it held, so that it is not filled before it is
// written.
std::string CQXRecordSet::BufferForText() {
  std::string buffer = std::move(strText);
  strText.clear();
  if (buffer.capacity() < kTextBytes && pTable != nullptr) buffer.swap(pTable->strSpare);
  if (buffer.capacity() < kTextBytes) {
    const std::size_t nTable = pTable != nullptr ? pTable->Footprint() : 0;
    const std::size_t nEstimate = std::clamp(nTable - nTable / 4, kTextBytes, buffer.max_size());
    memory::WithSpare(kTextBytes, nEstimate - kTextBytes, [&buffer](std::size_t nRoom) {
      memory::KeptBlocks::TakeText(buffer, nRoom);
      buffer.reserve(nRoom);
    });
  }
  return buffer;
}

const std::string& CQXRecordSet::GetString() {
  if (!bModified) return strText;
  Table& table = EnsureTable();
  if (table.bTextIsCurrent) return strText;
  RowWriter writer(table, BufferForText());
  if (lRowsCount <= 0) {
    writer.Raw("{}");
  } else if (lRowsCount == 1) {
    writer.Row(1);
  } else {
    writer.Raw("{\"rows\":[");
    for (long i = 0; i < lRowsCount; ++i) {
      if (i != 0) writer.Byte(',');
      writer.Row(i + 1);
    }
    writer.Raw("]}");
  }
  strText = std::move(writer).Finish();
  table.bTextIsCurrent = true;
  return strText;
}

const std::string& CQXRecordSet::GetStringRef() const { return strText; }

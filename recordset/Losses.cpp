// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Counting what cells lose.

#include "recordset/Losses.h"

#include <charconv>
#include <cstring>
#include <system_error>
#include <utility>
#include <vector>

#include "json/JSONMessage.h"
#include "recordset/Table.h"

namespace recordset {
namespace {

bool IsBeyondLong(std::string_view digits) {
  if (!digits.empty() && digits.front() == '+') digits.remove_prefix(1);
  long value = 0;
  return std::from_chars(digits.data(), digits.data() + digits.size(), value).ec ==
         std::errc::result_out_of_range;
}

bool HoldsNul(std::string_view text) {
  return !text.empty() && std::memchr(text.data(), '\0', text.size()) != nullptr;
}

}  // namespace

void LossCounter::NoteCell(long lRow, std::uint32_t nColumn) {
  if (result_.nLossyCells++ != 0) return;
  result_.lFirstRow = lRow;
  result_.lFirstColumn = static_cast<long>(nColumn);
}

void LossCounter::Count(std::size_t& nValues, long lRow, std::uint32_t nColumn) {
  ++nValues;
  NoteCell(lRow, nColumn);
}

void LossCounter::Text(long lRow, std::uint32_t nColumn, std::string_view text) {
  if (HoldsNul(text)) Count(result_.nCut, lRow, nColumn);
}

void LossCounter::Integer(long lRow, std::uint32_t nColumn, std::string_view digits) {
  if (IsBeyondLong(digits)) Count(result_.nLimited, lRow, nColumn);
}

void LossCounter::Real(long lRow, std::uint32_t nColumn) { Count(result_.nReals, lRow, nColumn); }

void LossCounter::Array(long lRow, std::uint32_t nColumn) { Count(result_.nArrays, lRow, nColumn); }

void LossCounter::CountMember(const JSON::JSONValue& value) {
  const std::string_view text(value.pText != nullptr ? value.pText : "",
                              static_cast<std::size_t>(value.nLength));
  switch (value.eType) {
    case JSON::jtString:
      result_.nCut += HoldsNul(text) ? 1 : 0;
      break;
    case JSON::jtInteger:
      result_.nLimited += IsBeyondLong(text) ? 1 : 0;
      break;
    case JSON::jtDouble:
      ++result_.nReals;
      break;
    case JSON::jtArray:
      ++result_.nArrays;
      break;
    default:
      break;
  }
}

// Objects within objects wait on a stack of their own, so that no nesting is too deep.
void LossCounter::Object(long lRow, std::uint32_t nColumn, std::string_view text) {
  JSON::Message message;
  message.Parse(text.data(), static_cast<int>(text.size()));
  const auto count = [this] {
    return result_.nCut + result_.nLimited + result_.nReals + result_.nArrays;
  };
  const std::size_t nBefore = count();
  std::vector<const JSON::JSONValue*> vWaiting{&message};
  while (!vWaiting.empty()) {
    const JSON::JSONValue& object = *vWaiting.back();
    vWaiting.pop_back();
    for (int i = 0; i < object.Size(); ++i) {
      const JSON::JSONValue& member = std::as_const(object)[i];
      if (member.eType == JSON::jtObject) vWaiting.push_back(&member);
      CountMember(member);
    }
  }
  if (count() != nBefore) NoteCell(lRow, nColumn);
}

void LossCounter::Restart() { result_ = LoadResult(); }

void LossCounter::Moved(const Table& from, const Table& to) {
  if (result_.nLossyCells == 0) return;
  const Column* pColumn = from.columns.First();
  for (long i = 1; i < result_.lFirstColumn; ++i) {
    pColumn = pColumn->pBehind;
  }
  result_.lFirstColumn = static_cast<long>(to.columns.Find(pColumn->Name())->Index());
}

bool LossCounter::Refuse(std::ptrdiff_t nStop, JSON::Fault fault) {
  const JSON::Explanation why = JSON::Explain(text_, static_cast<std::size_t>(nStop), fault);
  const JSON::LineAndColumn place = JSON::Locate(text_, why.nOffset);
  result_ = LoadResult();
  result_.error = {why.nOffset, place.nLine, place.nColumn, why.szReason};
  return false;
}

}  // namespace recordset

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Message::Parse, and what it leaves for Error() when it gives false.

#include "json/Refusal.h"

#include <cstring>
#include <functional>
#include <string_view>

#include "json/JSONMessage.h"

namespace JSON {

static_assert(kMaxNesting == 1024, "text/Fault.cpp names it");

bool Message::Parse(const char* text, int length) {
  // A text that is the message's own is rewritten, as one that is parsed in place.
  const std::less_equal<> isUpTo;
  const bool bRewritten =
      bInPlace || (isUpTo(strText.data(), text) && isUpTo(text, strText.data() + strText.size()));
  error = ParseError();
  Refusal refusal;
  if (ParseText(text, length, refusal)) return true;
  const bool bRead = refusal.fault != Fault::kNoText && refusal.fault != Fault::kTooLong;
  const bool bOriginal = !bRewritten || (bInPlace && refusal.fault == Fault::kDocument);
  if (!bRead) {
    NoteError({}, refusal, true);
  } else if (!bOriginal) {
    NoteError({pStart, static_cast<std::size_t>(pEnd - pStart)}, refusal, false);
  } else {
    NoteError({text, length > 0 ? static_cast<std::size_t>(length) : std::strlen(text)}, refusal,
              true);
  }
  return false;
}

void Message::NoteError(std::string_view text, const Refusal& refusal, bool bOriginal) noexcept {
  const Explanation why = Explain(text, refusal.nStop, refusal.fault);
  error.nOffset = why.nOffset;
  error.szReason = why.szReason;
  if (!bOriginal) return;
  const LineAndColumn place = Locate(text, why.nOffset);
  error.nLine = place.nLine;
  error.nColumn = place.nColumn;
}

}  // namespace JSON

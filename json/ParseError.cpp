// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What a parse that fails leaves for Message::Error().

#include <string_view>

#include "json/JSONMessage.h"
#include "text/Fault.h"

namespace JSON {

static_assert(kMaxNesting == 1024, "text/Fault.cpp names it");

// Line and column are told where `text` is as it was.
void Message::NoteError(std::string_view text, std::size_t nStop, Fault fault,
                        bool bOriginal) noexcept {
  const Explanation why = Explain(text, nStop, fault);
  error.nOffset = why.nOffset;
  error.szReason = why.szReason;
  if (bOriginal) LocateError(text);
}

// The tree could not be read beyond the cursor.
void Message::NoteTreeError(Fault fault) noexcept {
  NoteError({pStart, static_cast<std::size_t>(pEnd - pStart)},
            static_cast<std::size_t>(pCursor - pStart), fault, false);
}

void Message::LocateError(std::string_view text) noexcept {
  const LineAndColumn place = Locate(text, error.nOffset);
  error.nLine = place.nLine;
  error.nColumn = place.nColumn;
}

}  // namespace JSON

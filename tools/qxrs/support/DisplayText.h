// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Texts as a terminal shows them: how many columns they take, and how to show one that could move
// the cursor, hide itself or is no UTF-8. Works in the character set of the process, which main()
// sets to UTF-8.

#ifndef QXRECORDSET_TOOLS_SUPPORT_DISPLAYTEXT_H
#define QXRECORDSET_TOOLS_SUPPORT_DISPLAYTEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace qxrs {

struct DisplayText {
  std::string strText;
  std::size_t nWidth = 0;  // columns
};

// `strText` on one line. Control characters and bytes that are no UTF-8 become \t, \n, \r or \x1b;
// everything else, the backslash included, stands for itself.
DisplayText MakeDisplayText(std::string_view strText);

// `strText` made like that line by line; its line feeds stay.
std::string PrintableLines(std::string_view strText);

// `text` in at most `nWidth` columns: what does not fit is replaced by an ellipsis.
DisplayText Shortened(const DisplayText& text, std::size_t nWidth);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_DISPLAYTEXT_H

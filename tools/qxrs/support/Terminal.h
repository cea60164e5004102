// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What the tool needs to know about the terminal: whether there is one, how wide it is, and whether
// to write colours.

#ifndef QXRECORDSET_TOOLS_SUPPORT_TERMINAL_H
#define QXRECORDSET_TOOLS_SUPPORT_TERMINAL_H

#include <string>
#include <string_view>

namespace qxrs {

enum class When { Auto, Always, Never };

bool IsTerminal(int nFile);

// Columns of the terminal behind `nFile`; 80 when it does not tell.
unsigned TerminalWidth(int nFile);

// Whether to colour what goes to `nFile`. Auto colours a terminal, unless the environment variable
// NO_COLOR is set and not empty or TERM is "dumb".
bool UseColor(When eColor, int nFile);

// `strText` between the escape sequences of a style, or as it is without colour.
enum class Style { Bold, Red, Green };
std::string Styled(std::string_view strText, Style eStyle, bool bColor);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_TERMINAL_H

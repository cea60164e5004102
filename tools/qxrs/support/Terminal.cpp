// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Asking the terminal.

#include "tools/qxrs/support/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

namespace qxrs {

namespace {

constexpr unsigned kUsualWidth = 80;  // columns, when the terminal does not tell

bool IsSet(const char* szVariable, std::string_view strValue) {
  const char* szText = std::getenv(szVariable);
  return szText && strValue == szText;
}

const char* Code(Style eStyle) {
  switch (eStyle) {
    case Style::Bold:
      return "\x1b[1m";
    case Style::Red:
      return "\x1b[31m";
    case Style::Green:
      return "\x1b[32m";
  }
  return "";
}

}  // namespace

bool IsTerminal(int nFile) { return isatty(nFile) == 1; }

unsigned TerminalWidth(int nFile) {
  winsize size{};
  if (ioctl(nFile, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualWidth;
  return size.ws_col;
}

bool UseColor(When eColor, int nFile) {
  if (eColor != When::Auto) return eColor == When::Always;
  const char* szNoColor = std::getenv("NO_COLOR");
  return !(szNoColor && *szNoColor) && !IsSet("TERM", "dumb") && IsTerminal(nFile);
}

std::string Styled(std::string_view strText, Style eStyle, bool bColor) {
  if (!bColor) return std::string(strText);
  return Code(eStyle) + std::string(strText) + "\x1b[0m";
}

}  // namespace qxrs

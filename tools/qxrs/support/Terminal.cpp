// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Asking the terminal; measuring and cutting texts for it; drawing the progress bar.

#include "tools/qxrs/support/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cwchar>

namespace qxrs {

namespace {

constexpr unsigned kUsualWidth = 80;  // columns, when the terminal does not tell

}  // namespace

bool IsTerminal(int nFile) { return isatty(nFile) == 1; }

unsigned TerminalWidth(int nFile) {
  winsize size{};
  if (ioctl(nFile, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualWidth;
  return size.ws_col;
}

bool UseColor(When eColor, int nFile) {
  if (eColor != When::Auto) return eColor == When::Always;
  const auto Variable = [](const char* szName) {
    const char* const szText = std::getenv(szName);
    return std::string_view(szText ? szText : "");
  };
  return Variable("NO_COLOR").empty() && Variable("TERM") != "dumb" && IsTerminal(nFile);
}

std::string Styled(std::string_view strText, Style eStyle, bool bColor) {
  if (!bColor) return std::string(strText);
  constexpr const char* kCodes[] = {"\x1b[1m", "\x1b[31m", "\x1b[32m"};
  return kCodes[static_cast<int>(eStyle)] + std::string(strText) + "\x1b[0m";
}

// ---- Texts --------------------------------------------------------------------------------------

namespace {

constexpr std::string_view kEllipsis = "\u2026";

// One character of a text: its bytes, and its columns or -1 when it cannot be shown.
struct Character {
  std::size_t nBytes;
  int nWidth;
};

// The characters that turn the direction of what follows: a cell could reorder its whole line.
bool IsDirection(wchar_t wide) {
  return wide == 0x061C || wide == 0x200E || wide == 0x200F || (wide >= 0x202A && wide <= 0x202E) ||
         (wide >= 0x2066 && wide <= 0x2069);
}

Character NextCharacter(std::string_view strText) {
  const char c = strText.front();
  if (c >= 0x20 && c < 0x7f) {
    return {1, 1};
  }
  wchar_t wide = 0;
  std::mbstate_t state{};
  const std::size_t nBytes = std::mbrtowc(&wide, strText.data(), strText.size(), &state);
  // 0 is a NUL; above the text's length come the two codes for broken and cut-off sequences.
  if (nBytes == 0 || nBytes > strText.size()) {
    return {1, -1};
  }
  return {nBytes, IsDirection(wide) ? -1 : wcwidth(wide)};
}

std::string Escaped(std::string_view strBytes) {
  std::string strResult;
  for (const char c : strBytes) {
    char szText[8];
    std::snprintf(szText, sizeof szText, "\\x%02x", static_cast<unsigned char>(c));
    strResult += c == '\t' ? "\\t" : c == '\n' ? "\\n" : c == '\r' ? "\\r" : szText;
  }
  return strResult;
}

}  // namespace

DisplayText MakeDisplayText(std::string_view strText) {
  DisplayText result;
  while (!strText.empty()) {
    const Character character = NextCharacter(strText);
    const std::string_view strBytes = strText.substr(0, character.nBytes);
    if (character.nWidth >= 0) {
      result.strText += strBytes;
      result.nWidth += static_cast<std::size_t>(character.nWidth);
    } else {
      const std::string strEscaped = Escaped(strBytes);
      result.strText += strEscaped;
      result.nWidth += strEscaped.size();
    }
    strText.remove_prefix(character.nBytes);
  }
  return result;
}

std::string PrintableLines(std::string_view strText) {
  std::string strResult;
  while (true) {
    const std::size_t nEnd = strText.find('\n');
    strResult += MakeDisplayText(strText.substr(0, nEnd)).strText;
    if (nEnd == std::string_view::npos) return strResult;
    strResult += '\n';
    strText.remove_prefix(nEnd + 1);
  }
}

DisplayText Shortened(const DisplayText& text, std::size_t nWidth) {
  if (text.nWidth <= nWidth || nWidth == 0) return text;
  DisplayText result;
  std::string_view strRest = text.strText;
  while (!strRest.empty()) {
    const Character character = NextCharacter(strRest);
    const auto nColumns = static_cast<std::size_t>(character.nWidth);
    if (result.nWidth + nColumns > nWidth - 1) break;
    result.strText += strRest.substr(0, character.nBytes);
    result.nWidth += nColumns;
    strRest.remove_prefix(character.nBytes);
  }
  result.strText += kEllipsis;
  ++result.nWidth;
  return result;
}

// ---- Progress -----------------------------------------------------------------------------------

namespace {

constexpr std::chrono::milliseconds kPatience(500);  // shorter work shows no bar
constexpr std::chrono::milliseconds kInterval(100);  // between two drawings

// Rows come one at a time; looking at the clock for each would cost more than the row.
constexpr unsigned kRowsPerLook = 256;

constexpr unsigned kBarWidth = 40;  // columns

std::string Amount(unsigned long long nAmount, Progress::Unit eUnit) {
  if (eUnit == Progress::Unit::Rows) return std::to_string(nAmount) + " rows";
  char szText[40];
  std::snprintf(szText, sizeof szText, "%.1f MB", static_cast<double>(nAmount) / 1e6);
  return szText;
}

std::string Bar(unsigned long long nDone, unsigned long long nTotal) {
  const double fShare = std::min(1.0, static_cast<double>(nDone) / static_cast<double>(nTotal));
  const auto nFilled = static_cast<unsigned>(fShare * kBarWidth);
  return "[" + std::string(nFilled, '#') + std::string(kBarWidth - nFilled, ' ') + "] " +
         std::to_string(static_cast<int>(fShare * 100)) + " %  ";
}

void WriteToStandardError(const std::string& strText) {
  // A bar that cannot be drawn is no reason to fail.
  [[maybe_unused]] const auto nWritten = write(STDERR_FILENO, strText.data(), strText.size());
}

}  // namespace

Progress::Progress(When eShow, Unit eCounted)
    : bShow(eShow == When::Always || (eShow == When::Auto && IsTerminal(STDERR_FILENO))),
      eUnit(eCounted),
      timeNext(Clock::now() + (eShow == When::Always ? kPatience * 0 : kPatience)) {}

Progress::~Progress() { Stop(); }

void Progress::SetTotal(unsigned long long nAmount) { nTotal = nAmount; }

void Progress::Add(unsigned long long nAmount) {
  nDone += nAmount;
  if (!bShow || (eUnit == Unit::Rows && nSteps++ % kRowsPerLook != 0)) return;
  const auto timeNow = Clock::now();
  if (timeNow >= timeNext) {
    timeNext = timeNow + kInterval;
    Draw();
  }
}

void Progress::Draw() {
  const std::string strBar = nTotal == 0 ? std::string() : Bar(nDone, nTotal);
  WriteToStandardError("\r" + strBar + Amount(nDone, eUnit) + "\x1b[K");
  bDrawn = true;
}

void Progress::Stop() {
  bShow = false;
  if (bDrawn) {
    WriteToStandardError("\r\x1b[K");
    bDrawn = false;
  }
}

}  // namespace qxrs

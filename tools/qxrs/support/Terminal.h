// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The terminal: whether there is one, how wide it is, whether to write colours; and texts as it
// shows them: how many columns they take, and how to show one that could move the cursor, hide
// itself or is no UTF-8. Works in the character set of the process, which main() sets to UTF-8.

#ifndef QXRECORDSET_TOOLS_SUPPORT_TERMINAL_H
#define QXRECORDSET_TOOLS_SUPPORT_TERMINAL_H

#include <chrono>
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

// ---- Texts --------------------------------------------------------------------------------------

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

// ---- Progress -----------------------------------------------------------------------------------

// The progress bar on standard error. It shows up only when the work takes noticeably long and
// standard error is a terminal, and it wipes itself away.
class Progress {
 public:
  enum class Unit { Bytes, Rows };

  // Always shows the bar from the first step on, terminal or not.
  explicit Progress(When eShow, Unit eCounted = Unit::Bytes);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  // How much there will be; 0, the default: unknown.
  void SetTotal(unsigned long long nAmount);

  // `nAmount` more is done.
  void Add(unsigned long long nAmount);

  // Wipes the bar and shows none any more, so that a result can be written to the terminal.
  void Stop();

 private:
  using Clock = std::chrono::steady_clock;

  void Draw();

  bool bShow;
  bool bDrawn = false;
  Unit eUnit;
  unsigned long long nTotal = 0;
  unsigned long long nDone = 0;
  unsigned nSteps = 0;  // calls of Add
  Clock::time_point timeNext;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_TERMINAL_H

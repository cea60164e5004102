// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What goes wrong: the two ways a command of qxrs ends early, how a message names a place in a
// text, and losses, which are counted. A message is one line without the program's name.

#ifndef QXRECORDSET_TOOLS_SUPPORT_ERRORS_H
#define QXRECORDSET_TOOLS_SUPPORT_ERRORS_H

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace qxrs {

// Exit statuses, also named in every --help.
constexpr int kExitDone = 0;
constexpr int kExitFailed = 1;  // bad input, or a file that cannot be read or written
constexpr int kExitUsage = 2;   // wrong command line

// The input, or a file, is at fault.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The command line is at fault in a way the option parser cannot see.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A place in a text as people count: lines and columns from 1, columns in bytes.
struct TextPosition {
  std::size_t nLine = 1;
  std::size_t nColumn = 1;

  // Moves behind `strText`. Lines end with a line feed.
  void Advance(std::string_view strText) {
    const std::size_t nBreak = strText.rfind('\n');
    nColumn = nBreak == std::string_view::npos ? nColumn + strText.size() : strText.size() - nBreak;
    nLine += static_cast<std::size_t>(std::count(strText.begin(), strText.end(), '\n'));
  }
};

// "planets.csv: line 3, column 5: reason", the form of every complaint about a place in a text.
inline InputError Complaint(const std::string& strName, const TextPosition& position,
                            const std::string& strReason) {
  return InputError(strName + ": line " + std::to_string(position.nLine) + ", column " +
                    std::to_string(position.nColumn) + ": " + strReason);
}

// What a target cannot hold, or would change. Each kind of loss is one line on standard error in
// the end, with a count and the first place; with --strict the first one is an error.
class Warnings {
 public:
  explicit Warnings(bool bStrictly) : bStrict(bStrictly) {}

  // Counts a loss, or several, of which the first is in row `nRow`, from 1; 0 is none, and so is an
  // empty column. Throws InputError when losses are errors.
  void Add(std::string_view strReason, unsigned long long nRow = 0, std::string_view strColumn = {},
           unsigned long long nCount = 1);

  // Writes the lines.
  void Report() const;

 private:
  struct Loss {
    std::string strReason;
    std::string strFirst;  // the first place
    unsigned long long nCount;
  };

  const bool bStrict;
  std::vector<Loss> vLosses;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_ERRORS_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The two ways a command of qxrs ends early. The message is one line without the program's name.

#ifndef QXRECORDSET_TOOLS_SUPPORT_ERRORS_H
#define QXRECORDSET_TOOLS_SUPPORT_ERRORS_H

#include <stdexcept>

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

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_ERRORS_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The progress bar on standard error. It shows up only when the work takes noticeably long and
// standard error is a terminal, and it wipes itself away.

#ifndef QXRECORDSET_TOOLS_SUPPORT_PROGRESS_H
#define QXRECORDSET_TOOLS_SUPPORT_PROGRESS_H

#include <chrono>

#include "tools/qxrs/support/Terminal.h"

namespace qxrs {

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

#endif  // QXRECORDSET_TOOLS_SUPPORT_PROGRESS_H

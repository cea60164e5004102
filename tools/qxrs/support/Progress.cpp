// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Drawing the progress bar.

#include "tools/qxrs/support/Progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

namespace qxrs {

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

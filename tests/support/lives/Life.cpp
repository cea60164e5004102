// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The diary, and the world of a life.

#include "tests/support/lives/Life.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>

namespace Support {

void Diary::Begin(const std::string& strTitle) {
  std::snprintf(szTitle, sizeof szTitle, "%s\n", strTitle.c_str());
}

void Diary::Note(const char* szLife, int nLife, const char* szStep) {
  char* const szLine = szLines[nNotes++ % kLines];
  std::snprintf(szLine, sizeof szLines[0], "  %s %d: %s\n", szLife, nLife, szStep);
}

void Diary::Print() const {
  for (std::size_t i = 0; i <= kLines; ++i) {
    const char* const szLine = i == 0 ? szTitle : szLines[(nNotes + i - 1) % kLines];
    if (write(STDERR_FILENO, szLine, std::strlen(szLine)) < 0) return;
  }
}

std::string Diary::Text() const {
  std::string strText = "step " + std::to_string(nNotes) + " of " + szTitle;
  for (std::size_t i = 0; i < kLines; ++i)
    strText += szLines[(nNotes + i) % kLines];
  return strText;
}

std::size_t World::Size() {
  const std::uint32_t n = random.Below(1000);
  const std::size_t nSize = n < 150   ? 0
                            : n < 300 ? 1
                            : n < 800 ? 2 + random.Below(9)
                            : n < 950 ? 700 + random.Below(600)
                            : n < 990 ? 9000 + random.Below(3000)
                                      : 100000;
  return nSize <= nMost ? nSize : random.Below(nMost);
}

char* World::Keep(const std::string& text) {
  const CountedMemory::Aside aside;
  return vTexts.emplace_back(text).data();
}

bool World::LeavesOut(const char* szStep) const {
  return !strWithout.empty() &&
         strWithout.find(';' + std::string(szStep) + ';') != std::string::npos;
}

}  // namespace Support

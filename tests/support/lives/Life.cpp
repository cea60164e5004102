// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The diary, and the world of a life.

#include "tests/support/lives/Life.h"

#include <cstdio>
#include <cstdlib>

namespace Support {

void Diary::Note(const char* szLife, int nLife, const char* szStep) {
  static const bool bTrace = std::getenv("QXRECORDSET_LIVES_TRACE") != nullptr;
  const CountedMemory::Aside aside;
  std::string& strLine = vLines[nNotes++ % vLines.size()];
  strLine = std::string("  ") + szLife + ' ' + std::to_string(nLife) + ": " + szStep + '\n';
  if (bTrace) std::fprintf(stderr, "%s:%s", strTitle.c_str(), strLine.c_str());
}

std::string Diary::Text() const {
  std::string strText = "step " + std::to_string(nNotes) + " of " + strTitle + '\n';
  for (std::size_t i = 0; i < vLines.size(); ++i)
    strText += vLines[(nNotes + i) % vLines.size()];
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

}  // namespace Support

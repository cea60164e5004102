// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading lines.

#include "tools/qxrs/rows/LineReader.h"

#include "tools/qxrs/support/Document.h"
#include "tools/qxrs/support/Errors.h"
#include "tools/qxrs/support/TextPosition.h"

namespace qxrs {

bool LineReader::Next(std::string_view& strLine) {
  std::size_t nSearched = nNext;
  std::size_t nEnd = std::string::npos;
  while ((nEnd = strBuffer.find('\n', nSearched)) == std::string::npos) {
    const std::size_t nUnfinished = strBuffer.size() - nNext;
    if (!Fill()) {
      break;
    }
    nSearched = nUnfinished;
  }
  if (nLine++ == 0 && strBuffer.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0) {
    nNext = kByteOrderMark.size();
  }
  const std::size_t nBehind = nEnd == std::string::npos ? strBuffer.size() : nEnd + 1;
  strLine = std::string_view(strBuffer).substr(nNext, nBehind - nNext);
  nNext = nBehind;
  return !strLine.empty();
}

// Reads more behind what is not used yet, which moves to the front.
bool LineReader::Fill() {
  strBuffer.erase(0, nNext);
  nNext = 0;
  return input.Read(strBuffer);
}

void LineReader::Refuse(std::size_t nOffset, const std::string& strReason) const {
  throw InputError(Complaint(input.Name(), TextPosition{nLine, nOffset + 1}, strReason));
}

void LineReader::RefuseLine(unsigned long long nWhere, const std::string& strReason) const {
  throw InputError(input.Name() + ": line " + std::to_string(nWhere) + ": " + strReason);
}

}  // namespace qxrs

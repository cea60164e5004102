// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The streaming writer's rules once more: calls written down as data, and a writer that keeps the
// open containers on a plain stack. Tests hold JSON::Serialize against it.

#ifndef QXRECORDSET_TESTS_SUPPORT_PLAINWRITER_H
#define QXRECORDSET_TESTS_SUPPORT_PLAINWRITER_H

#include <cstddef>
#include <string>
#include <vector>

#include "tests/support/PlainEscape.h"

namespace Plain {

// One call of the writer. The first character says which one:
//
//   { } [ ]   OO, OC, AO, AC      Ntext   N(const char*)      Vtext   V(const char*)
//   Jtext     JS                  Atext   AppendString        ~       V(nullptr)
struct Call {
  char cCall;
  std::string strText;
};

// The rules of the writer, over a stack of open containers.
class Writer {
 public:
  bool Allowed(char cCall) const {
    if (bError) return false;
    if (cCall == '{' || cCall == '[') return !NameDue();
    if (cCall == '}' || cCall == 'N') return NameDue();
    if (cCall == ']') return !vOpen.empty() && !vOpen.back().bObject;
    return !vOpen.empty() && !NameDue();
  }

  void Apply(const Call& call) {
    const char c = call.cCall;
    if (!Allowed(c)) bError = true;
    if (bError) return;
    if (c == '}' || c == ']') {
      strText += c;
      vOpen.pop_back();
      return;
    }
    if (!bValueOwed && !vOpen.empty() && vOpen.back().nEntries++ != 0) strText += ',';
    bValueOwed = c == 'N';
    if (c == '{' || c == '[') {
      strText += c;
      vOpen.push_back({c == '{', 0});
    } else if (c == 'N' || c == 'V') {
      strText += '"' + Plain::Escape(call.strText) + (c == 'N' ? "\":" : "\"");
    } else {
      strText += c == '~' || (c == 'J' && call.strText.empty()) ? "null" : call.strText;
    }
  }

  const std::string& String() const {
    static const std::string strNone;
    return bError || !vOpen.empty() ? strNone : strText;
  }
  const std::string& Written() const { return strText; }
  bool Failed() const { return bError; }
  std::size_t Depth() const { return bError ? 0 : vOpen.size(); }

 private:
  struct Level {
    bool bObject;
    int nEntries;  // members or elements begun
  };

  bool NameDue() const { return !vOpen.empty() && vOpen.back().bObject && !bValueOwed; }

  std::string strText;
  std::vector<Level> vOpen;
  bool bValueOwed = false;
  bool bError = false;
};

}  // namespace Plain

#endif  // QXRECORDSET_TESTS_SUPPORT_PLAINWRITER_H

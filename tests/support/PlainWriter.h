// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The streaming writer's rules once more: calls written down as data, and a writer that keeps the
// open containers on a plain stack. Tests hold JSON::Serialize against it.

#ifndef QXRECORDSET_TESTS_SUPPORT_PLAINWRITER_H
#define QXRECORDSET_TESTS_SUPPORT_PLAINWRITER_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "json/JSONSerialize.h"
#include "tests/support/PlainEscape.h"
#include "tests/support/Random.h"

namespace Plain {

// One call of the writer. The first character says which one:
//
//   { } [ ]   OO, OC, AO, AC      Ntext   N(const char*)      Vtext   V(const char*)
//   Jtext     JS_N                Atext   AppendString        ~       V(nullptr)
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

// The call, made of the library's writer.
inline void Apply(JSON::Serialize& writer, const Call& call) {
  const std::string& text = call.strText;
  if (call.cCall == '{') writer.OO();
  if (call.cCall == '}') writer.OC();
  if (call.cCall == '[') writer.AO();
  if (call.cCall == ']') writer.AC();
  if (call.cCall == 'N') writer.N(text.c_str());
  if (call.cCall == 'V') writer.V(text.c_str());
  if (call.cCall == 'J') writer.JS_N((text + "rest").c_str(), static_cast<int>(text.size()));
  if (call.cCall == 'A') writer.AppendString(text.c_str());
  if (call.cCall == '~') writer.V(nullptr);
}

// A call that is in order, for the most part, with any text or digits.
inline Call SomeCall(Support::Random& random, const Writer& model) {
  constexpr std::string_view kCalls = "{[{[{[}]NVVJA~";
  char c = random.Of(kCalls);
  while (!model.Allowed(c) && !model.Failed() && !random.OneIn(2000))
    c = random.Of(kCalls);
  if (c != 'N' && c != 'V') return {c, std::string(1 + random.Below(17), '1')};
  std::string strText(random.OneIn(20) ? random.Below(1300) : random.Below(20), ' ');
  for (char& byte : strText)
    byte = static_cast<char>(random.Below(256));
  return {c, strText};
}

// The call that ends the innermost container, or makes its end possible.
inline Call Closing(const Writer& model) {
  return {model.Allowed('}') ? '}' : model.Allowed(']') ? ']' : '~', ""};
}

}  // namespace Plain

#endif  // QXRECORDSET_TESTS_SUPPORT_PLAINWRITER_H

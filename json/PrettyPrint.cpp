// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The pretty printer. It knows brackets and commas and nothing else, so it needs no parser and
// takes any text; what lies between them is copied in one piece.

#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "json/JSON.h"

namespace {

// The bytes at which copying in one piece ends: brackets, commas and the NUL behind the text.
constexpr std::array<bool, 256> MakeStopTable() {
  std::array<bool, 256> table{};
  for (const char c : {'{', '}', '[', ']', ',', '\0'}) {
    table[static_cast<unsigned char>(c)] = true;
  }
  return table;
}
constexpr std::array<bool, 256> kStops = MakeStopTable();

class PrettyPrinter {
 public:
  explicit PrettyPrinter(std::size_t nExpected) { strOutput.reserve(nExpected); }

  std::string Print(const char* p) {
    for (;;) {
      const char* const pRun = p;
      while (!kStops[static_cast<unsigned char>(*p)]) {  // the NUL is a stop
        ++p;
      }
      strOutput.append(pRun, p);
      switch (*p) {
        case '\0':
          return std::move(strOutput);
        case ',':
          Comma();
          break;
        case '[':
        case '{':
          Open(*p);
          break;
        default:
          Close(*p);
      }
      ++p;
    }
  }

 private:
  void Open(char cBracket) {
    BreakLine();
    strOutput += cBracket;
    ++nDepth;
    vIsArray.push_back(cBracket == '[');
    BreakLine();
  }

  // More brackets may close than were opened: the depth then counts on below zero.
  void Close(char cBracket) {
    --nDepth;
    if (!vIsArray.empty()) vIsArray.pop_back();
    BreakLine();
    strOutput += cBracket;
  }

  void Comma() {
    strOutput += ',';
    if (vIsArray.empty() || !vIsArray.back()) BreakLine();
  }

  void BreakLine() {
    strOutput += '\n';
    if (nDepth > 0) strOutput.append(static_cast<std::size_t>(nDepth), '\t');
  }

  std::string strOutput;
  std::ptrdiff_t nDepth = 0;   // opened minus closed brackets
  std::vector<bool> vIsArray;  // for each open bracket, whether it is '['
};

}  // namespace

// The result is built apart from `output`, in which the text may lie.
std::string& JSON_PrettyPrint(char const* text, std::string& output) {
  output = PrettyPrinter(std::strlen(text)).Print(text);
  return output;
}

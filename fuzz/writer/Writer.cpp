// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The streaming writer. Input: choices of calls, in order for the most part. After each call the
// text must be the plain writer's; in the end, with all that is open closed, it is valid JSON or,
// after a call out of order, empty. A foreign library is the judge of what is valid.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>

#include "fuzz/common/Fuzz.h"
#include "tests/support/PlainWriter.h"
#include "tests/support/Random.h"

namespace {

constexpr std::string_view kRawTexts[] = {"null", "[1,{\"a\":[]}]", "{}", "-1.5e3", "\"\\u0041\""};

class Session {
 public:
  explicit Session(std::string_view input)
      : random(input), writer(static_cast<int>(random.Below(3)) * 64) {}

  void Run() {
    while (!random.UsedUp()) {
      if (random.OneIn(64)) writer = JSON::Serialize(writer);
      Step(Choose());
    }
    while (plain.Depth() != 0)
      Step(plain.Allowed('}') ? '}' : plain.Allowed(']') ? ']' : '~');
    const std::string& text = writer.String();
    Fuzz::Expect(text.empty() == (plain.Failed() || nTopLevel == 0), "the text is there");
    if (nTopLevel == 1 && !text.empty()) {
      Fuzz::Expect(nlohmann::json::accept(WithoutUtf8(text)), "the text is valid JSON");
    }
  }

 private:
  // The next call that is in order, from a random one on; now and then that one, whatever comes.
  char Choose() {
    constexpr std::string_view kCalls = "{[Nn~VvJjAilLuUd}]";
    std::size_t n = random.Below(kCalls.size());
    while (!random.OneIn(256) && !plain.Allowed(Kind(kCalls[n])) && !plain.Failed())
      n = (n + 1) % kCalls.size();
    return kCalls[n];
  }

  // What the plain writer calls it: all numbers and raw texts are texts to it.
  static char Kind(char c) {
    if (c == 'v' || c == 'n') return c == 'v' ? 'V' : 'N';
    return std::strchr("jilLuUd", c) != nullptr ? 'J' : c;
  }

  void Step(char c) {
    if (plain.Depth() == 0 && (c == '{' || c == '[')) ++nTopLevel;
    Plain::Call call{Kind(c), ""};
    switch (c) {
      case 'n':
        call.strText = Text();
        writer.N(std::string_view(call.strText));
        break;
      case 'v':
        call.strText = Text();
        writer.V(std::string_view(call.strText));
        break;
      case 'j':
        call.strText = random.Of(kRawTexts);
        writer.JS_N((call.strText + "rest").c_str(), static_cast<int>(call.strText.size()));
        break;
      case 'i':
        Number<int>(call);
        break;
      case 'l':
        Number<long>(call);
        break;
      case 'L':
        Number<long long>(call);
        break;
      case 'u':
        Number<unsigned long>(call);
        break;
      case 'U':
        Number<unsigned long long>(call);
        break;
      case 'd':
        Real(call);
        break;
      default:
        if (c == 'J' || c == 'A') call.strText = random.Of(kRawTexts);
        if (c == 'N' || c == 'V') call.strText = Text();
        Plain::Apply(writer, call);
    }
    plain.Apply(call);
    Fuzz::ExpectEqual(writer.String(), plain.String(), "the text of the plain writer");
  }

  std::uint64_t Bits() {
    std::uint64_t nBits = 0;
    for (std::uint32_t n = random.Below(5); n > 0; --n)
      nBits = nBits << 16 | random.Below(0x10000);
    return nBits;
  }
  template <typename Integer>
  void Number(Plain::Call& call) {
    const auto n = static_cast<Integer>(Bits());
    call.strText = std::to_string(n);
    writer.V(n);
  }
  void Real(Plain::Call& call) {
    const std::uint64_t nBits = Bits();
    double d = 0;
    std::memcpy(&d, &nBits, sizeof d);
    if (!std::isfinite(d)) d = 0.5;
    char szText[32];
    std::snprintf(szText, sizeof szText, "%g", d);
    call.strText = szText;
    writer.V(d);
  }

  std::string Text() {
    std::string strText(random.Below(random.OneIn(8) ? 300 : 20), '\0');
    for (char& c : strText)
      c = static_cast<char>(random.Below(256));
    return strText;
  }

  // The judge refuses bytes that are no UTF-8; the writer passes them on.
  static std::string WithoutUtf8(std::string strText) {
    std::replace_if(
        strText.begin(), strText.end(), [](char c) { return (c & 0x80) != 0; }, 'x');
    return strText;
  }

  Support::Random random;
  JSON::Serialize writer;
  Plain::Writer plain;
  int nTopLevel = 0;  // containers opened outside of all others
};

}  // namespace

void Fuzz::Run(std::string_view input) { Session(input).Run(); }

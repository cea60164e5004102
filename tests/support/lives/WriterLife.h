// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The life of a streaming writer: calls in order for the most part. After each the text is that of
// the plain pWriter->

#ifndef QXRECORDSET_TESTS_SUPPORT_LIVES_WRITERLIFE_H
#define QXRECORDSET_TESTS_SUPPORT_LIVES_WRITERLIFE_H

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

#include "tests/support/PlainWriter.h"
#include "tests/support/lives/Life.h"

namespace Support {

constexpr std::string_view kRawTexts[] = {"null", "[1,{\"a\":[]}]", "{}", "-1.5e3", "\"\\u0041\""};

// A call, or a variant of it; see Choose.
struct WriterStep {
  char c;
  const char* szName;
};
constexpr WriterStep kWriterSteps[] = {{'{', "OO"},
                                       {'[', "AO"},
                                       {'N', "N"},
                                       {'n', "N of a view"},
                                       {'~', "V of null"},
                                       {'V', "V of a text"},
                                       {'v', "V of a view"},
                                       {'J', "JS"},
                                       {'j', "JS_N"},
                                       {'A', "AppendString"},
                                       {'i', "V of int"},
                                       {'l', "V of long"},
                                       {'L', "V of long long"},
                                       {'u', "V of unsigned long"},
                                       {'U', "V of unsigned long long"},
                                       {'d', "V of double"},
                                       {'}', "OC"},
                                       {']', "AC"}};

class WriterLife : public Life {
 public:
  explicit WriterLife(World& common)
      : Life(common),
        pWriter(std::make_unique<JSON::Serialize>(static_cast<int>(random.Below(3)) * 64)) {}

  // Closes what is open. Then there is a text, unless a call came out of order.
  std::string CheckAll() override {
    while (plain.Depth() != 0)
      Call(plain.Allowed('}') ? '}' : plain.Allowed(']') ? ']' : '~');
    Expect(pWriter->String().empty() == (plain.Failed() || nTopLevel == 0), "the text is there");
    return strFault;
  }

  std::size_t Need() const override {
    return 1000 + 3 * plain.Written().size() + 8 * plain.Depth();
  }

  // The text of one container, or "".
  std::string OneText() const { return nTopLevel == 1 ? pWriter->String() : ""; }

 private:
  void TakeOne() override {
    if (random.OneIn(64)) Assign();
    if (plain.Failed()) Renew();
    // A writer that is out of order stays so.
    const WriterStep& step = Choose();
    if (world.LeavesOut(step.szName)) return;
    world.diary.Note("writer", nNumber, step.szName);
    Call(step.c);
  }

  // Another one, in some state of its own, goes on in its place.
  void Assign() {
    auto pOther = std::make_unique<JSON::Serialize>(0);
    pOther->AO();
    if (random.OneIn(2)) pOther->V(1);
    if (random.OneIn(2)) pOther->OO();
    *pOther = *pWriter;
    if (random.OneIn(2)) pWriter = std::make_unique<JSON::Serialize>(*pOther);
    pWriter.swap(pOther);
  }

  // A writer is used once.
  void Renew() {
    if (!random.OneIn(20)) return;
    const CountedMemory::Aside aside;
    *pWriter = JSON::Serialize(0);
    plain = Plain::Writer();
    nTopLevel = 0;
  }

  // The next call that is in order, from a random one on; now and then that one, whatever comes.
  const WriterStep& Choose() {
    std::size_t n = random.Below(std::size(kWriterSteps));
    while (!random.OneIn(256) && !plain.Allowed(Kind(kWriterSteps[n].c)) && !plain.Failed())
      n = (n + 1) % std::size(kWriterSteps);
    return kWriterSteps[n];
  }

  // What the plain writer calls it: all numbers and raw texts are texts to it.
  static char Kind(char c) {
    if (c == 'v' || c == 'n') return c == 'v' ? 'V' : 'N';
    return std::strchr("jilLuUd", c) != nullptr ? 'J' : c;
  }

  void Call(char c) {
    if (plain.Depth() == 0 && (c == '{' || c == '[')) ++nTopLevel;
    Plain::Call call{Kind(c), ""};
    switch (c) {
      case 'n':
        call.strText = Text();
        pWriter->N(std::string_view(call.strText));
        break;
      case 'v':
        call.strText = Text();
        pWriter->V(std::string_view(call.strText));
        break;
      case 'j':
        call.strText = random.Of(kRawTexts);
        pWriter->JS_N((call.strText + "rest").c_str(), static_cast<int>(call.strText.size()));
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
        Plain::Apply(*pWriter, call);
    }
    const CountedMemory::Aside aside;
    plain.Apply(call);
    Expect(pWriter->String() == plain.String(), "the text of the plain writer");
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
    pWriter->V(n);
  }
  void Real(Plain::Call& call) {
    const std::uint64_t nBits = Bits();
    double d = 0;
    std::memcpy(&d, &nBits, sizeof d);
    if (!std::isfinite(d)) d = 0.5;
    char szText[32];
    std::snprintf(szText, sizeof szText, "%g", d);
    call.strText = szText;
    pWriter->V(d);
  }

  std::string Text() {
    std::string strText(random.OneIn(20) ? world.Size() : random.Below(20), '\0');
    for (char& c : strText)
      c = static_cast<char>(random.Below(256));
    return strText;
  }

  std::unique_ptr<JSON::Serialize> pWriter;
  Plain::Writer plain;
  int nTopLevel = 0;  // containers opened outside of all others
};

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_LIVES_WRITERLIFE_H

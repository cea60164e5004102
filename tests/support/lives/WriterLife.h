// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The life of a streaming writer: calls in order for the most part. After each the text is that of
// the plain writer, also when the call ran out of memory several times before.

#ifndef QXRECORDSET_TESTS_SUPPORT_LIVES_WRITERLIFE_H
#define QXRECORDSET_TESTS_SUPPORT_LIVES_WRITERLIFE_H

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "json/JSONSerialize.h"
#include "tests/support/PlainWriter.h"
#include "tests/support/lives/Life.h"

namespace Support {

class WriterLife : public Life {
 public:
  explicit WriterLife(World& common)
      : Life(common),
        pWriter(std::make_unique<JSON::Serialize>(static_cast<int>(random.Below(3)) * 64)) {}

  // Closes what is open. Then there is a text, unless a call came out of order.
  std::string CheckAll() override {
    while (plain.Depth() != 0)
      Take(Calls()[plain.Allowed('}') ? 0 : plain.Allowed(']') ? 1 : 2]);
    Expect(pWriter->String().empty() == (plain.Failed() || nTopLevel == 0), "the text is there");
    return strFault;
  }

  std::size_t Need() const override {
    return 1000 + 3 * plain.Written().size() + 8 * plain.Depth();
  }

  // The text of one container, or "".
  std::string OneText() const { return nTopLevel == 1 ? pWriter->String() : ""; }

 private:
  using Writer = JSON::Serialize;

  // What a call may be given.
  struct Argument {
    std::uint64_t nBits = 0;
    std::string strText;
    const char* szRaw;

    std::string_view View() const { return strText; }
    double Real() const {
      double d = 0;
      std::memcpy(&d, &nBits, sizeof d);
      return std::isfinite(d) ? d : 0.5;
    }
  };
  using A = const Argument&;

  // A call: what the plain writer calls it, what of the argument gets into the text, and what is
  // called. To the plain writer all numbers and raw texts are raw texts.
  struct Call {
    char cPlain;
    const char* szName;
    std::string (*text)(A);
    void (*apply)(Writer& writer, A);
  };

  static std::string NoText(A /*none*/) { return ""; }
  static std::string AnyText(A a) { return a.strText; }
  static std::string RawText(A a) { return a.szRaw; }
  static std::string RealText(A a) {
    char szText[32];
    std::snprintf(szText, sizeof szText, "%g", a.Real());
    return szText;
  }
  template <typename Integer>
  static Call IntegerCall(const char* szName) {
    return {'J', szName, [](A a) { return std::to_string(static_cast<Integer>(a.nBits)); },
            [](Writer& w, A a) { w.V(static_cast<Integer>(a.nBits)); }};
  }

  static constexpr std::size_t kCalls = 18;
  static const Call* Calls() {
    static const Call kCallsOfAll[kCalls] = {
        {'}', "OC", NoText, [](Writer& w, A) { w.OC(); }},
        {']', "AC", NoText, [](Writer& w, A) { w.AC(); }},
        {'~', "V of null", NoText, [](Writer& w, A) { w.V(nullptr); }},
        {'{', "OO", NoText, [](Writer& w, A) { w.OO(); }},
        {'[', "AO", NoText, [](Writer& w, A) { w.AO(); }},
        {'N', "N", AnyText, [](Writer& w, A a) { w.N(a.strText.c_str()); }},
        {'N', "N of a view", AnyText, [](Writer& w, A a) { w.N(a.View()); }},
        {'V', "V of a text", AnyText, [](Writer& w, A a) { w.V(a.strText.c_str()); }},
        {'V', "V of a view", AnyText, [](Writer& w, A a) { w.V(a.View()); }},
        {'J', "JS", RawText, [](Writer& w, A a) { w.JS(a.szRaw); }},
        {'J', "JS_N", RawText,
         [](Writer& w, A a) {
           w.JS_N((std::string(a.szRaw) + "rest").c_str(), static_cast<int>(std::strlen(a.szRaw)));
         }},
        {'A', "AppendString", RawText, [](Writer& w, A a) { w.AppendString(a.szRaw); }},
        IntegerCall<int>("V of int"),
        IntegerCall<long>("V of long"),
        IntegerCall<long long>("V of long long"),
        IntegerCall<unsigned long>("V of unsigned long"),
        IntegerCall<unsigned long long>("V of unsigned long long"),
        {'J', "V of double", RealText, [](Writer& w, A a) { w.V(a.Real()); }},
    };
    return kCallsOfAll;
  }

  // The next call that is in order, from a random one on; now and then that one, whatever comes. A
  // writer that is out of order stays so.
  void TakeOne() override {
    if (random.OneIn(64)) Assign();
    if (plain.Failed()) Renew();
    std::size_t n = random.Below(kCalls);
    while (!random.OneIn(256) && !plain.Allowed(Calls()[n].cPlain) && !plain.Failed())
      n = (n + 1) % kCalls;
    Take(Calls()[n]);
  }

  void Take(const Call& call) {
    static const char* const kRaw[] = {"null", "[1,{\"a\":[]}]", "{}", "-1.5e3", "\"\\u0041\""};
    world.diary.Note("writer", nNumber, call.szName);
    if (plain.Depth() == 0 && (call.cPlain == '{' || call.cPlain == '[')) ++nTopLevel;
    Argument argument{0, "", random.Of(kRaw)};
    for (std::uint32_t nWords = random.Below(5); nWords > 0; --nWords)
      argument.nBits = argument.nBits << 16 | random.Below(0x10000);
    argument.strText.resize(random.OneIn(20) ? world.Size() : random.Below(20));
    for (char& c : argument.strText)
      c = static_cast<char>(random.Below(256));
    if (random.OneIn(8)) {
      *pWriter = JSON::Serialize(*pWriter);  // no room to spare
      for (long nBefore = 0; !Succeeds(call, argument, nBefore); ++nBefore) {
      }
    } else {
      call.apply(*pWriter, argument);
    }
    const CountedMemory::Aside aside;
    plain.Apply({call.cPlain, call.text(argument)});
    Expect(pWriter->String() == plain.String(), "the text of the plain writer");
  }

  // The call, with memory for nBefore allocations. A failure leaves no trace.
  bool Succeeds(const Call& call, A argument, long nBefore) {
    CountedMemory::FailAfter(nBefore);
    try {
      call.apply(*pWriter, argument);
    } catch (const std::bad_alloc&) {
    }
    return !CountedMemory::StopFailing();
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

  std::unique_ptr<JSON::Serialize> pWriter;
  Plain::Writer plain;
  int nTopLevel = 0;  // containers opened outside of all others
};

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_LIVES_WRITERLIFE_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Who owns what in a tree: stories of hosts that change trees by hand, and of documents whose size
// jumps. Each one went wrong once. After each, all memory is back.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "json/JSONMessage.h"
#include "tests/support/CountedMemory.h"

namespace {

using JSON::ArrayValue;
using JSON::CompositeValue;
using JSON::JSONValue;
using JSON::Message;
using JSON::ObjectValue;
using JSON::ParseContext;
using JSON::Parser;
using JSON::UnsafeJSONValue;

std::string Written(const JSONValue& value) {
  std::string strWritten;
  EXPECT_TRUE(value.Serialize(strWritten));
  return strWritten;
}

ObjectValue& ObjectIn(JSONValue& value) { return dynamic_cast<ObjectValue&>(*value.pComposite); }
ArrayValue& ArrayIn(JSONValue& value) { return dynamic_cast<ArrayValue&>(*value.pComposite); }

char* NewText(const char* text) {
  char* const pText = new char[std::strlen(text) + 1];
  return std::strcpy(pText, text);
}

// "[0,1,2,...]", or the same as an object.
std::string Numbers(int nCount, bool bObject = false) {
  std::string strText(1, bObject ? '{' : '[');
  for (int i = 0; i < nCount; ++i) {
    if (i > 0) strText += ',';
    if (bObject) strText += '"' + std::to_string(i) + "\":";
    strText += std::to_string(i);
  }
  return strText + (bObject ? '}' : ']');
}

// Runs a story twice, so that what is built on first use is there before memory is counted.
void ExpectNothingLeft(const std::function<void()>& story) {
  story();
  const std::size_t nLive = CountedMemory::Live();
  story();
  EXPECT_EQ(CountedMemory::Live(), nLive) << "something leaks";
}

class Ownership : public testing::Test {
 protected:
  static void Play(const std::function<void()>& story) { ExpectNothingLeft(story); }
};

// ---- What a message keeps -----------------------------------------------------------------------

// The root of a large copy once lay behind the pool's first block, and the next parse took it to be
// the first thing in there.
TEST_F(Ownership, ARootMayBeCopiedAtAnySizeAndUsedAgain) {
  Play([] {
    for (const char* szTiny : {"[", "[]", "[1]", "{}", "{", "{\"a\":1}"}) {
      for (const int nCount : {0, 1, 20, 300, 30000}) {
        for (const bool bInPlace : {false, true}) {
          const bool bObject = *szTiny == '{';
          std::string strTiny = szTiny;
          std::string strLarge = Numbers(nCount, bObject);
          const std::string strExpected = strLarge;
          Message source;
          source.Parse(strLarge.c_str());
          Message message(bInPlace);
          message.Parse(strTiny.c_str());
          const CompositeValue* const pRoot = message.pComposite;
          source.CopyTo(message);
          EXPECT_EQ(message.pComposite, pRoot);
          EXPECT_EQ(Written(message), strExpected);
          message.Parse(strLarge.c_str());
          EXPECT_EQ(message.pComposite, pRoot);
          EXPECT_EQ(Written(message), strExpected);
        }
      }
    }
  });
}

// What is in use beside a message right after `round` was played so many times on it.
std::size_t HeldAfter(int nRounds, const std::function<void(Message&, int)>& round) {
  const std::size_t nLive = CountedMemory::Live();
  Message message;
  for (int i = 0; i < nRounds; ++i)
    round(message, i);
  return CountedMemory::Live() - nLive;
}

TEST_F(Ownership, AMessageThatIsUsedAgainIsBounded) {
  const int nMany = sizeof(void*) == 8 ? 300000 : 100000;
  const std::string strNumbers = Numbers(nMany);
  Message large;
  large.Parse(strNumbers.c_str());
  const struct {
    const char* szName;
    std::function<void(Message&, int)> round;
  } cases[] = {
      {"set and clear a nested object",
       [](Message& message, int i) {
         if (i == 0) message.Parse(R"({"a":{"k":1},"b":{"k":2}})");
         for (const char* szName : {"x", "y", "z", "k"})
           message["a"].Set(szName, "text");
         message["a"].pComposite->Clear();
       }},
      {"copy an array that grows by one",
       [&](Message& message, int) {
         large.Set(large.Size(), 1);
         large.CopyTo(message);
       }},
      {"grow an array beyond its end",
       [&](Message& message, int i) {
         message.Parse("[]");
         message.Set(nMany + i, 1);
       }},
      {"add to a parsed array",
       [&](Message& message, int i) {
         if (i % 2 == 0) message.Parse(strNumbers.c_str());
         message.Set(nMany + i % 2, "one more");
       }},
      {"parse, and clear the root",
       [&](Message& message, int) {
         message.Parse(strNumbers.c_str());
         message.pComposite->Clear();
       }},
  };
  for (const auto& test : cases) {
    const std::size_t nOnce = HeldAfter(2, test.round);
    const std::size_t nOften = HeldAfter(40, test.round);
    EXPECT_LT(nOften, nOnce + nOnce / 2 + 2000) << test.szName;
  }
}

// The memory of the last content is kept for the next one, and no longer.
TEST_F(Ownership, ALargeDocumentIsForgottenByTheSecondSmallOne) {
  const std::string strLarge = Numbers(200000);
  const auto round = [&](Message& message, int i) {
    message.Parse(i == 0 ? strLarge.c_str() : "[1,2,3]");
  };
  const std::size_t nLarge = HeldAfter(1, round);
  EXPECT_LT(HeldAfter(3, round), nLarge / 4);
}

// ---- Heap memory in a pool ----------------------------------------------------------------------

// Elements of a parsed document, and of a copied one, get what a host allocated.
TEST_F(Ownership, ElementsInAPoolOwnWhatTheirFieldsAreGiven) {
  Play([] {
    static const char kText[] = R"({"o":{"a":1,"b":[2,"c"]},"p":{"a":3,"b":[4,"d"]}})";
    Message parsed;
    ASSERT_TRUE(parsed.Parse(kText));
    Message copied(parsed);
    for (Message* pMessage : {&parsed, &copied}) {
      // Reached by a lookup, through the root's field alone, and by a constant's elements.
      JSONValue& found = (*pMessage)["o"]["a"];
      found.pText = NewText("17");
      found.bOwnsText = true;
      auto& member = ObjectIn(ObjectIn(*pMessage).avValues.vValues[1]);
      member.avValues.vValues[0].pComposite = new ObjectValue(4);
      const auto& members = std::as_const(ObjectIn(*pMessage)).avValues.vValues;
      auto& list = dynamic_cast<ArrayValue&>(
          *std::as_const(ObjectIn(const_cast<UnsafeJSONValue&>(members[0])))
               .avValues.vValues[1]
               .pComposite);
      list.UpdateByOrdinal(5, "text", JSON::jtString);
      member.vNameMap[0].UpdateName("name");  // of an index that siblings share
      EXPECT_EQ(Written(*pMessage), R"({"o":{"a":17,"b":[2,"c",null,null,null,"text"]},)"
                                    R"("p":{"name":{},"b":[4,"d"]}})");
    }
    // What is replaced and what is cleared is released as well.
    parsed["o"].Set("a", 1);
    parsed["p"].pComposite->Clear();
    ASSERT_TRUE(copied.Parse(kText));
    EXPECT_EQ(Written(copied), kText);
  });
}

TEST_F(Ownership, AddedContainersBelongToTheirNewParent) {
  Play([] {
    ArrayValue kept;
    Message other;
    other.Parse("[0]");
    std::string strText = R"({"sub":{"a":[1,{"b":"text"}],"c":null}})";
    {
      Message message(true);
      ASSERT_TRUE(message.Parse(strText.c_str()));
      message["sub"].Set("own", "updated");
      kept.AddValue(message["sub"]);
      kept.AddValue(message);
      ArrayIn(other).AddValue(message["sub"]["a"]);
      EXPECT_EQ(Written(message), R"({"sub":{"a":[1,{"b":"text"}],"c":null,"own":"updated"}})");
    }
    std::string strWritten;
    EXPECT_TRUE(kept.Serialize(strWritten));
    EXPECT_EQ(strWritten, R"([{"a":[1,{"b":"text"}],"c":null,"own":"updated"},)"
                          R"({"sub":{"a":[1,{"b":"text"}],"c":null,"own":"updated"}}])");
    // A copy takes along what lies in the text of another document.
    const auto pCopy = std::make_unique<Message>(other);
    strText.assign(strText.size(), '?');
    EXPECT_EQ(Written(*pCopy), R"([0,[1,{"b":"text"}]])");
  });
}

// ---- The steps of the parser --------------------------------------------------------------------

TEST_F(Ownership, AScalarThatIsParsedIntoAnElementReplacesItsText) {
  Play([] {
    std::string strText = R"("new")";
    Message message;
    message.Set(0, "old");
    message.Set(1, "other");
    ParseContext context{strText.data(), strText.data() + strText.size(), strText.data()};
    EXPECT_EQ(Parser::ParseString(context, ArrayIn(message).vValues[0]), JSON::jtString);
    EXPECT_EQ(Parser::ParseNumber(context, ArrayIn(message).vValues[1]), JSON::jtInvalid);
    EXPECT_EQ(Written(message), R"(["new",null])");
  });
}

TEST_F(Ownership, AnObjectMayBeFilledByUpdatesAndByTheParser) {
  Play([] {
    std::string strText = R"({"b":1,"a":[2]} {"broken":1,"off":)";
    Message message;
    message.Parse(R"({"in":{"z":0},"on":{"z":0}})");
    message["in"].Set("own", "1");
    for (JSONValue* pValue : {&message["in"], &message["on"]}) {
      std::string strCopy = strText;
      ParseContext context{strCopy.data(), strCopy.data() + strCopy.size(), strCopy.data()};
      EXPECT_EQ(Parser::ParseObject(context, ObjectIn(*pValue)), JSON::jtObject);
      ++context.pCursor;
      EXPECT_EQ(Parser::ParseObject(context, ObjectIn(*pValue)), JSON::jtInvalid);
      const Message copy(message);
      EXPECT_EQ(Written(copy), Written(message));
      pValue->Set("last", true);
      pValue->pComposite->Clear();
    }
    EXPECT_EQ(Written(message), R"({"in":{},"on":{}})");
  });
}

// ---- A host's own root --------------------------------------------------------------------------

struct CountingArray : ArrayValue {
  void Clear() override {
    ++nCleared;
    ArrayValue::Clear();
  }
  void AddValue(JSONValue& value) override {
    ++nAdded;
    ArrayValue::AddValue(value);
  }
  int nCleared = 0;
  int nAdded = 0;
};

// A container that is neither an array nor an object.
struct Nothing : CompositeValue {
  CompositeValue* Clone(std::ptrdiff_t) const override { return nullptr; }
  int Size() const override { return 0; }
  void Clear() override {}
  void AddValue(JSONValue&) override {}
  JSONValue* GetByOrdinal(int) const override { return nullptr; }
  JSONValue* GetByName(const char*, int) const override { return nullptr; }
  const char* NameAt(int) const override { return nullptr; }
  int OrdinalOf(const char*, int) const override { return -1; }
  bool MakeMap() const override { return false; }
  JSONValue* UpdateByOrdinal(int, const char*, JSON::Type) override { return nullptr; }
  JSONValue* UpdateByName(const char*, const char*, JSON::Type) override { return nullptr; }
  bool Serialize(std::string& output) const override {
    output += "nothing";
    return true;
  }
};

TEST_F(Ownership, ARootOfTheHostIsFilledThroughItsOverridesOrReplaced) {
  Play([] {
    for (const bool bInPlace : {false, true}) {
      std::string strText = "[1,[2],3]";
      Message message(bInPlace);
      auto* const pRoot = new CountingArray;
      message.pComposite = pRoot;
      message.eType = JSON::jtArray;
      EXPECT_TRUE(message.Parse(strText.c_str()));
      EXPECT_EQ(message.pComposite, pRoot);
      EXPECT_EQ(pRoot->nAdded, 3);
      EXPECT_EQ(pRoot->nCleared, 1);
      EXPECT_EQ(Written(message), "[1,[2],3]");
      EXPECT_FALSE(message.Parse("[1, 12"));
      EXPECT_EQ(Written(message), "[1,12]");
      Message copy(message);
      EXPECT_EQ(Written(copy), "[1,12]");
      std::string strObject = "{}";
      EXPECT_TRUE(message.Parse(strObject.c_str()));  // another kind
      message.eType = JSON::jtArray;                  // which it is not
      EXPECT_TRUE(message.Parse(strText.c_str()));
      EXPECT_EQ(Written(message), "[1,[2],3]");

      Message foreign(bInPlace);
      foreign.pComposite = new Nothing;
      foreign.eType = JSON::jtObject;
      EXPECT_EQ(Written(foreign), "nothing");
      EXPECT_EQ(Message(foreign).pComposite, nullptr);
      EXPECT_TRUE(foreign.Parse(strObject.c_str()));
      EXPECT_EQ(Written(foreign), "{}");
    }
  });
}

// A copy of a container that gives none, in an array and in a message.
TEST_F(Ownership, ACloneThatIsNullLeavesNoContainer) {
  Play([] {
    Message message;
    message.Set(0, 1);
    message.Set(1, 2);
    ArrayIn(message).vValues[0].pComposite = new Nothing;
    EXPECT_EQ(Written(message), "[nothing,2]");
    EXPECT_EQ(Written(Message(message)), "[1,2]");
    const std::unique_ptr<CompositeValue> pClone(message.pComposite->Clone(0));
    EXPECT_EQ(pClone->GetByOrdinal(0)->pComposite, nullptr);
  });
}

// ---- Indexes ------------------------------------------------------------------------------------

TEST_F(Ownership, IndexesFromElsewhereLeadNowhere) {
  Play([] {
    Message message;
    message.Parse(R"({"a":1,"b":2})");
    UnsafeJSONValue value(JSON::jtInteger);
    value.pText = "7";
    value.nNameIndex = 5000;
    UnsafeJSONValue name(JSON::jtString);
    name.pText = "c";
    name.nLength = 1;
    ObjectIn(message).AddName(name);
    ObjectIn(message).AddValue(value);
    EXPECT_EQ(message.pComposite->NameAt(2), nullptr);
    EXPECT_EQ(Written(message), R"({"a":1,"b":2,"":7})");
    ObjectIn(message).avValues.vValues[0].nNameIndex = -1;
    EXPECT_EQ(message.pComposite->NameAt(0), nullptr);
    ObjectIn(message).vNameMap[0].nOrdinal = -3;
    ObjectIn(message).Sort();
    EXPECT_EQ(message.pComposite->NameAt(2), name.pText);
  });
}

// The index of an array may be old, but it reads the texts as they are now.
TEST_F(Ownership, AStringIndexReadsNoReleasedText) {
  Play([] {
    Message message;
    message.Parse(R"(["c","b","a"])");
    message.Set(3, "owned");
    EXPECT_EQ(message.pComposite->OrdinalOf("owned", -1), 3);
    message[3].InternalUpdateValue("bb");
    message[0].InternalUpdateValue("cc");
    message[1].Set("now", "an object");
    EXPECT_EQ(message.pComposite->OrdinalOf("owned", -1), -1);
    EXPECT_EQ(message.pComposite->OrdinalOf("an object", -1), -1);
    EXPECT_EQ(message.pComposite->OrdinalOf("cc", -1), 0);
  });
}

// ---- Lengths ------------------------------------------------------------------------------------

#if SIZE_MAX > UINT32_MAX

// More text than an int can count, a few pages mapped again and again. (A 32-bit process has no
// room for such a text and its copy.)
class LongText {
 public:
  LongText() {
    const int nFile = memfd_create("text", 0);
    EXPECT_EQ(ftruncate(nFile, kPiece), 0);
    pText =
        static_cast<char*>(mmap(nullptr, kBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    for (std::size_t n = 0; n + kPiece <= kBytes; n += kPiece)
      mmap(pText + n, kPiece, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, nFile, 0);
    std::memset(pText, 'x', kPiece);
    char* const pLast = pText + kBytes - kPiece;
    mmap(pLast, kPiece, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_FIXED, nFile, 0);
    pLast[kPiece - 1] = '\0';
    close(nFile);
  }
  ~LongText() { munmap(pText, kBytes); }
  LongText(const LongText&) = delete;
  LongText& operator=(const LongText&) = delete;

  char* pText;

 private:
  static constexpr std::size_t kPiece = std::size_t{64} << 20;
  static constexpr std::size_t kBytes = (std::size_t{2} << 30) + kPiece;
};

TEST_F(Ownership, ATextThatIsTooLongForItsLengthIsRefusedAsOutOfMemory) {
  const LongText text;
  Play([&] {
    Message message;
    message.Parse(R"({"a":1})");
    EXPECT_THROW(message.Set("a", text.pText), std::bad_alloc);
    EXPECT_THROW(message.Set(text.pText, 1), std::bad_alloc);
    EXPECT_THROW(message["a"].InternalUpdateValue(text.pText), std::bad_alloc);
    EXPECT_THROW(ObjectIn(message).vNameMap[0].UpdateName(text.pText), std::bad_alloc);
    EXPECT_EQ(Written(message), R"({"a":1})");
    EXPECT_FALSE(message.Parse(text.pText));
    EXPECT_EQ(Written(message), R"({"a":1})");
  });
}

#endif

// ---- Depth --------------------------------------------------------------------------------------

TEST_F(Ownership, TreesOfAnyDepthAreCopiedWrittenAndReleased) {
  constexpr int kLevels = 300000;
  Play([] {
    Message message;
    JSONValue* pValue = &message;
    std::string strExpected;
    for (int i = 0; i < kLevels; ++i) {
      const bool bArray = i % 3 == 0;
      if (bArray) {
        pValue->Set(0, 1);
      } else {
        pValue->Set("n", 1);
      }
      pValue = pValue->GetByOrdinal(0);
      strExpected += bArray ? "[" : "{\"n\":";
    }
    strExpected += '1';
    for (int i = kLevels; i-- > 0;)
      strExpected += i % 3 == 0 ? ']' : '}';
    EXPECT_TRUE(Written(message) == strExpected);
    auto pCopy = std::make_unique<Message>(message);
    EXPECT_TRUE(Written(*pCopy) == strExpected);
    const std::unique_ptr<CompositeValue> pClone(pCopy->pComposite->Clone(0));
    pCopy->Set(0, "the rest is released");
    pCopy.reset();
    std::string strWritten;
    EXPECT_TRUE(pClone->Serialize(strWritten));
    EXPECT_TRUE(strWritten == strExpected);
    // A host's containers, too, as far as releasing them goes.
    auto pOuter = std::make_unique<CountingArray>();
    for (int i = 0; i < kLevels; ++i) {
      UnsafeJSONValue value(JSON::jtArray);
      value.pComposite = pOuter.release();
      pOuter = std::make_unique<CountingArray>();
      pOuter->AddValue(value);
    }
  });
}

}  // namespace

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What tests/lives cannot play: containers that give no clone, trees that are nothing but deep,
// indexes from elsewhere, and texts longer than their length can say. In the end all memory is
// back.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "tests/support/CountedMemory.h"
#include "tests/support/Values.h"
#include "tests/support/lives/HostContainers.h"

namespace {

using JSON::CompositeValue;
using JSON::Message;
using JSON::UnsafeJSONValue;
using Support::ArrayIn;
using Support::ObjectIn;
using Support::Written;

// Runs a story twice, so that what is built on first use is there before memory is counted.
void Play(const std::function<void()>& story) {
  story();
  const std::size_t nLive = CountedMemory::Live();
  story();
  EXPECT_EQ(CountedMemory::Live(), nLive) << "something leaks";
}

// A list whose copy is none.
struct Unclonable : Support::HostList {
  Unclonable* Clone(std::ptrdiff_t /*nDelta*/) const override { return nullptr; }
};

TEST(Ownership, ACloneThatIsNullLeavesNoContainer) {
  Play([] {
    Message message;
    message.Parse("[1,2]");
    ArrayIn(message).vValues[0].pComposite = new Unclonable;
    EXPECT_EQ(Written(message), "[[],2]");
    EXPECT_EQ(Written(Message(message)), "[1,2]");
    const std::unique_ptr<CompositeValue> pClone(message.pComposite->Clone(0));
    EXPECT_EQ(pClone->GetByOrdinal(0)->pComposite, nullptr);
    for (const bool bInPlace : {false, true}) {
      std::string strText = "{}";
      Message root(bInPlace);
      root.pComposite = new Unclonable;
      root.eType = JSON::jtObject;  // which it is not
      EXPECT_EQ(Message(root).pComposite, nullptr);
      EXPECT_EQ(Message(root).eType, JSON::jtObject);
      EXPECT_TRUE(root.Parse(strText.c_str()));
      EXPECT_EQ(Written(root), "{}");
    }
  });
}

// The writer kept a pointer to the end of its text, which the list moves away.
struct Unwritable : Support::HostList {
  bool Serialize(std::string& output) const override {
    output.append(100000, 'x');
    throw std::bad_alloc();
  }
};

TEST(Ownership, AHostsContainerThatThrowsLeavesTheTextBeforeIt) {
  Play([] {
    Message message;
    message.Set(0, 1);
    message.Set(1, 2);
    ArrayIn(message).vValues[1].pComposite = new Unwritable;
    std::string strText;
    EXPECT_THROW(message.Serialize(strText), std::bad_alloc);
    EXPECT_EQ(strText, "[1,");
  });
}

// Chains of containers, made by updates or of a host's own kind, are written, copied, cut off and
// released level by level: there is no stack for them.
TEST(Ownership, NoDepthNeedsRecursion) {
  constexpr std::size_t kDeep = 300000;
  std::string strOpen;
  std::string strClose;
  for (std::size_t i = 0; i < kDeep; ++i) {
    strOpen += i % 2 == 0 ? "[" : "{\"d\":";
    strClose += i % 2 == 0 ? "}" : "]";
  }
  const std::string strWhole = strOpen + '1' + strClose;
  Play([&] {
    Message message;
    JSON::JSONValue* pEnd = &message;
    for (std::size_t i = 0; i < kDeep; ++i) {
      i % 2 == 0 ? pEnd->Set(0, 1) : pEnd->Set("d", 1);
      pEnd = pEnd->GetByOrdinal(0);
    }
    EXPECT_TRUE(Written(message) == strWhole);
    Message copy(message);
    UnsafeJSONValue clone(JSON::jtArray);
    clone.pComposite = copy.pComposite->Clone(0);
    JSON::ArrayValue array;
    array.AddValue(clone);
    array.AddValue(copy);  // its root lies in a pool, so it is copied
    copy.pComposite->Clear();
    for (const UnsafeJSONValue& added : std::as_const(array.vValues))
      EXPECT_TRUE(Written(added) == strWhole);
    message.Set(0, 1);
    EXPECT_EQ(Written(message), "[1]");

    auto pOuter = std::make_unique<Support::HostArray>();
    for (std::size_t i = 0; i < kDeep; ++i) {
      UnsafeJSONValue value(JSON::jtArray);
      value.pComposite = pOuter.release();
      pOuter = std::make_unique<Support::HostArray>();
      pOuter->AddValue(value);
    }
  });
}

// The copy of a host's container lies on the heap, among elements that do not.
TEST(Ownership, ACopyReleasesTheCloneOfAHostsContainer) {
  class HostArray : public JSON::ArrayValue {};
  Play([] {
    Message message;
    message.Parse("[[1,2],3]");
    auto pHost = std::make_unique<HostArray>();
    pHost->UpdateByOrdinal(0, "7", JSON::jtInteger);
    ArrayIn(message).vValues[1].pComposite = pHost.release();
    EXPECT_EQ(Written(Message(message)), "[[1,2],[7]]");
  });
}

TEST(Ownership, IndexesFromElsewhereLeadNowhere) {
  Play([] {
    Message message;
    message.Parse(R"({"a":1,"b":2})");
    UnsafeJSONValue value = Support::ValueOf("7", JSON::jtInteger);
    UnsafeJSONValue name = Support::ValueOf("c");
    ObjectIn(message).AddName(name);
    ObjectIn(message).AddValue(value);
    for (const int nNowhere : {3, 5000, -1, INT_MIN, INT_MAX}) {
      ObjectIn(message).avValues.vValues[2].nNameIndex = nNowhere;
      EXPECT_EQ(message.pComposite->NameAt(2), nullptr);
      EXPECT_EQ(Written(message), R"({"a":1,"b":2,"":7})");
    }
    ObjectIn(message).vNameMap[0].nLength = 0;  // of a name that a host may have changed
    EXPECT_EQ(Written(message), R"({"a":1,"b":2,"":7})");
    ObjectIn(message).vNameMap[0].nOrdinal = -3;
    ObjectIn(message).Sort();
    EXPECT_EQ(message.pComposite->NameAt(2), name.pText);
  });
}

// The index of an array may be old, but it reads the texts as they are now.
TEST(Ownership, AStringIndexReadsNoReleasedText) {
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

#if SIZE_MAX > UINT32_MAX && !defined(QXRECORDSET_SHORT_TESTS)

// More text than an int can count, a few pages mapped again and again. (A 32-bit process has no
// room for such a text and its copy, and an emulated one takes minutes.)
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

TEST(Ownership, ATextThatIsTooLongForItsLengthIsRefusedAsOutOfMemory) {
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

}  // namespace

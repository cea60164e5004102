// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The hostile shapes.

#include <cstdint>
#include <cstdio>
#include <limits>

#include "bench/hostile/Hostile.h"
#include "json/JSONMessage.h"
#include "recordset/QXRecordSet.h"

namespace bench::hostile {
namespace {

constexpr std::size_t kPrefixBytes = 64;

std::string Digits(std::uint64_t n) {
  char szDigits[sizeof "00000000"];
  std::snprintf(szDigits, sizeof szDigits, "%08u", static_cast<unsigned>(n % 100'000'000));
  return szDigits;
}

std::string EqualLengthName(std::size_t n) { return "name" + Digits(std::uint64_t{n} * 7'919); }
std::string EqualName(std::size_t) { return "name"; }
std::string LongPrefixName(std::size_t n) {
  return std::string(kPrefixBytes, 'p') + Digits(std::uint64_t{n} * 7'919);
}

bool Parse(JSON::Message& message, const std::string& strText) {
  return message.Parse(strText.data(), static_cast<int>(strText.size()));
}

// An object of nItems members, and a lookup in it.
template <std::string (*MakeName)(std::size_t)>
class NamesJob {
 public:
  explicit NamesJob(std::size_t nItems) : strName(MakeName(nItems / 2)) {
    for (std::size_t i = 0; i < nItems; ++i) {
      strText += (i == 0 ? "{\"" : ",\"") + MakeName(i) + "\":1";
    }
    strText += '}';
  }

  template <typename Sink>
  void Run(Sink& sink) {
    JSON::Message message;
    sink.Require(Parse(message, strText), "the object was refused");
    const JSON::JSONValue* pValue = message.GetByName(strName.c_str(), -1);
    sink.Require(pValue != nullptr && pValue->AsInt() == 1, "the name was not found");
  }

 private:
  std::string strText;
  std::string strName;
};

// Names of which none is known when the next one comes.
class GrowingObjectJob {
 public:
  explicit GrowingObjectJob(std::size_t nItems) {
    for (std::size_t i = 0; i < nItems; ++i) {
      vNames.push_back(EqualLengthName(i));
    }
  }

  template <typename Sink>
  void Run(Sink& sink) {
    JSON::Message message;
    int nValue = 0;
    for (const std::string& strName : vNames) {
      message.Set(strName.c_str(), ++nValue);
      sink.Require(message[strName.c_str()].AsInt() == nValue, "the name was not found");
    }
    sink.Require(message.Size() == nValue, "a member is missing");
  }

 private:
  std::vector<std::string> vNames;
};

class StringArrayJob {
 public:
  explicit StringArrayJob(std::size_t nItems)
      : nWanted(static_cast<int>(nItems / 2)), strWanted(EqualLengthName(nItems / 2)) {
    for (std::size_t i = 0; i < nItems; ++i) {
      strText += (i == 0 ? "[\"" : ",\"") + EqualLengthName(i) + "\"";
    }
    strText += ']';
  }

  template <typename Sink>
  void Run(Sink& sink) {
    JSON::Message message;
    sink.Require(Parse(message, strText), "the array was refused");
    const int nFound = message.pComposite->OrdinalOf(strWanted.c_str(), -1);
    sink.Require(nFound == nWanted, "the text was not found");
  }

 private:
  int nWanted;
  std::string strWanted;
  std::string strText;
};

class OpenBracketsJob {
 public:
  explicit OpenBracketsJob(std::size_t nItems) : strText(nItems, '[') {}

  template <typename Sink>
  void Run(Sink& sink) {
    JSON::Message message;
    sink.Require(!Parse(message, strText), "brackets without end were accepted");
  }

 private:
  std::string strText;
};

class EscapedStringJob {
 public:
  explicit EscapedStringJob(std::size_t nItems) : strText("[\"") {
    constexpr const char* kEscapes[] = {"\\n", "\\\"", "\\\\", "\\t"};
    for (std::size_t i = 0; strText.size() < nItems; ++i) {
      strText += kEscapes[i % std::size(kEscapes)];
    }
    strText += "\"]";
  }

  template <typename Sink>
  void Run(Sink& sink) {
    JSON::Message message;
    sink.Require(Parse(message, strText), "the string was refused");
    std::string strOutput;
    message.Serialize(strOutput);
    sink.Require(strOutput.size() == strText.size(), "the string was not written as it was");
  }

 private:
  std::string strText;
};

class LongNumberJob {
 public:
  explicit LongNumberJob(std::size_t nItems)
      : strText("[" + std::string(nItems, '7') + "," + std::string(nItems, '7') + ".5]") {}

  template <typename Sink>
  void Run(Sink& sink) {
    JSON::Message message;
    sink.Require(Parse(message, strText), "the numbers were refused");
    sink.Require(message[0].AsInt() == std::numeric_limits<int>::max(), "the integer is wrong");
    sink.Require(message[1].AsDouble() > 1e300, "the real is wrong");
  }

 private:
  std::string strText;
};

class WideRowJob {
 public:
  explicit WideRowJob(std::size_t nItems) : lColumns(static_cast<long>(nItems)) {
    for (std::size_t i = 0; i < nItems; ++i) {
      strText += (i == 0 ? "{\"" : ",\"") + EqualLengthName(i) + "\":1";
    }
    strText += '}';
  }

  template <typename Sink>
  void Run(Sink& sink) {
    CQXRecordSet set(strText);
    sink.Require(set.GetColumnCount() == lColumns, "a column is missing");
    sink.Require(set.GetString().size() == strText.size(), "a column was not written");
  }

 private:
  long lColumns;
  std::string strText;
};

class OddRowsJob {
 public:
  explicit OddRowsJob(std::size_t nItems) : nCells(nItems) {}

  template <typename Sink>
  void Run(Sink& sink) {
    CQXRecordSet set;
    for (std::size_t i = 0; i < nCells; ++i) {
      set.SetValue("a", static_cast<long>(i), RowOf(i));
    }
    bool bAllThere = true;
    for (std::size_t i = 0; i < nCells; ++i) {
      bAllThere = bAllThere && set.GetValueAsLong("a", RowOf(i)) == static_cast<long>(i);
    }
    sink.Require(bAllThere, "a cell got lost");
  }

 private:
  // Different rows from one end of the range to the other, in no order.
  static long RowOf(std::size_t i) {
    constexpr unsigned long kScatter = 2654435761UL;  // odd, so that no two products are equal
    constexpr unsigned kBits = std::numeric_limits<unsigned long>::digits;
    const unsigned long nScattered = static_cast<unsigned long>(i) * kScatter;
    return static_cast<long>(nScattered << (kBits - 32));
  }

  std::size_t nCells;
};

class DeepCellsJob {
 public:
  explicit DeepCellsJob(std::size_t nItems) : lRows(static_cast<long>(nItems)) {
    constexpr int kAround = 3;  // the text's own object, its array and the row
    constexpr int kDepth = JSON::kMaxNesting - kAround;
    std::string strCell;
    for (int i = 1; i < kDepth; ++i) {
      strCell += "{\"a\":";
    }
    strCell += "{}" + std::string(kDepth - 1, '}');
    for (std::size_t i = 0; i < nItems; ++i) {
      strText += (i == 0 ? "{\"rows\":[{\"cell\":" : ",{\"cell\":") + strCell + "}";
    }
    strText += "]}";
  }

  template <typename Sink>
  void Run(Sink& sink) {
    CQXRecordSet set(strText);
    sink.Require(set.GetRowsCount() == lRows, "a row is missing");
    sink.Require(set.GetString() == strText, "the text was not written as it was");
  }

 private:
  long lRows;
  std::string strText;
};

// Adds the job in three sizes, the largest of `nLargest` items.
template <typename Job>
void AddShape(Suite& suite, const char* szShape, std::size_t nLargest) {
  struct Scale {
    const char* szName;
    std::size_t nDivisor;
  };
  constexpr Scale kScales[] = {{"1x", 16}, {"4x", 4}, {"16x", 1}};
  constexpr std::size_t kQuickDivisor = 16;
  if (suite.Chosen().bQuick) {
    nLargest /= kQuickDivisor;
  }
  for (const Scale& scale : kScales) {
    const std::size_t nItems = nLargest / scale.nDivisor;
    suite.Add<Job>({"hostile-" + std::string(szShape), scale.szName, kQx, "fresh"},
                   Amount{0, nItems}, nItems);
  }
}

}  // namespace

void AddQx(Suite& suite) {
  constexpr std::size_t kMillion = 1'000'000;
  AddShape<NamesJob<EqualLengthName>>(suite, "equal-length-names", kMillion);
  AddShape<NamesJob<EqualName>>(suite, "equal-names", kMillion);
  AddShape<NamesJob<LongPrefixName>>(suite, "long-prefix-names", kMillion);
  AddShape<GrowingObjectJob>(suite, "growing-object", kMillion / 4);
  AddShape<StringArrayJob>(suite, "string-array", kMillion);
  AddShape<OpenBracketsJob>(suite, "open-brackets", 10 * kMillion);
  AddShape<EscapedStringJob>(suite, "escaped-string", 100 * kMillion);
  AddShape<LongNumberJob>(suite, "long-number", 10 * kMillion);
  AddShape<WideRowJob>(suite, "wide-row", kMillion);
  AddShape<OddRowsJob>(suite, "odd-rows", kMillion);
  AddShape<DeepCellsJob>(suite, "deep-cells", 1'024);
}

}  // namespace bench::hostile

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Text to tree with JSON::Message.

#include "bench/common/QxTree.h"
#include "bench/parse/Parse.h"

namespace bench::parse {
namespace {

template <typename Sink>
void ParseInto(JSON::Message& message, const char* szText, std::size_t nLength, Sink& sink) {
  sink.Require(message.Parse(szText, static_cast<int>(nLength)), "the text was refused");
  sink.Inspect([&](CheckSink& check) { check.Tree(HashTree(message)); });
}

class InPlaceReused {
 public:
  explicit InPlaceReused(const Input& input) : strText(input.Text()), message(true) {}

  template <typename Sink>
  void Run(Sink& sink) {
    strBuffer.assign(strText);
    ParseInto(message, strBuffer.data(), strBuffer.size(), sink);
  }

 private:
  const std::string& strText;
  std::string strBuffer;
  JSON::Message message;
};

class InPlaceFresh {
 public:
  explicit InPlaceFresh(const Input& input) : strText(input.Text()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    std::string strBuffer(strText);
    JSON::Message message(true);
    ParseInto(message, strBuffer.data(), strBuffer.size(), sink);
  }

 private:
  const std::string& strText;
};

class CopyingReused {
 public:
  explicit CopyingReused(const Input& input) : strText(input.Text()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    ParseInto(message, strText.data(), strText.size(), sink);
  }

 private:
  const std::string& strText;
  JSON::Message message;
};

class CopyingFresh {
 public:
  explicit CopyingFresh(const Input& input) : strText(input.Text()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    JSON::Message message;
    ParseInto(message, strText.data(), strText.size(), sink);
  }

 private:
  const std::string& strText;
};

double SumOf(const JSON::JSONValue& value) {
  if (value.pComposite == nullptr) return value.AsDouble();
  double fSum = 0;
  for (int i = 0; i < value.Size(); ++i) {
    fSum += SumOf(value[i]);
  }
  return fSum;
}

class Sum {
 public:
  explicit Sum(const Input& input) : strText(input.Text()), message(true) {}

  template <typename Sink>
  void Run(Sink& sink) {
    strBuffer.assign(strText);
    sink.Require(message.Parse(strBuffer.data(), static_cast<int>(strBuffer.size())),
                 "the text was refused");
    sink.Real(SumOf(message));
  }

 private:
  const std::string& strText;
  std::string strBuffer;
  JSON::Message message;
};

}  // namespace

void AddQxSum(Suite& suite, const Input& input) {
  suite.Add<Sum>({kSum, input.Name(), kQx, "in-place-reused"}, input);
}

void AddQx(Suite& suite, const Input& input) {
  suite.Add<InPlaceReused>({kWork, input.Name(), kQx, "in-place-reused"}, input);
  suite.Add<InPlaceFresh>({kWork, input.Name(), kQx, "in-place-fresh"}, input);
  suite.Add<CopyingReused>({kWork, input.Name(), kQx, "copying-reused"}, input);
  suite.Add<CopyingFresh>({kWork, input.Name(), kQx, "copying-fresh"}, input);
}

}  // namespace bench::parse

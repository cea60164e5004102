// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Text to tree with RapidJSON, parsing in situ.

#include "bench/common/RapidJsonTree.h"
#include "bench/parse/Parse.h"

namespace bench::parse {
namespace {

template <typename Sink>
void TakeTree(const rapidjson::Document& document, Sink& sink) {
  sink.Require(!document.HasParseError(), "the text was refused");
  sink.Inspect([&](CheckSink& check) { check.Tree(HashTree(document)); });
}

// The pool is emptied before each parse: a document would otherwise grow from run to run.
class InSituReused {
 public:
  explicit InSituReused(const Input& input) : strText(input.Text()), document(&pool) {}

  template <typename Sink>
  void Run(Sink& sink) {
    strBuffer.assign(strText);
    document.SetNull();
    pool.Clear();
    document.ParseInsitu(strBuffer.data());
    TakeTree(document, sink);
  }

 private:
  const std::string& strText;
  std::string strBuffer;
  rapidjson::MemoryPoolAllocator<> pool;
  rapidjson::Document document;
};

class InSituFresh {
 public:
  explicit InSituFresh(const Input& input) : strText(input.Text()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    std::string strBuffer(strText);
    rapidjson::Document document;
    document.ParseInsitu(strBuffer.data());
    TakeTree(document, sink);
  }

 private:
  const std::string& strText;
};

double SumOf(const rapidjson::Value& value) {
  double fSum = 0;
  if (value.IsNumber()) return value.GetDouble();
  if (value.IsArray()) {
    for (const rapidjson::Value& element : value.GetArray()) {
      fSum += SumOf(element);
    }
  } else if (value.IsObject()) {
    for (const auto& member : value.GetObject()) {
      fSum += SumOf(member.value);
    }
  }
  return fSum;
}

class Sum {
 public:
  explicit Sum(const Input& input) : strText(input.Text()), document(&pool) {}

  template <typename Sink>
  void Run(Sink& sink) {
    strBuffer.assign(strText);
    document.SetNull();
    pool.Clear();
    document.ParseInsitu(strBuffer.data());
    sink.Require(!document.HasParseError(), "the text was refused");
    sink.Real(SumOf(document));
  }

 private:
  const std::string& strText;
  std::string strBuffer;
  rapidjson::MemoryPoolAllocator<> pool;
  rapidjson::Document document;
};

}  // namespace

void AddRapidJsonSum(Suite& suite, const Input& input) {
  suite.Add<Sum>({kSum, input.Name(), kRapidJson, "in-situ-reused"}, input);
}

void AddRapidJson(Suite& suite, const Input& input) {
  suite.Add<InSituReused>({kWork, input.Name(), kRapidJson, "in-situ-reused"}, input);
  suite.Add<InSituFresh>({kWork, input.Name(), kRapidJson, "in-situ-fresh"}, input);
}

}  // namespace bench::parse

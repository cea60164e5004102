// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Text to tree with simdjson's DOM parser.

#include "bench/common/SimdjsonTree.h"
#include "bench/parse/Parse.h"

namespace bench::parse {
namespace {

template <typename Sink>
void TakeTree(simdjson::simdjson_result<simdjson::dom::element> result, Sink& sink) {
  sink.Require(result.error() == simdjson::SUCCESS, "the text was refused");
  sink.Inspect([&](CheckSink& check) { check.Tree(HashTree(result.value())); });
}

class PaddedReused {
 public:
  explicit PaddedReused(const Input& input) : padded(input.Text()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    TakeTree(parser.parse(padded), sink);
  }

 private:
  simdjson::padded_string padded;
  simdjson::dom::parser parser;
};

class CopyingReused {
 public:
  explicit CopyingReused(const Input& input) : strText(input.Text()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    TakeTree(parser.parse(strText.data(), strText.size()), sink);
  }

 private:
  const std::string& strText;
  simdjson::dom::parser parser;
};

class CopyingFresh {
 public:
  explicit CopyingFresh(const Input& input) : strText(input.Text()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    simdjson::dom::parser parser;
    TakeTree(parser.parse(strText.data(), strText.size()), sink);
  }

 private:
  const std::string& strText;
};

double SumOf(simdjson::dom::element value) {
  if (value.is_number()) return value.get_double().value();
  double fSum = 0;
  if (value.is_array()) {
    const simdjson::dom::array array = value;
    for (const simdjson::dom::element element : array) {
      fSum += SumOf(element);
    }
  } else if (value.is_object()) {
    const simdjson::dom::object object = value;
    for (const simdjson::dom::key_value_pair member : object) {
      fSum += SumOf(member.value);
    }
  }
  return fSum;
}

class Sum {
 public:
  explicit Sum(const Input& input) : padded(input.Text()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    simdjson::simdjson_result<simdjson::dom::element> result = parser.parse(padded);
    sink.Require(result.error() == simdjson::SUCCESS, "the text was refused");
    sink.Real(SumOf(result.value()));
  }

 private:
  simdjson::padded_string padded;
  simdjson::dom::parser parser;
};

}  // namespace

void AddSimdjsonSum(Suite& suite, const Input& input) {
  suite.Add<Sum>({kSum, input.Name(), kSimdjson, "padded-reused"}, input);
}

void AddSimdjson(Suite& suite, const Input& input) {
  suite.Add<PaddedReused>({kWork, input.Name(), kSimdjson, "padded-reused"}, input);
  suite.Add<CopyingReused>({kWork, input.Name(), kSimdjson, "copying-reused"}, input);
  suite.Add<CopyingFresh>({kWork, input.Name(), kSimdjson, "copying-fresh"}, input);
}

}  // namespace bench::parse

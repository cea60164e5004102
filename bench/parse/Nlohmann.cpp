// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Text to tree with nlohmann::json. It has no state to reuse.

#include "bench/common/NlohmannTree.h"
#include "bench/parse/Parse.h"

namespace bench::parse {
namespace {

class Fresh {
 public:
  explicit Fresh(const Input& input) : strText(input.Text()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    const nlohmann::json document = nlohmann::json::parse(strText);
    sink.Inspect([&](CheckSink& check) { check.Tree(HashTree(document)); });
  }

 private:
  const std::string& strText;
};

double SumOf(const nlohmann::json& value) {
  if (value.is_number()) return value.get<double>();
  double fSum = 0;
  if (value.is_structured()) {
    for (const nlohmann::json& element : value) {
      fSum += SumOf(element);
    }
  }
  return fSum;
}

class Sum {
 public:
  explicit Sum(const Input& input) : strText(input.Text()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    sink.Real(SumOf(nlohmann::json::parse(strText)));
  }

 private:
  const std::string& strText;
};

}  // namespace

void AddNlohmannSum(Suite& suite, const Input& input) {
  suite.Add<Sum>({kSum, input.Name(), kNlohmann, "fresh"}, input);
}

void AddNlohmann(Suite& suite, const Input& input) {
  suite.Add<Fresh>({kWork, input.Name(), kNlohmann, "fresh"}, input);
}

}  // namespace bench::parse

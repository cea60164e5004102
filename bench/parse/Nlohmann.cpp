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

}  // namespace

void AddNlohmann(Suite& suite, const Input& input) {
  suite.Add<Fresh>({kWork, input.Name(), kNlohmann, "fresh"}, input);
}

}  // namespace bench::parse

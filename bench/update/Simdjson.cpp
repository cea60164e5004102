// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Writing a document of simdjson's.

#include "bench/common/SimdjsonTree.h"
#include "bench/update/Update.h"

namespace bench::update {
namespace {

class DumpJob {
 public:
  explicit DumpJob(const Input& input) : padded(input.Text()), root(parser.parse(padded)) {}

  template <typename Sink>
  void Run(Sink& sink) {
    sink.Output(simdjson::to_string(root));
  }

 private:
  simdjson::padded_string padded;
  simdjson::dom::parser parser;
  simdjson::dom::element root;
};

}  // namespace

void AddSimdjson(Suite& suite, const std::vector<const Input*>& vCopied) {
  AddForEach<DumpJob>(suite, "dump", vCopied, kSimdjson);
}

}  // namespace bench::update

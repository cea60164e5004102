// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Lookups in a simdjson DOM.

#include <simdjson.h>

#include "bench/lookup/Lookup.h"

namespace bench::lookup {
namespace {

namespace dom = simdjson::dom;

class NameJob {
 public:
  explicit NameJob(NameQueryPtr pNameQuery)
      : pQuery(std::move(pNameQuery)), object(parser.parse(pQuery->strText).get_object()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    for (const std::string& strName : pQuery->vNames) {
      sink.Integer(0, strName, object.at_key(strName).get_int64().value_unsafe());
    }
  }

 private:
  NameQueryPtr pQuery;
  dom::parser parser;
  dom::object object;
};

template <bool bParse>
class MemberJob {
 public:
  explicit MemberJob(const Input& input) : padded(input.Text()), root(parser.parse(padded)) {}

  template <typename Sink>
  void Run(Sink& sink) {
    if constexpr (bParse) {
      root = parser.parse(padded);
    }
    long lRow = 0;
    const dom::array rows = root["rows"];
    for (const dom::element row : rows) {
      sink.Text(lRow++, kMember, row[kMember].get_c_str().value_unsafe());
    }
  }

 private:
  simdjson::padded_string padded;
  dom::parser parser;
  dom::element root;
};

class PathJob {
 public:
  explicit PathJob(const PathQueryPtr& pQuery)
      : vPaths(pQuery->Join("/")), root(parser.parse(pQuery->pInput->Text())) {}

  template <typename Sink>
  void Run(Sink& sink) {
    long lPath = 0;
    for (const std::string& strPath : vPaths) {
      sink.Text(++lPath, "", root.at_pointer(strPath).get_c_str().value_unsafe());
    }
  }

 private:
  std::vector<std::string> vPaths;
  dom::parser parser;
  dom::element root;
};

}  // namespace

void AddSimdjson(Suite& suite, const Queries& queries) {
  AddJobs<NameJob, MemberJob<false>, MemberJob<true>, PathJob>(suite, queries, kSimdjson);
}

}  // namespace bench::lookup

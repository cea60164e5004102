// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Lookups in an nlohmann::json document.

#include <nlohmann/json.hpp>

#include "bench/lookup/Lookup.h"

namespace bench::lookup {
namespace {

using nlohmann::json;

const char* Text(const json& value) { return value.get_ref<const std::string&>().c_str(); }

class NameJob {
 public:
  explicit NameJob(NameQueryPtr pNameQuery)
      : pQuery(std::move(pNameQuery)), document(json::parse(pQuery->strText)) {}

  template <typename Sink>
  void Run(Sink& sink) {
    for (const std::string& strName : pQuery->vNames) {
      sink.Integer(0, strName, document.find(strName)->get<std::int64_t>());
    }
  }

 private:
  NameQueryPtr pQuery;
  json document;
};

template <bool bParse>
class MemberJob {
 public:
  explicit MemberJob(const Input& input) : strText(input.Text()), document(json::parse(strText)) {}

  template <typename Sink>
  void Run(Sink& sink) {
    if constexpr (bParse) {
      document = json::parse(strText);
    }
    const std::string strMember(kMember);
    long lRow = 0;
    for (const json& row : document["rows"]) {
      sink.Text(lRow++, kMember, Text(*row.find(strMember)));
    }
  }

 private:
  const std::string& strText;
  json document;
};

class PathJob {
 public:
  explicit PathJob(const PathQueryPtr& pQuery)
      : vPaths(pQuery->Join("/")), document(json::parse(pQuery->pInput->Text())) {}

  template <typename Sink>
  void Run(Sink& sink) {
    long lPath = 0;
    for (const std::string& strPath : vPaths) {
      sink.Text(++lPath, "", Text(document.at(json::json_pointer(strPath))));
    }
  }

 private:
  std::vector<std::string> vPaths;
  json document;
};

}  // namespace

void AddNlohmann(Suite& suite, const Queries& queries) {
  AddJobs<NameJob, MemberJob<false>, MemberJob<true>, PathJob>(suite, queries, kNlohmann);
}

}  // namespace bench::lookup

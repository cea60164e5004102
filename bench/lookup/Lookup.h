// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Finding values in a document.
//
//   name           members of one large object by name, in random order, each read as an integer
//   member         one member of every row object by name
//   parse-member   the same behind a parse: every object is searched for the first time
//   path           a value in every row by a path text, which is taken apart every time
//
// Everybody is given names with their lengths. Objects keep their members in a sorted index here,
// as an unsorted list in simdjson and RapidJSON, in a tree in nlohmann::json.

#ifndef QXRECORDSET_BENCH_LOOKUP_LOOKUP_H
#define QXRECORDSET_BENCH_LOOKUP_LOOKUP_H

#include <memory>
#include <string>
#include <vector>

#include "bench/common/Suite.h"

namespace bench::lookup {

// An object with `nMembers` members and the names to look for.
struct NameQuery {
  explicit NameQuery(std::size_t nMembers);

  std::string strText;
  std::vector<std::string> vNames;
};

// A document and paths in it, as lists of segments; a segment of digits is an ordinal.
struct PathQuery {
  const Input* pInput;
  std::vector<std::vector<std::string>> vPaths;

  // The paths with `strSeparator` in front of every segment.
  std::vector<std::string> Join(const std::string& strSeparator) const;
};

// The member that "member" reads.
constexpr const char* kMember = "email";

using NameQueryPtr = std::shared_ptr<const NameQuery>;
using PathQueryPtr = std::shared_ptr<const PathQuery>;

struct Queries {
  std::vector<std::pair<std::string, NameQueryPtr>> vNames;  // by input name
  const Input* pRows;
  std::vector<PathQueryPtr> vPaths;
};

Queries MakeQueries(const std::vector<const Input*>& vDocuments);

void AddQx(Suite& suite, const Queries& queries);
void AddSimdjson(Suite& suite, const Queries& queries);
void AddRapidJson(Suite& suite, const Queries& queries);
void AddNlohmann(Suite& suite, const Queries& queries);

// The four files add the same entries, with jobs of their own.
template <typename NameJob, typename MemberJob, typename ParseMemberJob, typename PathJob>
void AddJobs(Suite& suite, const Queries& queries, const char* szLibrary) {
  for (const auto& [strName, pQuery] : queries.vNames) {
    suite.Add<NameJob>({"name", strName, szLibrary, "reused"}, Amount{0, pQuery->vNames.size()},
                       pQuery);
  }
  suite.Add<MemberJob>({"member", queries.pRows->Name(), szLibrary, "reused"}, *queries.pRows);
  suite.Add<ParseMemberJob>({"parse-member", queries.pRows->Name(), szLibrary, "reused"},
                            *queries.pRows);
  for (const PathQueryPtr& pQuery : queries.vPaths) {
    suite.Add<PathJob>({"path", pQuery->pInput->Name(), szLibrary, "reused"},
                       Amount{0, pQuery->vPaths.size()}, pQuery);
  }
}

}  // namespace bench::lookup

#endif  // QXRECORDSET_BENCH_LOOKUP_LOOKUP_H

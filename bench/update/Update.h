// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Changing, copying and writing documents. simdjson's DOM cannot be changed or copied, so it only
// writes. The standard library builds: a std::map of names and values, written by a few lines of
// code.
//
//   edit    parse a table, replace one text and add one boolean in every row, write
//   build   make an object of integers and texts, member by member, from nothing; write
//   copy    an independent copy of a parsed document, releasing it included
//   dump    a parsed document as compact text, releasing the text included

#ifndef QXRECORDSET_BENCH_UPDATE_UPDATE_H
#define QXRECORDSET_BENCH_UPDATE_UPDATE_H

#include <memory>
#include <string>
#include <vector>

#include "bench/common/Suite.h"

namespace bench::update {

constexpr const char* kReplaced = "city";    // a member that every row has
constexpr const char* kCity = "Reykjavík";   // its new text
constexpr const char* kAdded = "contacted";  // a member that no row has

// The member names of "build": so many different ones, a power of ten, in no order.
inline std::vector<std::string> BuildNames(std::size_t nMembers) {
  constexpr std::size_t kScatter = 7'919;
  std::vector<std::string> vNames;
  for (std::size_t i = 0; i < nMembers; ++i) {
    vNames.push_back("member_" + std::to_string(i * kScatter % nMembers));
  }
  return vNames;
}

constexpr std::size_t kBuildSizes[] = {10, 1'000, 10'000, 100'000};
constexpr const char* kBuildInputs[] = {"members-10", "members-1k", "members-10k", "members-100k"};

void AddQx(Suite& suite, const Input& table, const std::vector<const Input*>& vCopied);
void AddRapidJson(Suite& suite, const Input& table, const std::vector<const Input*>& vCopied);
void AddNlohmann(Suite& suite, const Input& table, const std::vector<const Input*>& vCopied);
void AddSimdjson(Suite& suite, const std::vector<const Input*>& vCopied);
void AddStandard(Suite& suite);

template <typename BuildJob>
void AddBuildJobs(Suite& suite, const char* szLibrary) {
  for (std::size_t i = 0; i < std::size(kBuildSizes); ++i) {
    suite.Add<BuildJob>({"build", kBuildInputs[i], szLibrary, "fresh"}, Amount{0, kBuildSizes[i]},
                        BuildNames(kBuildSizes[i]));
  }
}

// A job on each of the documents.
template <typename Job>
void AddForEach(Suite& suite, const char* szWork, const std::vector<const Input*>& vInputs,
                const char* szLibrary) {
  for (const Input* pInput : vInputs) {
    suite.Add<Job>({szWork, pInput->Name(), szLibrary, "fresh"}, *pInput);
  }
}

// The three files add the same entries, with jobs of their own.
template <typename EditJob, typename BuildJob, typename CopyJob, typename DumpJob>
void AddJobs(Suite& suite, const Input& table, const std::vector<const Input*>& vCopied,
             const char* szLibrary) {
  suite.Add<EditJob>({"edit", table.Name(), szLibrary, "fresh"}, table);
  AddBuildJobs<BuildJob>(suite, szLibrary);
  AddForEach<CopyJob>(suite, "copy", vCopied, szLibrary);
  AddForEach<DumpJob>(suite, "dump", vCopied, szLibrary);
}

}  // namespace bench::update

#endif  // QXRECORDSET_BENCH_UPDATE_UPDATE_H

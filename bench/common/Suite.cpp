// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Comparing outcomes, and handing the entries to Google Benchmark.

#include "bench/common/Suite.h"

#include <rapidjson/document.h>

#include <exception>
#include <iostream>
#include <map>
#include <regex>

#include "bench/common/RapidJsonTree.h"

namespace bench {

void CheckSink::Output(std::string_view text) {
  rapidjson::Document document;
  document.Parse<rapidjson::kParseFullPrecisionFlag>(text.data(), text.size());
  Require(!document.HasParseError(), "the text written is not JSON");
  Tree(HashTree(document));
}

std::string Suite::Entry::FullName() const {
  return ContestName() + "/" + name.strLibrary + "/" + name.strVariant;
}

bool Suite::Check(const std::string& strFilter) const {
  const std::regex filter(strFilter);
  std::map<std::string, std::pair<const Entry*, Outcome>> mapFirst;  // by contest
  bool bAllEqual = true;
  for (const Entry& entry : vEntries) {
    if (!std::regex_search(entry.FullName(), filter)) {
      continue;
    }
    try {
      const Outcome outcome = entry.check();
      const auto& [pFirst, expected] =
          mapFirst.try_emplace(entry.ContestName(), &entry, outcome).first->second;
      if (!(outcome == expected)) {
        bAllEqual = false;
        std::cerr << entry.FullName() << ": " << outcome.Describe() << ", but\n"
                  << pFirst->FullName() << ": " << expected.Describe() << "\n";
      }
    } catch (const std::exception& failure) {
      bAllEqual = false;
      std::cerr << entry.FullName() << ": " << failure.what() << "\n";
    }
  }
  return bAllEqual;
}

void Suite::List(std::ostream& output) const {
  for (const Entry& entry : vEntries) {
    output << entry.FullName() << "\n";
  }
}

void Suite::RegisterAll() const {
  for (const Entry& entry : vEntries) {
    benchmark::RegisterBenchmark(entry.FullName().c_str(), entry.run);
  }
}

void Suite::SetRates(benchmark::State& state, Amount amount) {
  const auto nIterations = static_cast<std::int64_t>(state.iterations());
  if (amount.nBytes > 0) {
    state.SetBytesProcessed(nIterations * static_cast<std::int64_t>(amount.nBytes));
  }
  if (amount.nItems > 0) {
    state.SetItemsProcessed(nIterations * static_cast<std::int64_t>(amount.nItems));
  }
}

}  // namespace bench

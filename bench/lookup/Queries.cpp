// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What the lookup benchmarks look for.

#include <algorithm>
#include <cstdint>
#include <random>

#include "bench/lookup/Lookup.h"

namespace bench::lookup {
namespace {

// So many lookups are enough to measure, and few enough for the libraries that search linearly.
constexpr std::size_t kMostQueries = 1'000;

// Unique names of 2 to 11 bytes in no particular order.
std::string MemberName(std::size_t i) {
  constexpr std::uint32_t kScatter = 2654435761U;  // odd, so that no two products are equal
  return "m" + std::to_string(static_cast<std::uint32_t>(i) * kScatter);
}

template <typename T>
void Shuffle(std::vector<T>& vItems) {
  std::minstd_rand random;
  for (std::size_t i = vItems.size(); i > 1; --i) {
    std::swap(vItems[i - 1], vItems[random() % i]);
  }
}

}  // namespace

NameQuery::NameQuery(std::size_t nMembers) {
  for (std::size_t i = 0; i < nMembers; ++i) {
    vNames.push_back(MemberName(i));
    strText += (i == 0 ? "{\"" : ",\"") + vNames.back() + "\":" + std::to_string(i);
  }
  strText += '}';
  Shuffle(vNames);
  vNames.resize(std::min(vNames.size(), kMostQueries));
}

std::vector<std::string> PathQuery::Join(const std::string& strSeparator) const {
  std::vector<std::string> vTexts;
  for (const std::vector<std::string>& vSegments : vPaths) {
    std::string strPath;
    for (const std::string& strSegment : vSegments) {
      strPath += strSeparator + strSegment;
    }
    vTexts.push_back(strPath);
  }
  return vTexts;
}

Queries MakeQueries(const std::vector<const Input*>& vDocuments) {
  Queries queries;
  queries.vNames = {{"object-10", std::make_shared<NameQuery>(10)},
                    {"object-1k", std::make_shared<NameQuery>(1'000)},
                    {"object-100k", std::make_shared<NameQuery>(100'000)}};
  constexpr std::size_t kRows = 1'000;
  queries.pRows = &RowsInput(kRows);

  PathQuery rows{queries.pRows, {}};
  for (std::size_t i = 0; i < kRows; ++i) {
    rows.vPaths.push_back({"rows", std::to_string(i), kMember});
  }
  Shuffle(rows.vPaths);
  queries.vPaths.push_back(std::make_shared<PathQuery>(rows));

  for (const Input* pDocument : vDocuments) {
    if (pDocument->Name() == "twitter") {
      constexpr std::size_t kStatuses = 100;
      PathQuery twitter{pDocument, {}};
      for (std::size_t i = 0; i < kStatuses; ++i) {
        twitter.vPaths.push_back({"statuses", std::to_string(i), "user", "screen_name"});
      }
      Shuffle(twitter.vPaths);
      queries.vPaths.push_back(std::make_shared<PathQuery>(twitter));
    }
  }
  return queries;
}

}  // namespace bench::lookup

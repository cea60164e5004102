// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The row generator.

#include "bench/common/Rows.h"

#include <cstdint>
#include <cstdio>

#include "recordset/QXRecordSet.h"

namespace bench {
namespace {

constexpr const char* kGivenNames[] = {"Ada",    "Jörg", "Maria",  "Chen",   "Amélie", "Oluwaseun",
                                       "Tom",    "Zoë",  "Hannah", "Priya",  "Marco",  "Ingrid",
                                       "Dmitri", "Aiko", "Lukas",  "Fatima", "Sofia",  "William"};
constexpr const char* kSurnames[] = {"Smith", "Müller",   "García", "Novak",  "Okafor",   "Tanaka",
                                     "Brown", "Lindberg", "Rossi",  "Patel",  "Petersen", "Wang",
                                     "Silva", "Kowalski", "Dupont", "Jansen", "O'Neill",  "Haddad"};
constexpr const char* kCities[] = {"Zürich", "London", "São Paulo", "Osaka",
                                   "Vienna", "Kraków", "Chicago",   "Helsinki",
                                   "Lagos",  "Mumbai", "東京",      "Madrid"};
constexpr const char* kCountries[] = {"CH", "GB", "BR", "JP", "AT", "PL",
                                      "US", "FI", "NG", "IN", "JP", "ES"};
constexpr const char* kNotes[] = {"calls back on Monday",           "said \"not before noon\"",
                                  "two parcels\nleave at the door", "prefers e-mail",
                                  "folder C:\\clients\\2024",       "naïve café order"};

constexpr long kFirstId = 10'000'000;

// A small generator with the same sequence everywhere (xorshift, 32 bits).
class Random {
 public:
  std::uint32_t Below(std::uint32_t nLimit) {
    nState ^= nState << 13;
    nState ^= nState >> 17;
    nState ^= nState << 5;
    return nState % nLimit;
  }

  template <std::size_t kSize>
  const char* OneOf(const char* const (&vTexts)[kSize]) {
    return vTexts[Below(static_cast<std::uint32_t>(kSize))];
  }

 private:
  std::uint32_t nState = 2463534242U;
};

std::string Date(Random& random) {
  char szDate[sizeof "2000-00-00"];
  std::snprintf(szDate, sizeof szDate, "20%02u-%02u-%02u", 10 + random.Below(15),
                1 + random.Below(12), 1 + random.Below(28));
  return szDate;
}

Row MakeRow(Random& random, long lNumber) {
  Row row;
  row.lId = kFirstId + lNumber;
  row.strName = std::string(random.OneOf(kGivenNames)) + " " + random.OneOf(kSurnames);
  row.strEmail = "user" + std::to_string(random.Below(900'000) + 100'000) + "@example.com";
  const std::uint32_t nCity = random.Below(sizeof kCities / sizeof kCities[0]);
  row.strCity = kCities[nCity];
  row.strCountry = kCountries[nCity];
  row.bActive = random.Below(4) != 0;
  row.lBalance = static_cast<long>(random.Below(2'000'000)) - 500'000;
  row.strJoined = Date(random);
  row.lLevel = random.Below(16) == 0 ? -1 : static_cast<long>(random.Below(100));
  row.strNote = random.Below(10) < 3 ? random.OneOf(kNotes) : "";
  return row;
}

}  // namespace

std::vector<Row> MakeRows(std::size_t nRows) {
  Random random;
  std::vector<Row> vRows;
  vRows.reserve(nRows);
  for (std::size_t i = 0; i < nRows; ++i) {
    vRows.push_back(MakeRow(random, static_cast<long>(i)));
  }
  return vRows;
}

std::string MakeRowsText(std::size_t nRows) {
  CQXRecordSet set;
  long lRow = 0;
  for (const Row& row : MakeRows(nRows)) {
    ++lRow;
    ForEachCell(row, [&](const char* szName, const auto& value) {
      if constexpr (std::is_null_pointer_v<std::decay_t<decltype(value)>>) {
        set.SetValue(szName, "", lRow, CQXRecordSet::QX_NULL);
      } else {
        set.SetValue(szName, value, lRow);
      }
    });
  }
  return set.GetString();
}

}  // namespace bench

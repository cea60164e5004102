// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The rows that the benchmarks work on: a customer table of ten columns, made by a generator that
// gives the same rows on every machine. Three columns are integers, one is a boolean, six are short
// texts; about one name in five is not ASCII, some notes hold quotes and line breaks, and most
// notes and some levels are null.

#ifndef QXRECORDSET_BENCH_COMMON_ROWS_H
#define QXRECORDSET_BENCH_COMMON_ROWS_H

#include <cstddef>
#include <string>
#include <vector>

namespace bench {

struct Row {
  long lId;  // eight digits whatever the row, so that a cell's size does not grow with the table
  std::string strName;
  std::string strEmail;
  std::string strCity;
  std::string strCountry;
  bool bActive;
  long lBalance;
  std::string strJoined;
  long lLevel;          // below 0: null
  std::string strNote;  // empty: null
};

// The column names in the order in which a host writes and reads them (not the sorted order of the
// text form).
constexpr const char* kColumns[] = {"id",     "name",    "email",  "city",  "country",
                                    "active", "balance", "joined", "level", "note"};
constexpr std::size_t kColumnCount = sizeof kColumns / sizeof kColumns[0];

// Calls visit(name, value) for each cell of the row in the order of kColumns. The value is a long,
// a bool, a std::string or nullptr.
template <typename Visit>
void ForEachCell(const Row& row, Visit&& visit) {
  visit("id", row.lId);
  visit("name", row.strName);
  visit("email", row.strEmail);
  visit("city", row.strCity);
  visit("country", row.strCountry);
  visit("active", row.bActive);
  visit("balance", row.lBalance);
  visit("joined", row.strJoined);
  if (row.lLevel < 0) {
    visit("level", nullptr);
  } else {
    visit("level", row.lLevel);
  }
  if (row.strNote.empty()) {
    visit("note", nullptr);
  } else {
    visit("note", row.strNote);
  }
}

// The first `nRows` rows.
std::vector<Row> MakeRows(std::size_t nRows);

// The text form of those rows, as the library writes it.
std::string MakeRowsText(std::size_t nRows);

}  // namespace bench

#endif  // QXRECORDSET_BENCH_COMMON_ROWS_H

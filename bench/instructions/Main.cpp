// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// One piece of work on a table, for valgrind to count the instructions of:
//
//   bench_instructions parse|load|read|write|fill|cycle ROWS
//
// A cycle loads a new record set, reads each cell by name, and writes it. Only what Measured() does
// counts. Writes the number of cells that it worked on. See bench/instructions.sh.

#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <type_traits>

#include "bench/common/Rows.h"
#include "json/JSONMessage.h"
#include "recordset/QXRecordSet.h"

void Measured(const std::function<void()>& work);
[[gnu::noinline]] void Measured(const std::function<void()>& work) { work(); }

namespace {

template <typename Value>
void SetCell(CQXRecordSet& set, const char* szName, const Value& value, long lRow) {
  if constexpr (std::is_null_pointer_v<Value>) {
    set.SetValue(szName, "", lRow, CQXRecordSet::QX_NULL);
  } else {
    set.SetValue(szName, value, lRow);
  }
}

void Fill(CQXRecordSet& set, const std::vector<bench::Row>& vRows) {
  long lRow = 0;
  for (const bench::Row& row : vRows) {
    ++lRow;
    bench::ForEachCell(
        row, [&](const char* szName, const auto& value) { SetCell(set, szName, value, lRow); });
  }
}

void ReadAll(CQXRecordSet& set) {
  for (long lRow = 1; lRow <= set.GetRowsCount(); ++lRow) {
    for (const char* szName : bench::kColumns) {
      set.GetValueAsString(szName, lRow);
    }
  }
}

void Cycle(const std::string& strText) {
  CQXRecordSet set(strText);
  ReadAll(set);
  set.GetString();
}

int Run(const std::string& strWork, std::size_t nRows) {
  const std::vector<bench::Row> vRows = bench::MakeRows(nRows);
  std::string strText = bench::MakeRowsText(nRows);
  CQXRecordSet loaded(strText);
  CQXRecordSet fresh;
  JSON::Message message(true);

  const std::map<std::string, std::function<void()>> mapWorks = {
      {"parse", [&] { message.Parse(strText.data(), static_cast<int>(strText.size())); }},
      {"load", [&] { fresh.SetString(strText); }},
      {"read", [&] { ReadAll(loaded); }},
      {"write", [&] { loaded.GetString(); }},
      {"fill", [&] { Fill(fresh, vRows); }},
      {"cycle", [&] { Cycle(strText); }},
  };
  Cycle(strText);  // what is done once in a process does not count
  const auto it = mapWorks.find(strWork);
  if (it == mapWorks.end()) {
    return 2;
  }
  Measured(it->second);
  std::printf("%zu\n", nRows * bench::kColumnCount);
  return 0;
}

}  // namespace

int main(int nArguments, char** vArguments) {
  try {
    return nArguments == 3 ? Run(vArguments[1], std::stoul(vArguments[2])) : 2;
  } catch (...) {
    return 1;
  }
}

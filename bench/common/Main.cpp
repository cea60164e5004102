// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The benchmark program. A benchmark's name is work/input/library/variant; the headers of the
// folders list the works. Beside Google Benchmark's options (--benchmark_filter=REGEX, ...):
//
//   --data=DIR   the folder with twitter.json, citm_catalog.json and canada.json; those that are
//   not
//                there are left out (default ../shared/data)
//   --quick      smaller tables and shapes, for a look at whether everything works
//   --large      add tables of 1,000,000 rows for every library
//   --check      compare the libraries' outcomes and stop there
//   --list       print the names of all benchmarks and stop there
//
// Outcomes are compared before anything is timed; a difference ends the program with status 1.

#include <benchmark/benchmark.h>
#include <rapidjson/rapidjson.h>

#include <cstring>
#include <iostream>
#include <nlohmann/json.hpp>

#include "bench/common/Suite.h"
#include "bench/fill/Fill.h"
#include "bench/hostile/Hostile.h"
#include "bench/lookup/Lookup.h"
#include "bench/params/Params.h"
#include "bench/parse/Parse.h"
#include "bench/recordset/RecordSet.h"
#include "bench/text/Text.h"
#include "bench/update/Update.h"
#ifdef QXRECORDSET_BENCH_SIMDJSON
#include <simdjson.h>
#endif

namespace bench {
namespace {

constexpr std::size_t kThousand = 1'000;
constexpr std::size_t kTenThousand = 10'000;
constexpr std::size_t kHundredThousand = 100'000;
constexpr std::size_t kMillion = 1'000'000;

#ifdef QXRECORDSET_BENCH_SIMDJSON
// simdjson sets aside ten times the text's size, which for a million rows does not fit into 32
// bits.
bool FitsSimdjson(const Input& input) {
  return sizeof(void*) == 8 || input.Cells() < kMillion * kColumnCount;
}
#endif

void AddParse(Suite& suite, const Input& input) {
  parse::AddQx(suite, input);
#ifdef QXRECORDSET_BENCH_SIMDJSON
  if (FitsSimdjson(input)) {
    parse::AddSimdjson(suite, input);
  }
#endif
  parse::AddRapidJson(suite, input);
  parse::AddNlohmann(suite, input);
}

// For documents that are made of numbers.
void AddSum(Suite& suite, const Input& input) {
  parse::AddQxSum(suite, input);
#ifdef QXRECORDSET_BENCH_SIMDJSON
  parse::AddSimdjsonSum(suite, input);
#endif
  parse::AddRapidJsonSum(suite, input);
  parse::AddNlohmannSum(suite, input);
}

void AddRecordSet(Suite& suite, const Input& input) {
  recordset::AddQx(suite, input);
#ifdef QXRECORDSET_BENCH_SIMDJSON
  if (FitsSimdjson(input)) {
    recordset::AddSimdjson(suite, input);
  }
#endif
  recordset::AddRapidJson(suite, input);
  recordset::AddNlohmann(suite, input);
}

void AddFill(Suite& suite, const Input& input) {
  fill::AddQx(suite, input);
  fill::AddRapidJson(suite, input);
  fill::AddNlohmann(suite, input);
}

void AddTables(Suite& suite) {
  std::vector<std::size_t> vSizes = {kThousand,
                                     suite.Chosen().bQuick ? kTenThousand : kHundredThousand};
  if (suite.Chosen().bLarge) {
    vSizes.push_back(kMillion);
  }
  for (const std::size_t nRows : vSizes) {
    const Input& input = RowsInput(nRows);
    AddParse(suite, input);
    AddRecordSet(suite, input);
    AddFill(suite, input);
  }
}

void AddSmallTables(Suite& suite) {
  for (const std::size_t nRows : {1, 2, 10, 100}) {
    const Input& input = RowsInput(nRows);
    recordset::AddQxCycle(suite, "small", input);
#ifdef QXRECORDSET_BENCH_SIMDJSON
    recordset::AddSimdjsonCycle(suite, "small", input);
#endif
    recordset::AddRapidJsonCycle(suite, "small", input);
    recordset::AddNlohmannCycle(suite, "small", input);
  }
}

// 10^3 to 10^7 cells.
void AddGrowth(Suite& suite) {
  const std::size_t nLargest = suite.Chosen().bQuick ? kTenThousand : kMillion;
  for (std::size_t nRows = 100; nRows <= nLargest; nRows *= 10) {
    recordset::AddQxCycle(suite, "growth", RowsInput(nRows));
    recordset::AddRapidJsonCycle(suite, "growth", RowsInput(nRows));
  }
}

void AddLookup(Suite& suite, const std::vector<const Input*>& vDocuments) {
  const lookup::Queries queries = lookup::MakeQueries(vDocuments);
  lookup::AddQx(suite, queries);
#ifdef QXRECORDSET_BENCH_SIMDJSON
  lookup::AddSimdjson(suite, queries);
#endif
  lookup::AddRapidJson(suite, queries);
  lookup::AddNlohmann(suite, queries);
}

void AddUpdate(Suite& suite, const std::vector<const Input*>& vDocuments) {
  const Input& table = RowsInput(kThousand);
  std::vector<const Input*> vCopied = vDocuments;
  vCopied.push_back(&table);
  update::AddQx(suite, table, vCopied);
#ifdef QXRECORDSET_BENCH_SIMDJSON
  update::AddSimdjson(suite, vCopied);
#endif
  update::AddRapidJson(suite, table, vCopied);
  update::AddNlohmann(suite, table, vCopied);
  update::AddStandard(suite);
}

void AddAll(Suite& suite) {
  const std::vector<const Input*> vDocuments = DocumentInputs(suite.Chosen().strDataFolder);
  for (const Input* pDocument : vDocuments) {
    AddParse(suite, *pDocument);
    if (pDocument->Name() == "canada") AddSum(suite, *pDocument);
  }
  AddTables(suite);
  AddSmallTables(suite);
  AddGrowth(suite);
  AddLookup(suite, vDocuments);
  AddUpdate(suite, vDocuments);
  text::AddEscape(suite);
  text::AddNumbers(suite);
  params::AddQx(suite);
  hostile::AddQx(suite);
}

// Written into the output, so that a figure always comes with what it was measured with.
void AddContext() {
  benchmark::AddCustomContext("architecture", sizeof(void*) == 8 ? "x64" : "x86");
  benchmark::AddCustomContext("compiler", "g++ " __VERSION__);
  benchmark::AddCustomContext("rapidjson", RAPIDJSON_VERSION_STRING);
  benchmark::AddCustomContext("nlohmann", std::to_string(NLOHMANN_JSON_VERSION_MAJOR) + "." +
                                              std::to_string(NLOHMANN_JSON_VERSION_MINOR) + "." +
                                              std::to_string(NLOHMANN_JSON_VERSION_PATCH));
#ifdef QXRECORDSET_BENCH_SIMDJSON
  benchmark::AddCustomContext("simdjson", std::string(SIMDJSON_STRINGIFY(SIMDJSON_VERSION)) +
                                              ", kernel " +
                                              simdjson::get_active_implementation()->name());
#else
  benchmark::AddCustomContext("simdjson", "not there");
#endif
}

struct CommandLine {
  Options options{"../shared/data"};
  bool bCheckOnly = false;
  bool bListOnly = false;
  std::vector<char*> vRest;  // for Google Benchmark
};

CommandLine ReadCommandLine(int nArguments, char** vArguments) {
  constexpr const char kData[] = "--data=";
  CommandLine line;
  for (int i = 0; i < nArguments; ++i) {
    const std::string strArgument = vArguments[i];
    if (strArgument.compare(0, sizeof kData - 1, kData) == 0) {
      line.options.strDataFolder = strArgument.substr(sizeof kData - 1);
    } else if (strArgument == "--quick") {
      line.options.bQuick = true;
    } else if (strArgument == "--large") {
      line.options.bLarge = true;
    } else if (strArgument == "--check") {
      line.bCheckOnly = true;
    } else if (strArgument == "--list") {
      line.bListOnly = true;
    } else {
      line.vRest.push_back(vArguments[i]);
    }
  }
  return line;
}

int Main(int nArguments, char** vArguments) {
  CommandLine line = ReadCommandLine(nArguments, vArguments);
  int nRest = static_cast<int>(line.vRest.size());
  line.vRest.push_back(nullptr);
  benchmark::Initialize(&nRest, line.vRest.data());
  if (benchmark::ReportUnrecognizedArguments(nRest, line.vRest.data())) {
    return 2;
  }

  Suite suite(line.options);
  AddAll(suite);
  if (line.bListOnly) {
    suite.List(std::cout);
    return 0;
  }
  if (!suite.Check(benchmark::GetBenchmarkFilter())) {
    return 1;
  }
  if (line.bCheckOnly) {
    std::cout << "All libraries came to the same outcomes.\n";
    return 0;
  }
  AddContext();
  suite.RegisterAll();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

}  // namespace
}  // namespace bench

int main(int nArguments, char** vArguments) {
  try {
    return bench::Main(nArguments, vArguments);
  } catch (const std::exception& failure) {
    std::cerr << "bench: " << failure.what() << "\n";
    return 1;
  }
}

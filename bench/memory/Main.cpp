// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The memory benchmark. Each entry makes one object from a text and reports, as counters of Google
// Benchmark (the times mean nothing here):
//
//   items           cells of the table, or values of the document
//   text            bytes of text: of all cells, or of the document
//   held            bytes that the object holds on the heap; for what was parsed in place with the
//                   buffer that it points into
//   peak            the most that was held while it was made
//   calls           allocations that it took
//   beyond_text     (held - text) / items
//
//   memory-cells    a table loaded from text; the peers' trees
//   memory-filled   a table filled cell by cell
//   memory-values   a document parsed to a tree
//
// Options: --data=DIR as in bench, and those of Google Benchmark.

#include <benchmark/benchmark.h>
#include <rapidjson/document.h>

#include <cstring>
#include <functional>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "bench/common/Inputs.h"
#include "bench/common/NlohmannTree.h"
#include "bench/memory/Count.h"
#include "json/JSON.h"
#include "json/JSONMessage.h"
#include "recordset/QXRecordSet.h"
#ifdef QXRECORDSET_BENCH_SIMDJSON
#include <simdjson.h>
#endif

namespace bench::memory {
namespace {

// A tree and the text it points into.
template <typename Tree>
struct InPlace {
  std::string strBuffer;
  Tree tree;
};

using Object = std::shared_ptr<void>;
using Maker = Object (*)(const Input&);

Object LoadRecordSet(const Input& input) { return std::make_shared<CQXRecordSet>(input.Text()); }

Object FillRecordSet(const Input& input) {
  auto pSet = std::make_shared<CQXRecordSet>();
  long lRow = 0;
  for (const Row& row : input.Rows()) {
    ++lRow;
    ForEachCell(row, [&](const char* szName, const auto& value) {
      if constexpr (std::is_null_pointer_v<std::decay_t<decltype(value)>>) {
        pSet->SetValue(szName, "", lRow, CQXRecordSet::QX_NULL);
      } else {
        pSet->SetValue(szName, value, lRow);
      }
    });
  }
  return pSet;
}

Object ParseMessage(const Input& input) {
  using Parsed = InPlace<JSON::Message>;
  auto pParsed = std::make_shared<Parsed>(Parsed{input.Text(), JSON::Message(true)});
  pParsed->tree.Parse(pParsed->strBuffer.data(), static_cast<int>(pParsed->strBuffer.size()));
  return pParsed;
}

Object ParseRapidJson(const Input& input) {
  auto pParsed = std::make_shared<InPlace<rapidjson::Document>>();
  pParsed->strBuffer = input.Text();
  pParsed->tree.ParseInsitu(pParsed->strBuffer.data());
  return pParsed;
}

Object ParseNlohmann(const Input& input) {
  return std::make_shared<nlohmann::json>(nlohmann::json::parse(input.Text()));
}

#ifdef QXRECORDSET_BENCH_SIMDJSON
Object ParseSimdjson(const Input& input) {
  auto pParser = std::make_shared<simdjson::dom::parser>();
  const auto error = pParser->parse(input.Text().data(), input.Text().size()).error();
  return error == simdjson::SUCCESS ? pParser : nullptr;
}
#endif

struct Contents {
  std::size_t nItems;
  std::size_t nTextBytes;
};

Contents CellsOf(const Input& input) {
  CQXRecordSet set(input.Text());
  Contents contents{input.Cells(), 0};
  for (long lRow = 1; lRow <= set.GetRowsCount(); ++lRow) {
    for (const char* szColumn : kColumns) {
      contents.nTextBytes += std::strlen(set.GetValueAsString(szColumn, lRow));
    }
  }
  return contents;
}

Contents ValuesOf(const Input& input) {
  const nlohmann::json document = nlohmann::json::parse(input.Text());
  return {static_cast<std::size_t>(HashTree(document).nValues), input.Text().size()};
}

void Measure(benchmark::State& state, const Input& input, Contents (*countContents)(const Input&),
             Maker make) {
  const Contents contents = countContents(input);
  input.Text();
  if (input.Cells() > 0) {
    input.Rows();
  }
  for (auto _ : state) {
    JSON_ReleaseMemory();  // what earlier objects left would not be counted
    const Count before = Current();
    ResetPeak();
    const Object object = make(input);
    const Count after = Current();
    if (object == nullptr) {
      state.SkipWithError("the text was refused");
      return;
    }
    const auto difference = [](std::size_t nAfter, std::size_t nBefore) {
      return static_cast<double>(nAfter) - static_cast<double>(nBefore);
    };
    const double fHeld = difference(after.nHeld, before.nHeld);
    state.counters["items"] = static_cast<double>(contents.nItems);
    state.counters["text"] = static_cast<double>(contents.nTextBytes);
    state.counters["held"] = fHeld;
    state.counters["peak"] = difference(after.nPeak, before.nHeld);
    state.counters["calls"] = difference(after.nCalls, before.nCalls);
    state.counters["beyond_text"] =
        (fHeld - static_cast<double>(contents.nTextBytes)) / static_cast<double>(contents.nItems);
  }
}

void Add(const char* szWork, const Input& input, const char* szLibrary,
         Contents (*countContents)(const Input&), Maker make) {
  const std::string strName = std::string(szWork) + "/" + input.Name() + "/" + szLibrary + "/fresh";
  benchmark::RegisterBenchmark(strName.c_str(), [&input, countContents,
                                                 make](benchmark::State& state) {
    Measure(state, input, countContents, make);
  })->Iterations(1);
}

void AddPeers(const char* szWork, const Input& input, Contents (*countContents)(const Input&)) {
#ifdef QXRECORDSET_BENCH_SIMDJSON
  Add(szWork, input, "simdjson", countContents, ParseSimdjson);
#endif
  Add(szWork, input, "rapidjson", countContents, ParseRapidJson);
  Add(szWork, input, "nlohmann", countContents, ParseNlohmann);
}

void AddAll(const std::string& strDataFolder) {
  constexpr std::size_t kSizes[] = {1'000, 100'000};
  std::vector<const Input*> vDocuments = DocumentInputs(strDataFolder);
  for (const std::size_t nRows : kSizes) {
    const Input& input = RowsInput(nRows);
    Add("memory-cells", input, "qxrecordset", CellsOf, LoadRecordSet);
    AddPeers("memory-cells", input, CellsOf);
    Add("memory-filled", input, "qxrecordset", CellsOf, FillRecordSet);
    vDocuments.push_back(&input);
  }
  for (const Input* pInput : vDocuments) {
    Add("memory-values", *pInput, "qxrecordset", ValuesOf, ParseMessage);
    AddPeers("memory-values", *pInput, ValuesOf);
  }
}

int Main(int nArguments, char** vArguments) {
  constexpr const char kData[] = "--data=";
  std::string strDataFolder = "../shared/data";
  std::vector<char*> vRest;
  for (int i = 0; i < nArguments; ++i) {
    if (std::strncmp(vArguments[i], kData, sizeof kData - 1) == 0) {
      strDataFolder = vArguments[i] + sizeof kData - 1;
    } else {
      vRest.push_back(vArguments[i]);
    }
  }
  int nRest = static_cast<int>(vRest.size());
  vRest.push_back(nullptr);
  benchmark::Initialize(&nRest, vRest.data());
  if (benchmark::ReportUnrecognizedArguments(nRest, vRest.data())) {
    return 2;
  }
  AddAll(strDataFolder);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

}  // namespace
}  // namespace bench::memory

int main(int nArguments, char** vArguments) {
  try {
    return bench::memory::Main(nArguments, vArguments);
  } catch (const std::exception& failure) {
    std::cerr << "bench_memory: " << failure.what() << "\n";
    return 1;
  }
}

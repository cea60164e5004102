// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The suite: all contests of the benchmark program. A contest is one piece of work on one input
// ("parse", "twitter") that several libraries do, each in one or more variants ("in-place-fresh").
// Before anything is timed, every entry of a contest does its work once, and all must come to the
// same outcome.
//
// An entry is a Job: a class constructed from the input, with a member
//
//   template <typename Sink> void Run(Sink& sink);
//
// that does the work once and gives what it reads and writes to the sink. What Run() makes it also
// releases, inside the time; what is reused from run to run is a member of the job.

#ifndef QXRECORDSET_BENCH_COMMON_SUITE_H
#define QXRECORDSET_BENCH_COMMON_SUITE_H

#include <benchmark/benchmark.h>

#include <functional>
#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include "bench/common/Inputs.h"
#include "bench/common/Sinks.h"

namespace bench {

// The libraries' names in benchmark names.
constexpr const char* kQx = "qxrecordset";
constexpr const char* kSimdjson = "simdjson";
constexpr const char* kRapidJson = "rapidjson";
constexpr const char* kNlohmann = "nlohmann";
constexpr const char* kStandard = "standard";  // the C and C++ standard libraries

struct Options {
  std::string strDataFolder;  // where the documents are
  bool bQuick = false;        // smaller tables and shapes
  bool bLarge = false;        // add tables of 1,000,000 rows for every library
};

// Who does what; the parts of the benchmark's name. The last word of the variant is "fresh" when
// every run starts without objects, "reused" when it finds those of the run before.
struct EntryName {
  std::string strWork;
  std::string strInput;
  std::string strLibrary;
  std::string strVariant;
};

// What one run handles, for the rates; 0: no rate.
struct Amount {
  std::size_t nBytes;
  std::size_t nItems;
};

class Suite {
 public:
  explicit Suite(Options chosen) : options(std::move(chosen)) {}

  const Options& Chosen() const { return options; }

  // Adds a job that is constructed from `input`; rates count the bytes and cells of the input.
  template <typename Job>
  void Add(EntryName name, const Input& input) {
    AddEntry<Job>(
        std::move(name),
        [&input] {
          return Amount{input.Text().size(), input.Cells()};
        },
        std::cref(input));
  }

  // Adds a job that is constructed from `arguments`, which are kept by value.
  template <typename Job, typename... Arguments>
  void Add(EntryName name, Amount amount, Arguments... arguments) {
    AddEntry<Job>(
        std::move(name), [amount] { return amount; }, std::move(arguments)...);
  }

  // Lets every entry that the regular expression `strFilter` chooses do its work once. False, with
  // the reason on standard error, when two entries of a contest differ.
  bool Check(const std::string& strFilter) const;

  // Prints the entries' names, one a line.
  void List(std::ostream& output) const;

  // Hands all entries to Google Benchmark.
  void RegisterAll() const;

 private:
  struct Entry {
    EntryName name;
    std::function<Outcome()> check;
    std::function<void(benchmark::State&)> run;
    std::string FullName() const;
    std::string ContestName() const { return name.strWork + "/" + name.strInput; }
  };

  template <typename Job, typename... Arguments>
  void AddEntry(EntryName name, std::function<Amount()> amount, Arguments... arguments) {
    Entry entry;
    entry.name = std::move(name);
    entry.check = [=] {
      Job job(arguments...);
      CheckSink sink;
      job.Run(sink);
      return sink.Result();
    };
    entry.run = [=](benchmark::State& state) {
      Job job(arguments...);
      TimingSink sink;
      job.Run(sink);  // not timed: what is reused has its size now
      for (auto _ : state) {
        job.Run(sink);
      }
      benchmark::DoNotOptimize(sink.Sum());
      SetRates(state, amount());
    };
    vEntries.push_back(std::move(entry));
  }

  static void SetRates(benchmark::State& state, Amount amount);

  Options options;
  std::vector<Entry> vEntries;
};

}  // namespace bench

#endif  // QXRECORDSET_BENCH_COMMON_SUITE_H

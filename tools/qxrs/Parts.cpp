// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs table, head, tail and sort: rows of any format, some of them or in another order.

#include "tools/qxrs/Command.h"
#include "tools/qxrs/rows/Sort.h"

namespace qxrs {

namespace {

struct Options {
  RowOptions rows;
  unsigned nCount = 10;  // of tail
  std::vector<std::string> vKeys;
  bool bDescending = false;
};

int RunLast(const Options& options) {
  return Convert(options.rows, [&](RowSource& rows) { return LastRows(rows, options.nCount); });
}

int RunSort(const Options& options) {
  return Convert(options.rows, [&](RowSource& rows) -> std::unique_ptr<RowSource> {
    return std::make_unique<SortedRows>(
        rows, options.vKeys,
        options.bDescending ? SortedRows::Order::Descending : SortedRows::Order::Ascending);
  });
}

void AddRows(CLI::App& command, RowOptions& rows, std::optional<Format> eWrites = {}) {
  rows.write.eTo = eWrites;
  AddInput(command, rows.read.strInput, "the rows");
  AddRowOptions(command, rows, std::nullopt, eWrites);
  AddOutput(command, rows.write.strOutput);
}

constexpr const char* kHowMany = "how many rows; the default is 10";

}  // namespace

void AddTable(CLI::App& app, Action& action) {
  const auto [command, rows] = AddCommand<RowOptions>(
      app, action,
      {"table", "Show rows as an aligned table.",
       "  qxrs table planets.rs\n"
       "  qxrs table --columns name,capital --max-rows 10 countries.csv",
       "Columns stand in the order in which the rows bring them. On a terminal long texts are\n"
       "shortened so that the lines fit, and columns that still have no room are left out at\n"
       "the end. Nulls, and cells that a row does not have, are blank."},
      Convert);
  AddRows(command, rows, Format::Table);
  AddCount(command, "-n,--max-rows", rows.read.nMost, "COUNT",
           "show the first COUNT rows only, and read no more");
}

void AddHead(CLI::App& app, Action& action) {
  const auto [command, rows] = AddCommand<RowOptions>(app, action,
                                                      {"head", "Write the first rows.",
                                                       "  qxrs head planets.rs\n"
                                                       "  qxrs head -n 3 --to csv countries.csv.gz",
                                                       "No more is read than these rows need."},
                                                      Convert);
  rows.read.nMost = 10;
  AddRows(command, rows);
  AddCount(command, "-n,--rows", rows.read.nMost, "COUNT", kHowMany);
}

void AddTail(CLI::App& app, Action& action) {
  const auto [command, options] = AddCommand(app, action,
                                             {"tail", "Write the last rows.",
                                              "  qxrs tail planets.rs\n"
                                              "  qxrs tail -n 3 --to table events.jsonl"},
                                             RunLast);
  AddRows(command, options.rows);
  AddCount(command, "-n,--rows", options.nCount, "COUNT", kHowMany);
}

void AddSort(CLI::App& app, Action& action) {
  const auto [command, options] = AddCommand(
      app, action,
      {"sort", "Sort rows by the values of columns.",
       "  qxrs sort --by population countries.rs\n"
       "  qxrs sort --infer --by continent,name --to csv countries.csv",
       "Nulls and missing cells come first, then numbers by value, booleans, texts byte by byte.\n"
       "Rows with equal values keep their order. Many rows are sorted in a temporary file."},
      RunSort);
  AddRows(command, options.rows);
  AddNames(command, "--by", options.vKeys, "the columns to sort by, the most important first")
      ->required();
  command.add_flag("-r,--reverse", options.bDescending, "largest values first");
}

}  // namespace qxrs

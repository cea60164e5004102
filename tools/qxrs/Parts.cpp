// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs table, head, tail and sort: rows of any format, some of them or in another order.

#include "tools/qxrs/Command.h"
#include "tools/qxrs/rows/Sort.h"

namespace qxrs {

namespace {

constexpr unsigned kUsualCount = 10;  // of head and tail

struct Options {
  RowOptions rows;
  unsigned nCount = kUsualCount;  // of tail
  std::vector<std::string> vKeys;
  bool bDescending = false;
};

int RunFirst(const Options& options) { return Convert(options.rows); }

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

Command<Options> Add(CLI::App& app, Action& action, const char* szName, int (*pRun)(const Options&),
                     std::optional<Format> eWrites = {}) {
  const auto added = AddCommand(app, action, szName, pRun);
  RowOptions& rows = added.options.rows;
  rows.write.eTo = eWrites;
  added.command.add_option("FILE", rows.read.strInput);
  AddRowOptions(added.command, rows, std::nullopt, eWrites);
  AddOutput(added.command, rows.write.strOutput);
  return added;
}

}  // namespace

void AddParts(CLI::App& app, Action& action) {
  const auto table = Add(app, action, "table", RunFirst, Format::Table);
  AddCount(table.command, "-n,--max-rows", table.options.rows.read.nMost);

  const auto head = Add(app, action, "head", RunFirst);
  head.options.rows.read.nMost = kUsualCount;
  AddCount(head.command, "-n,--rows", head.options.rows.read.nMost);

  const auto tail = Add(app, action, "tail", RunLast);
  AddCount(tail.command, "-n,--rows", tail.options.nCount);

  const auto sort = Add(app, action, "sort", RunSort);
  AddNames(sort.command, "--by", sort.options.vKeys)->required();
  sort.command.add_flag("-r,--reverse", sort.options.bDescending);
}

}  // namespace qxrs

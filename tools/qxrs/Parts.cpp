// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs table, head, tail and sort: rows of any format, some of them or in another order.

#include "tools/qxrs/Command.h"
#include "tools/qxrs/rows/Select.h"
#include "tools/qxrs/rows/Sort.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

struct Options {
  RowOptions rows;
  unsigned nCount = 0;  // 0: all
  std::vector<std::string> vKeys;
  bool bDescending = false;
};

// Rows as they are opened, or what `pick` makes of them.
template <typename Pick>
int Run(const Options& options, unsigned nLimit, Pick pick) {
  Progress progress(options.rows.eProgress);
  Warnings warnings(options.rows.bStrict);
  const OpenedRows opened = OpenRows(options.rows.read, progress, warnings, nLimit);
  const std::unique_ptr<RowSource> pPicked = pick(*opened.pRows);
  WriteRows(pPicked ? *pPicked : *opened.pRows, options.rows.write, progress, warnings);
  return kExitDone;
}

int RunFirst(const Options& options) {
  return Run(options, options.nCount, [](RowSource&) { return std::unique_ptr<RowSource>(); });
}

int RunLast(const Options& options) {
  return Run(options, 0, [&](RowSource& rows) -> std::unique_ptr<RowSource> {
    return std::make_unique<LastRows>(rows, options.nCount);
  });
}

int RunSort(const Options& options) {
  return Run(options, 0, [&](RowSource& rows) -> std::unique_ptr<RowSource> {
    return std::make_unique<SortedRows>(
        rows, options.vKeys,
        options.bDescending ? SortedRows::Order::Descending : SortedRows::Order::Ascending);
  });
}

CLI::App* Add(CLI::App& app, Action& action, const std::shared_ptr<Options>& pOptions,
              const CommandText& text, int (*pRun)(const Options&)) {
  CLI::App* pCommand = AddCommand(app, text);
  RowOptions& rows = pOptions->rows;
  AddInputOption(*pCommand, rows.read.strInput, "the rows");
  AddRowOptions(*pCommand, rows, std::nullopt, rows.write.eTo);
  AddOutputOption(*pCommand, rows.write.strOutput);
  SetAction<Options>(*pCommand, action, pOptions, pRun);
  return pCommand;
}

void AddCountOption(CLI::App& command, const char* szNames, unsigned& nCount, const char* szWhat) {
  command.add_option(szNames, nCount, szWhat)
      ->type_name("COUNT")
      ->default_str("")
      ->check(CheckCount);
}

constexpr unsigned kUsualCount = 10;  // of head and tail

}  // namespace

void AddTable(CLI::App& app, Action& action) {
  const auto pOptions = std::make_shared<Options>();
  pOptions->rows.write.eTo = Format::Table;
  CLI::App* pCommand =
      Add(app, action, pOptions,
          {"table", "Show rows as an aligned table.",
           "  qxrs table planets.rs\n"
           "  qxrs table --columns name,capital --max-rows 10 countries.csv",
           "Columns stand in the order in which the rows bring them. On a terminal long texts are\n"
           "shortened so that the lines fit, and columns that still have no room are left out at\n"
           "the end. Nulls, and cells that a row does not have, are blank."},
          RunFirst);
  AddCountOption(*pCommand, "-n,--max-rows", pOptions->nCount,
                 "show the first COUNT rows only, and read no more");
}

void AddParts(CLI::App& app, Action& action) {
  const auto pHead = std::make_shared<Options>();
  pHead->nCount = kUsualCount;
  AddCountOption(*Add(app, action, pHead,
                      {"head", "Write the first rows.",
                       "  qxrs head planets.rs\n"
                       "  qxrs head -n 3 --to csv countries.csv.gz",
                       "No more is read than these rows need."},
                      RunFirst),
                 "-n,--rows", pHead->nCount, "how many rows; the default is 10");

  const auto pTail = std::make_shared<Options>();
  pTail->nCount = kUsualCount;
  AddCountOption(*Add(app, action, pTail,
                      {"tail", "Write the last rows.",
                       "  qxrs tail planets.rs\n"
                       "  qxrs tail -n 3 --to table events.jsonl"},
                      RunLast),
                 "-n,--rows", pTail->nCount, "how many rows; the default is 10");

  const auto pSort = std::make_shared<Options>();
  CLI::App* pCommand = Add(
      app, action, pSort,
      {"sort", "Sort rows by the values of columns.",
       "  qxrs sort --by population countries.rs\n"
       "  qxrs sort --infer --by continent,name --to csv countries.csv",
       "Nulls and missing cells come first, then numbers by value, booleans, texts byte by byte.\n"
       "Rows with equal values keep their order. Many rows are sorted in a temporary file."},
      RunSort);
  AddNamesOption(*pCommand, "--by", "the columns to sort by, the most important first",
                 pSort->vKeys)
      ->required();
  pCommand->add_flag("-r,--reverse", pSort->bDescending, "largest values first");
}

}  // namespace qxrs

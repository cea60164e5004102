// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs table: record set text as an aligned table.

#include "tools/qxrs/FieldOptions.h"
#include "tools/qxrs/TableLayout.h"

namespace qxrs {

namespace {

struct Options {
  FileOptions files;
  std::vector<std::string> vColumns;
  unsigned nMaxRows = 0;  // 0: all
  unsigned nWidth = 0;    // 0: that of the terminal
  When eColor = When::Auto;
};

// The first rows of a source. The others are read and counted.
class FirstRows : public RowSource {
 public:
  FirstRows(std::unique_ptr<RowSource> pRows, unsigned nRows)
      : pSource(std::move(pRows)), nMore(nRows) {}

  const std::vector<std::string>* Columns() override { return pSource->Columns(); }

  bool Next(Row& row) override {
    if (nMore > 0) {
      --nMore;
      return pSource->Next(row);
    }
    while (pSource->Next(row)) {
      ++nDropped;
    }
    return false;
  }

  unsigned long long Dropped() const { return nDropped; }

 private:
  const std::unique_ptr<RowSource> pSource;
  unsigned nMore;
  unsigned long long nDropped = 0;
};

std::size_t LineWidth(const Options& options, int nFile) {
  if (options.nWidth != 0) {
    return options.nWidth;
  }
  return IsTerminal(nFile) ? static_cast<std::size_t>(TerminalWidth(nFile))
                           : TableLayout::kAnyWidth;
}

int Run(const Options& options) {
  Files files(options.files);
  auto pSource = ReadRecordSet(files.input, options.vColumns);
  FirstRows* pFirst = nullptr;
  if (options.nMaxRows != 0) {
    auto pLimited = std::make_unique<FirstRows>(std::move(pSource), options.nMaxRows);
    pFirst = pLimited.get();
    pSource = std::move(pLimited);
  }
  // The gathered rows replace their source, so what that counted is fetched through this pointer.
  GatheredRows rows(*pSource);
  const int nFile = files.output.File();
  TableLayout layout(files.output, LineWidth(options, nFile), UseColor(options.eColor, nFile));
  Copy(rows, layout);
  if (pFirst && pFirst->Dropped() != 0) {
    files.output.Write(MoreNote(pFirst->Dropped(), "row"));
  }
  files.output.Commit();
  return 0;
}

}  // namespace

void AddTable(CLI::App& app, Action& action) {
  const auto pOptions = std::make_shared<Options>();
  CLI::App* pCommand = AddCommand(
      app,
      {"table", "Show record set text as an aligned table.",
       "  qxrs table planets.json\n"
       "  qxrs from-csv countries.csv | qxrs table --columns name,capital --max-rows 10 -",
       "Columns stand in the order in which the rows bring them. On a terminal long texts are\n"
       "shortened so that the lines fit, and columns that still have no room are left out at the\n"
       "end. Nulls, and cells that a row does not have, are blank."});
  AddInputOption(*pCommand, pOptions->files, "the record set text");
  AddColumnsOption(*pCommand, pOptions->vColumns);
  pCommand->add_option("-n,--max-rows", pOptions->nMaxRows, "show the first COUNT rows only")
      ->type_name("COUNT")
      ->check(CheckCount);
  pCommand
      ->add_option("-w,--width", pOptions->nWidth,
                   "cut the table to lines of COLUMNS; the default is the width of the "
                   "terminal, if there is one")
      ->type_name("COLUMNS")
      ->check(CheckCount);
  AddColorOption(*pCommand, pOptions->eColor);
  AddOutputOptions(*pCommand, pOptions->files);
  SetAction<Options>(*pCommand, action, pOptions, Run);
}

}  // namespace qxrs

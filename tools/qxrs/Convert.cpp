// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The commands that pass rows on: convert, and those for which one of the two formats is fixed,
// from-csv to to-sql; table, head, tail and sort; and sql, questions in SQL about any inputs.

#include "tools/qxrs/Command.h"
#include "tools/qxrs/rows/Spool.h"

namespace qxrs {

namespace {

struct Conversion {
  const char* szName;
  Format eFrom;
  Format eTo;
};

constexpr Conversion kConversions[] = {{"from-csv", Format::Csv, Format::RecordSet},
                                       {"from-tsv", Format::Tsv, Format::RecordSet},
                                       {"from-json", Format::Json, Format::RecordSet},
                                       {"from-jsonl", Format::Jsonl, Format::RecordSet},
                                       {"to-csv", Format::RecordSet, Format::Csv},
                                       {"to-tsv", Format::RecordSet, Format::Tsv},
                                       {"to-json", Format::RecordSet, Format::Json},
                                       {"to-jsonl", Format::RecordSet, Format::Jsonl}};

void AddConversion(CLI::App& app, Action& action, const Conversion& conversion) {
  const auto [command, rows] = AddCommand<RowOptions>(app, action, conversion.szName, Convert);
  command.add_option("FILE", rows.read.strInput);
  // What is read from a file of another format is told by the file's name.
  if (conversion.eTo == Format::RecordSet) rows.read.eFrom = conversion.eFrom;
  rows.write.eTo = conversion.eTo;
  AddRowOptions(command, rows, conversion.eFrom, conversion.eTo);
  command.add_option("-o,--output", rows.write.strOutput);
}

// ---- Databases ----------------------------------------------------------------------------------

int RunFromSql(const RowOptions& options) {
  RowOptions all = options;
  if (all.read.strQuery == "-") {
    Progress progress(When::Never);
    all.read.strQuery = Input("-", progress).ReadAll();
    if (all.read.strQuery.find_first_not_of(" \t\n\r") == std::string::npos) {
      throw InputError("the SQL text holds no statement");
    }
  }
  return Convert(all);
}

void AddFromSql(CLI::App& app, Action& action) {
  const auto [command, rows] = AddCommand(app, action, "from-sql", RunFromSql);
  command.add_option("DATABASE", rows.read.strInput)->required();
  rows.read.eFrom = Format::Sql;
  rows.read.strQuery = "-";
  command.add_option("SQL", rows.read.strQuery);
  rows.write.eTo = Format::RecordSet;
  AddRowOptions(command, rows, Format::Sql, Format::RecordSet);
  command.add_option("-o,--output", rows.write.strOutput);
}

void AddToSql(CLI::App& app, Action& action) {
  const auto [command, rows] = AddCommand<RowOptions>(app, action, "to-sql", Convert);
  command.add_option("DATABASE", rows.write.sql.strPath)->required();
  command.add_option("TABLE", rows.write.sql.strTable)->required();
  command.add_option("FILE", rows.read.strInput);
  rows.write.eTo = Format::Sql;
  AddRowOptions(command, rows, Format::RecordSet, Format::Sql);
}

// ---- Any format to any other --------------------------------------------------------------------

// The name of a table, from that of a file: without folder and endings.
std::string Stem(std::string strPath) {
  strPath.erase(0, strPath.rfind('/') + 1);
  return strPath.substr(0, strPath.find('.', 1));
}

int RunConvert(const RowOptions& options) {
  RowOptions all = options;
  if (!all.read.eFrom && !FormatOfFile(all.read.strInput)) {
    throw UsageError("--from has to name the format of '" + all.read.strInput + "'");
  }
  if (!all.write.eTo && !FormatOfFile(all.write.strOutput)) {
    throw UsageError("--to has to name the format of '" + all.write.strOutput + "'");
  }
  if (all.write.sql.strTable.empty()) {
    all.write.sql.strTable =
        !all.read.strTable.empty() ? all.read.strTable : Stem(all.read.strInput);
  }
  return Convert(all);
}

void AddConvert(CLI::App& app, Action& action) {
  const auto [command, rows] = AddCommand(app, action, "convert", RunConvert);
  command.add_option("INPUT", rows.read.strInput)->required();
  command.add_option("OUTPUT", rows.write.strOutput)->required();
  AddRowOptions(command, rows, std::nullopt, std::nullopt);
  command.add_option("--to-table", rows.write.sql.strTable);
}

// ---- Some of the rows, or in another order ------------------------------------------------------

constexpr unsigned kUsualCount = 10;  // of head and tail

struct PartOptions {
  RowOptions rows;
  unsigned nCount = kUsualCount;  // of tail
  std::vector<std::string> vKeys;
  bool bDescending = false;
};

int RunFirst(const PartOptions& options) { return Convert(options.rows); }

int RunLast(const PartOptions& options) {
  return Convert(options.rows, [&](RowSource& rows) { return LastRows(rows, options.nCount); });
}

int RunSort(const PartOptions& options) {
  return Convert(options.rows, [&](RowSource& rows) -> std::unique_ptr<RowSource> {
    return std::make_unique<SortedRows>(
        rows, options.vKeys,
        options.bDescending ? SortedRows::Order::Descending : SortedRows::Order::Ascending);
  });
}

Command<PartOptions> AddPart(CLI::App& app, Action& action, const char* szName,
                             int (*pRun)(const PartOptions&), std::optional<Format> eWrites = {}) {
  const auto added = AddCommand(app, action, szName, pRun);
  RowOptions& rows = added.options.rows;
  rows.write.eTo = eWrites;
  added.command.add_option("FILE", rows.read.strInput);
  AddRowOptions(added.command, rows, std::nullopt, eWrites);
  added.command.add_option("-o,--output", rows.write.strOutput);
  return added;
}

// ---- Questions in SQL ---------------------------------------------------------------------------

struct SqlOptions {
  RowOptions rows;
  std::vector<std::string> vInputs;  // NAME=FILE
};

void LoadInput(const std::string& strInput, const ReadOptions& howToRead,
               const std::shared_ptr<Database>& pDatabase, Progress& progress, Warnings& warnings) {
  const std::size_t nEquals = strInput.find('=');
  if (nEquals == std::string::npos || nEquals == 0) {
    throw UsageError("'" + strInput + "' is not NAME=FILE");
  }
  ReadOptions read = howToRead;
  read.strQuery.clear();
  read.strInput = strInput.substr(nEquals + 1);
  const OpenedRows rows = OpenRows(read, progress, warnings);
  SqlTarget target;
  target.strTable = strInput.substr(0, nEquals);
  Copy(*rows.pRows, *OpenTable(pDatabase, target, warnings), false);
}

int RunSql(const SqlOptions& options) {
  Progress progress(options.rows.eProgress);
  Warnings warnings(options.rows.bStrict);
  const std::shared_ptr<Database> pDatabase = OpenDatabase("", DatabaseMode::Scratch);
  for (const std::string& strInput : options.vInputs) {
    LoadInput(strInput, options.rows.read, pDatabase, progress, warnings);
  }
  const auto pAnswer = OpenQuery(pDatabase, options.rows.read.strQuery, progress);
  WriteRows(*pAnswer, options.rows.write, progress, warnings);
  return kExitDone;
}

}  // namespace

void AddConversions(CLI::App& app, Action& action) {
  AddConvert(app, action);
  for (const Conversion& conversion : kConversions) {
    AddConversion(app, action, conversion);
    if (conversion.eFrom == Format::Jsonl) AddFromSql(app, action);
  }
  AddToSql(app, action);
}

void AddParts(CLI::App& app, Action& action) {
  const auto table = AddPart(app, action, "table", RunFirst, Format::Table);
  AddCount(table.command, "-n,--max-rows", table.options.rows.read.nMost);

  const auto head = AddPart(app, action, "head", RunFirst);
  head.options.rows.read.nMost = kUsualCount;
  AddCount(head.command, "-n,--rows", head.options.rows.read.nMost);

  const auto tail = AddPart(app, action, "tail", RunLast);
  AddCount(tail.command, "-n,--rows", tail.options.nCount);

  const auto sort = AddPart(app, action, "sort", RunSort);
  AddNames(sort.command, "--by", sort.options.vKeys)->required();
  sort.command.add_flag("-r,--reverse", sort.options.bDescending);
}

void AddSql(CLI::App& app, Action& action) {
  const auto [command, options] = AddCommand(app, action, "sql", RunSql);
  command.add_option("SQL", options.rows.read.strQuery)->required();
  command.add_option("NAME=FILE", options.vInputs);
  AddRowOptions(command, options.rows, Format::Csv, std::nullopt);
  command.remove_option(command.get_option("--columns"));  // the question names them
  command.add_option("-o,--output", options.rows.write.strOutput);
}

}  // namespace qxrs

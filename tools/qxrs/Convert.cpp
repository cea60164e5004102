// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs convert, and the commands for which one of the two formats is fixed: from-csv to to-sql.

#include "tools/qxrs/Command.h"

namespace qxrs {

namespace {

constexpr const char* kInfer =
    "The first line names the columns. A field of which nothing is there, not even quotes, is\n"
    "null. With --infer all rows are read before the first is written; otherwise rows stream.";

constexpr const char* kTabs =
    "Fields stand between tabs, without quotes; \\t, \\n, \\r and \\\\ in a field are a tab, line\n"
    "breaks and a backslash.";

constexpr const char* kAsWritten =
    "Values stay as they are written. A host that loads the text has no place for reals and\n"
    "arrays: see --texts.";

constexpr const char* kLate =
    "Columns stand in the order in which they come. Where a later row may bring new ones, rows\n"
    "are kept in a temporary file until the last is read; not so with --columns.";

constexpr const char* kObjects =
    "Each row is an object with the cells it has, null included. Rows stream.";

struct Conversion {
  Format eFrom;
  Format eTo;
  CommandText text;
};

const Conversion kConversions[] = {
    {Format::Csv,
     Format::RecordSet,
     {"from-csv", "Make record set text from CSV.",
      "  qxrs from-csv planets.csv\n"
      "  qxrs from-csv --infer --delimiter ';' export.csv -o export.rs",
      kInfer}},
    {Format::Tsv,
     Format::RecordSet,
     {"from-tsv", "Make record set text from TSV.",
      "  qxrs from-tsv planets.tsv\n"
      "  qxrs from-tsv --infer --null '\\N' < dump.tsv | qxrs table",
      kTabs}},
    {Format::Json,
     Format::RecordSet,
     {"from-json", "Make record set text from a JSON array of objects.",
      "  qxrs from-json planets.json\n"
      "  qxrs from-json < planets.json | qxrs to-csv -o planets.csv",
      kAsWritten}},
    {Format::Jsonl,
     Format::RecordSet,
     {"from-jsonl", "Make record set text from JSON Lines, an object on each.",
      "  qxrs from-jsonl events.jsonl\n"
      "  tail -n 100 events.jsonl | qxrs from-jsonl | qxrs table",
      kAsWritten}},
    {Format::RecordSet,
     Format::Csv,
     {"to-csv", "Make CSV from rows.",
      "  qxrs to-csv planets.rs\n"
      "  qxrs from-sql world.db \"SELECT * FROM c\" | qxrs to-csv -o c.csv",
      kLate}},
    {Format::RecordSet,
     Format::Tsv,
     {"to-tsv", "Make TSV from rows.",
      "  qxrs to-tsv planets.rs\n"
      "  qxrs to-tsv --null '\\N' --columns name,rings planets.rs | sort",
      kLate}},
    {Format::RecordSet,
     Format::Json,
     {"to-json", "Make a JSON array of objects from rows.",
      "  qxrs to-json countries.rs\n"
      "  qxrs to-json --columns name,capital countries.rs -o countries.json",
      kObjects}},
    {Format::RecordSet,
     Format::Jsonl,
     {"to-jsonl", "Make JSON Lines from rows.",
      "  qxrs to-jsonl countries.rs\n"
      "  qxrs to-jsonl countries.rs | grep '\"eu\":true'",
      kObjects}},
};

void AddConversion(CLI::App& app, Action& action, const Conversion& conversion) {
  const auto [command, rows] = AddCommand<RowOptions>(app, action, conversion.text, Convert);
  AddInput(command, rows.read.strInput, "the text");
  // What is read from a file of another format is told by the file's name.
  if (conversion.eTo == Format::RecordSet) rows.read.eFrom = conversion.eFrom;
  rows.write.eTo = conversion.eTo;
  AddRowOptions(command, rows, conversion.eFrom, conversion.eTo);
  AddOutput(command, rows.write.strOutput);
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
  const auto [command, rows] = AddCommand(
      app, action,
      {"from-sql", "Make record set text from a query of a database.",
       "  qxrs from-sql world.db \"SELECT name, capital FROM c WHERE eu\"\n"
       "  qxrs from-sql odbc:DSN=shop < report.sql | qxrs table",
       "A database is an SQLite file or odbc: and a connection string. Columns declared\n"
       "BOOLEAN give booleans; blobs are refused, select hex() of them. Keys and types that\n"
       "rows cannot tell stand in a member \"columns\" beside the rows. Rows stream."},
      RunFromSql);
  AddRequired(command, "DATABASE", rows.read.strInput, "the database");
  rows.read.eFrom = Format::Sql;
  rows.read.strQuery = "-";
  AddValue(command, "SQL", rows.read.strQuery, "",
           "one statement that gives rows; - is standard input");
  rows.write.eTo = Format::RecordSet;
  AddRowOptions(command, rows, Format::Sql, Format::RecordSet);
  AddOutput(command, rows.write.strOutput);
}

void AddToSql(CLI::App& app, Action& action) {
  const auto [command, rows] = AddCommand<RowOptions>(
      app, action,
      {"to-sql", "Write rows into a table of a database.",
       "  qxrs to-sql --infer world.db countries countries.csv\n"
       "  qxrs to-sql --append world.db countries more.json",
       "A database is an SQLite file, made when it is missing, or odbc: and a connection\n"
       "string. The table is there whole or not at all. Columns are declared as the rows'\n"
       "source tells them, else INTEGER, REAL, BOOLEAN or TEXT by all their cells. Arrays\n"
       "and objects are stored as JSON text, missing cells as NULL."},
      Convert);
  AddRequired(command, "DATABASE", rows.write.sql.strPath, "the database");
  AddRequired(command, "TABLE", rows.write.sql.strTable, "the table's name");
  AddInput(command, rows.read.strInput, "the rows");
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
  const auto [command, rows] = AddCommand(
      app, action,
      {"convert", "Convert rows from any format to any other.",
       "  qxrs convert --infer planets.csv planets.json\n"
       "  qxrs convert world.db countries.csv.gz --table countries",
       "Files name their formats by their ends: .rs, .json, .jsonl, .csv, .tsv, .db and\n"
       ".sqlite, then .gz or .zst. Columns keep their order, values what they say; what the\n"
       "output cannot hold is counted in a warning. Memory does not grow with the rows."},
      RunConvert);
  AddRequired(command, "INPUT", rows.read.strInput,
              "the file, the database, or - for standard input");
  AddRequired(command, "OUTPUT", rows.write.strOutput,
              "the file, the database, or - for standard output");
  AddRowOptions(command, rows, std::nullopt, std::nullopt);
  AddValue(command, "--to-table", rows.write.sql.strTable, "TABLE",
           "the table that is written; the default is the input's name");
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

}  // namespace qxrs

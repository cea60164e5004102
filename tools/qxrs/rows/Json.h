// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows from and to JSON: record set text, an array of objects, and JSON Lines. All of them stream.

#ifndef QXRECORDSET_TOOLS_ROWS_JSON_H
#define QXRECORDSET_TOOLS_ROWS_JSON_H

#include <memory>
#include <string>
#include <string_view>

#include "json/JSONMessage.h"
#include "text/Grammar.h"
#include "tools/qxrs/rows/Rows.h"
#include "tools/qxrs/support/Errors.h"
#include "tools/qxrs/support/Input.h"
#include "tools/qxrs/support/Output.h"

namespace qxrs {

// ---- Rows ---------------------------------------------------------------------------------------

enum class JsonForm {
  RecordSet,
  Array,  // of objects; read like a record set: the first bracket tells
  Lines   // an object on each line; blank lines are passed over
};

// Values that a host with a long of so many bits would lose, reals, arrays and large integers, can
// become texts, as they are written.
enum class HostTexts { None, Host64, Host32 };

// Reads up to the first row. A record set may tell its columns in a member "columns" in front of
// the rows, an array of objects with the members name, type, key and notNull.
std::unique_ptr<RowSource> OpenJsonRows(Input& input, JsonForm eForm, Warnings& warnings);

std::unique_ptr<RowSink> OpenJsonSink(Output& output, JsonForm eForm, HostTexts eTexts,
                                      Warnings& warnings);

// ---- Values -------------------------------------------------------------------------------------

// Appends `strText` as a JSON string with its quotes. With bEscaped it is the content of one
// already, which is written anew. False when bytes that are no UTF-8 became U+FFFD.
bool AppendJsonText(std::string_view strText, bool bEscaped, std::string& strJson);

// A number that the parser accepts and strict JSON does not: without its plus and leading zeros, or
// as a string, when that is not enough.
std::string StrictNumber(std::string_view strNumber);

// The cell as JSON text.
std::string JsonValueText(const Cell& cell);

// ---- Documents ----------------------------------------------------------------------------------

// What the library's parser takes for white space.
constexpr std::string_view kWhiteSpace = " \t\n\r\f";

// The text of a string or a number.
std::string_view TextOf(const JSON::JSONValue& value);

// The complaint about a refused text. `strName` names the text.
inline InputError Complaint(const std::string& strName, const JSON::ParseError& error) {
  return Complaint(strName, {error.nLine, error.nColumn}, error.szReason);
}

// Parses `strText` into `message`, a copying one; a refusal is an InputError. `strName` names the
// text in it.
void ParseOrThrow(JSON::Message& message, const std::string& strText, const std::string& strName);

// A text that is read by the library's grammar. A NUL stands at its end.
using JsonText = JSON::Text<const char, true>;

// Appends the value at `p` as strict JSON, whatever leniency of the parser it uses: in indented
// lines, or without white space. The position behind the value, or null when it is malformed or the
// text ends within. `bWhole` becomes false when bytes that are no UTF-8 became U+FFFD.
const char* AppendStrict(JsonText& text, const char* p, bool bIndented, std::string& strJson,
                         bool* pbWhole);

// What to say when AppendStrict() gave null although the parser accepts the text.
const char* EndsWithin(const JsonText& text);

// The whole of a document that the parser accepts. Throws InputError, which names `strName`, when
// the document has no end, or something stands behind it.
std::string StrictJson(const std::string& strText, bool bIndented, const std::string& strName);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_JSON_H

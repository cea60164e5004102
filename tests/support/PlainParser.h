// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The accepted grammar once more, as plainly as it can be written: one byte at a time, into
// standard containers, over a private copy of the text that it rewrites as the library does; and
// what a tree has to show. Tests hold the library's parser and its trees against it. Nothing is
// shared with the library but the numbers of JSON::Type.

#ifndef QXRECORDSET_TESTS_SUPPORT_PLAINPARSER_H
#define QXRECORDSET_TESTS_SUPPORT_PLAINPARSER_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "json/JSONMessage.h"

namespace Plain {

// A value, and its container where it has one.
struct Value {
  int eType = JSON::jtInvalid;
  std::optional<std::string> text;
  bool bContainer = false;
  bool bObject = false;             // the container is an object
  std::vector<Value> vValues;       // elements or members
  std::vector<std::string> vNames;  // of the members; one too many when a value is missing

  // Text behind `text` that no length counts: the last byte of a number that the end of a parsed
  // text cuts off, or the text of a value whose maker gave no length.
  std::string strRest;

  // What else a parse leaves.
  std::size_t nAt = 0;                   // where the text begins in the buffer, in bytes
  int eContainerType = JSON::jtInvalid;  // the eType of the container itself
  bool bSorted = false;                  // the name index is sorted
};

struct Document {
  bool bAccepted = false;
  bool bRoot = false;  // the text came as far as a root container
  Value root;
  std::size_t nCursor = 0;  // where the parse stopped
  std::string strBuffer;    // the text after the parse
};

// Parses as JSON::Message::Parse does when the length is given.
Document Parse(std::string_view text);

// Appends a value as JSON text, or what comes before an empty value: then the result is false.
bool Write(const Value& value, std::string& strOutput);

// The text with its unprintable bytes written as \xHH.
std::string Printable(std::string_view text);

// The first difference between what is expected and what the library has, or "": what a tree holds,
// whatever was done to it, what it writes, and what lookups answer in all its containers, for names
// and texts that are there and for some that are not.
std::string Difference(const Value& expected, const JSON::JSONValue& value);

// The same for the whole result of a parse. Call it before anything looks up a name there, which
// may sort the indexes of the tree, as the call itself does in the end.
std::string Difference(const Document& expected, const JSON::Message& message);

}  // namespace Plain

#endif  // QXRECORDSET_TESTS_SUPPORT_PLAINPARSER_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The accepted grammar once more, as plainly as it can be written: one byte at a time, into
// standard containers, over a private copy of the text that it rewrites as the library does. Tests
// hold the library's parser against it. Nothing is shared with the library but the numbers of
// JSON::Type.

#ifndef QXRECORDSET_TESTS_SUPPORT_PLAINPARSER_H
#define QXRECORDSET_TESTS_SUPPORT_PLAINPARSER_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "json/JSONMessage.h"

namespace Plain {

// A text within the buffer of its document.
struct Slice {
  std::size_t nStart = 0;  // bytes from the start of the buffer
  int nLength = 0;         // bytes
};

// A value, and its container where it has one.
struct Value {
  int eType = JSON::jtInvalid;
  bool bHasText = false;
  Slice text;

  bool bContainer = false;
  bool bObject = false;                  // the container is an object
  int eContainerType = JSON::jtInvalid;  // the eType of the container itself
  std::vector<Value> vValues;            // elements or members
  std::vector<Slice> vNames;             // of the members; one too many when a value is missing
  bool bSorted = false;                  // the parse ended with a sorted name index
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

// The text with its unprintable bytes written as \xHH.
std::string Printable(std::string_view text);

// One line that shows a value: its letter (x invalid, n null, b boolean, i integer, d double,
// s string) and <text>, containers as [a b] and {name:a name:b}. '!' marks a container whose own
// type is jtInvalid, '~' an object that is not sorted.
std::string Outline(const Document& document);

// The first difference between a parsed document and what the library made of the same text, or ""
// when there is none: result tree with types, texts, lengths, name indexes and failures, and
// cursor. Changes nothing in the message; call it before anything looks up a name there.
std::string Difference(const Document& expected, const JSON::Message& message);

// The same for what name lookups answer, in every object of the document, for names that are there
// and for some that are not. Lookups may sort the indexes of the message.
std::string LookupDifference(const Document& expected, const JSON::Message& message);

}  // namespace Plain

#endif  // QXRECORDSET_TESTS_SUPPORT_PLAINPARSER_H

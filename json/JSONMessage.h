// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The document: JSON::Message owns the text and the tree that points into it. Parse() fills it from
// JSON text, Path() reaches into it, the update operations of JSONValue (json/JSONValue.h) change
// it or build a document from nothing, Serialize() writes it.
//
//   JSON::Message message;
//   if (message.Parse("{\"a\":{\"b\":[10,20]}}", -1)) {
//     int n = message.Path("a.b.1").AsInt();   // 20
//     message.Set("c", true);
//   }
//
// Threads: a message is used by one thread at a time, lookups included. Distinct messages are
// independent.

#ifndef QXRECORDSET_JSON_JSONMESSAGE_H
#define QXRECORDSET_JSON_JSONMESSAGE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "json/JSONValue.h"
#include "json/ParseError.h"
#include "qxrecordset_export.h"

namespace JSON {

class Arena;
enum class Fault : unsigned char;

// The deepest nesting that a parse accepts, the outermost container counted: a document that opens
// one more fails there. It bounds the stack that a hostile document can make a parse use.
constexpr int kMaxNesting = 1024;

// Where a parse stands in its text. The parser never reads at or beyond pEnd.
struct ParseContext {
  char* pStart;   // first byte of the text
  char* pEnd;     // one past the last byte to parse
  char* pCursor;  // next byte to read
};

class QXRECORDSET_EXPORT Message : public JSONValue {
 public:
  // An empty message: type jtInvalid, no root. With `bParseInPlace` Parse() works on the caller's
  // text instead of a copy.
  explicit Message(bool bParseInPlace = false) noexcept;

  // An independent copy with its own text, whichever way the source was parsed.
  Message(const Message& source);
  Message& operator=(const Message& source);

  // Releases the tree and the message's own text.
  ~Message() override;

  // Parses JSON text and returns true when it held a complete object or array. `length` is in
  // bytes; a negative one means that the text runs to its NUL. What follows the top-level value is
  // ignored. docs/json-accepted.md lists what is accepted beyond strict JSON.
  //
  // A copying message (the default) parses its own copy; `text` may be released right after.
  //
  // An in-place message parses `text` itself, and then three things hold: the bytes are rewritten
  // (strings are unescaped where they stand, with a NUL behind each), the text must outlive the
  // tree, and the caller still releases it. Nothing at or beyond text + length is read or written.
  //
  // A message may parse any number of times; a root of the same kind is emptied and used again, and
  // the memory of one content is kept for the next. All pointers into the old tree become invalid.
  // A root that a host put there stays the root when it is of the kind that the text needs, or a
  // subclass; it is then filled as Parser::ParseObject() and Parser::ParseArray() fill it. Any
  // other is released.
  //
  // False means: a null text or length 0 (nothing changes); a text that does not begin with '{' or
  // '[' behind white space (a copying message is left empty, an in-place one unchanged); or a text
  // that breaks off or goes wrong inside. In the last case the tree holds everything read before,
  // the value that failed has type jtInvalid, and pCursor stands at or near the offending byte. A
  // number that the end of the text cuts off is there, as far as the text goes; parsed in place it
  // has a private text, because behind the text there may be nothing that can be read.
  //
  // When memory runs out, the message is as it was or holds no document; a text parsed in place may
  // have been rewritten in part.
  //
  // Cost: linear in the text; no allocation per value.
  bool Parse(const char* text, int length = -1);

  // Where and why the last Parse() gave false; its szReason is null when it gave true, and before
  // the first one. A copy of a message has no error. Line and column are those of the text as it
  // was; they are 0 for a text that was parsed in place, or that was the message's own, and is
  // rewritten now. A parse that succeeds only forgets what the last one told.
  const ParseError& Error() const noexcept { return error; }

  // The value at a path of names and ordinals joined by '.', such as "rows.3.name", or None(). Each
  // segment is looked up as JSONValue::GetByName does: in an array it is a decimal ordinal, and one
  // that is no number means element 0. There is no escape for '.', but a leading '.' belongs to the
  // first name. An empty or null path finds nothing. The path is not copied.
  const JSONValue& Path(const char* path) const;

  // Makes `target` an independent copy of this message; what it held is released. Texts and names
  // that lie outside of this message's text, because they came from another document or from a
  // host, are duplicated. The target keeps its bInPlace. When memory runs out, it is as it was or
  // holds no document; so is a message that is assigned to.
  void CopyTo(Message& target) const;

  bool bInPlace;            // Parse() works on the caller's text
  char* pStart = nullptr;   // the parsed text,
  char* pEnd = nullptr;     // its end,
  char* pCursor = nullptr;  // and where the last parse stopped
  std::string strText;      // the message's own text, unless it was parsed in place

 private:
  friend class Storage;
  QXRECORDSET_NO_EXPORT void ReleaseRoot() noexcept;
  QXRECORDSET_NO_EXPORT CompositeValue& MakeRoot(Type type, std::uint32_t nReserve);
  QXRECORDSET_NO_EXPORT char* CopyText(const char* text, std::size_t nText);
  QXRECORDSET_NO_EXPORT bool ParseText(const char* text, int length);
  QXRECORDSET_NO_EXPORT void NoteError(std::string_view text, std::size_t nStop, Fault fault,
                                       bool bOriginal) noexcept;
  QXRECORDSET_NO_EXPORT void NoteTreeError(Fault fault) noexcept;
  QXRECORDSET_NO_EXPORT void LocateError(std::string_view text) noexcept;
  template <typename Container>
  QXRECORDSET_NO_EXPORT bool ReadTree();
  QXRECORDSET_NO_EXPORT void CopyRoot(const Message& source);
  QXRECORDSET_NO_EXPORT void RefuseText(char* pBuffer, char* pBufferEnd, char* pStop) noexcept;

  Arena* pArena = nullptr;  // memory of the tree, kept from one content to the next
  ParseError error;
};

// The parse functions below Message::Parse, for hosts that fill a container of their own. Each
// reads at context.pCursor, moves it past what it consumed and returns the JSON::Type of what it
// parsed, or -1. They rewrite the text in place as Message::Parse does, and the text must outlive
// what they fill. Nested containers are allocated with new and owned by the container they are put
// in; so is the private text of a number that the end of the text cuts off.
class QXRECORDSET_EXPORT Parser {
 public:
  Parser() = delete;

  // One value of any kind, behind white space; it is appended to `parent` with AddValue, also when
  // its own parse failed (its type is then jtInvalid). At the end of the text, or on a byte that
  // begins no value, nothing is appended.
  static int ParseJSONValue(ParseContext& context, CompositeValue& parent);

  // The cursor stands on '{' or '['. The members or elements are added to the container, whose
  // eType becomes the result. A host's own subclass is filled by its AddName and AddValue.
  static int ParseObject(ParseContext& context, ObjectValue& object);
  static int ParseArray(ParseContext& context, ArrayValue& array);

  // The cursor stands on the first byte of the scalar. The result also becomes the value's eType. A
  // private text that the value had is released when there is a new one. A number that runs up to
  // pEnd is cut one byte short; its text is read beyond that, so a NUL has to follow it.
  static int ParseString(ParseContext& context, UnsafeJSONValue& value);
  static int ParseNumber(ParseContext& context, UnsafeJSONValue& value);
  static int ParseBoolean(ParseContext& context, UnsafeJSONValue& value);
  static int ParseNull(ParseContext& context, UnsafeJSONValue& value);
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_JSONMESSAGE_H

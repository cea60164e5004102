// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The parser proper: reads text by the grammar (text/Grammar.h) and builds the tree, rewriting the
// text in place. Elements are written straight into their final place. One TreeReader serves one
// parse.

#ifndef QXRECORDSET_JSON_TREEREADER_H
#define QXRECORDSET_JSON_TREEREADER_H

#include "json/JSONMessage.h"
#include "json/JSONValue.h"
#include "json/Shapes.h"
#include "text/Grammar.h"

namespace JSON {

class TreeReader {
 public:
  // Reads up to pEnd. Containers are taken from the pool, or from the heap when there is none.
  TreeReader(char* pEnd, Arena* pArena) : text_(pEnd, kMaxNesting), pArena_(pArena) {}

  // Each reads what stands at p and returns the position behind it, or null; StoppedAt() is then
  // where the failure was found. The containers are filled, and their eType is set.
  char* ReadInto(char* p, ObjectValue& object, Place& place);
  char* ReadInto(char* p, ArrayValue& array, Place& place);

  // The same for one value of any kind, which is appended to `parent`.
  char* ReadValue(char* p, ArrayValue& parent, Place& place);

  // The same for a container.
  char* ReadNested(char* p, ArrayValue& parent, Place& place);

  // The same for a string with escapes or at the end of the text, and for what begins no value: a
  // literal that is none is an element, too.
  char* ReadOtherString(char* pQuote, ArrayValue& parent);
  char* ReadNoValue(char* p, ArrayValue& parent);

  // String content behind the opening quote at p: unescaped in place and NUL-terminated.
  struct Content {
    char* pNext;  // behind the closing quote; null when there is none
    int nLength;
  };
  Content ReadString(char* pQuote);

  // A member name that is not the one expected behind `pShape` (null before the first name). The
  // result's pShape is null when the object has no shape from here on: its names are then its own.
  struct Step {
    char* pNext;  // behind the name; null when it has no end
    Shape* pShape;
  };
  Step ReadName(char* pQuote, ObjectValue& object, Shape* pShape, Place& place);

  // A member name of an object without shapes.
  char* ReadOwnName(char* pQuote, ObjectValue& object);

  char* StoppedAt() const { return text_.pStop; }
  Arena* Pool() const { return pArena_; }
  Text<char>& Source() { return text_; }

 private:
  char* ReadEmptyArray(char* p, ArrayValue& parent);
  template <typename Container>
  char* ReadContainer(char* p, ArrayValue& parent, Place& place);

  Text<char> text_;
  Arena* const pArena_;
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_TREEREADER_H

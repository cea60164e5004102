// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading whole documents, and writing JSON values anew, in strict JSON.

#include <limits>
#include <utility>

#include "text/Escape.h"
#include "tools/qxrs/rows/Json.h"
#include "tools/qxrs/rows/Values.h"

namespace qxrs {

std::string_view TextOf(const JSON::JSONValue& value) {
  return {value.pText ? value.pText : "", static_cast<std::size_t>(value.nLength)};
}

void ParseOrThrow(JSON::Message& message, const std::string& strText, const std::string& strName) {
  if (strText.size() > std::numeric_limits<int>::max()) {
    throw InputError(strName + ": a document can have 2 GB at most");
  }
  if (!message.Parse(strText.data(), static_cast<int>(strText.size()))) {
    throw Complaint(strName, message.Error());
  }
}

namespace {

// A sink of the library's grammar.
class StrictWriter {
 public:
  StrictWriter(JsonText& jsonText, bool bInLines, std::string& strWritten)
      : text(jsonText), bIndented(bInLines), strJson(strWritten) {}

  bool bWhole = true;

  std::uint32_t& Indent() { return nIndent; }
  static bool Expects(const char* /*pName*/) { return false; }
  static const char* AcceptExpected(const char* pName) { return pName; }
  void Complete() {}
  const char* Name(const char* p) {
    BeginItem();
    const char* const pNext = String(p);
    strJson += bIndented ? ": " : ":";
    return pNext;
  }
  const char* Value(const char* p, char c) { return JSON::ReadValue(text.Limits(), p, c, *this); }
  const char* Element(const char* p, char c) {
    if (c != ',' && c != ']') BeginItem();  // else there is no value, and Missing() follows
    return Value(p, c);
  }
  // The parser takes it for a null.
  void Missing() {
    BeginItem();
    strJson += "null";
  }

  const char* String(const char* p) {
    const char* const pClosing = JSON::FindStringEnd(p + 1, text.pEnd);
    if (!pClosing) return text.Fail(p, JSON::Fault::kString);
    const std::string_view strContent(p + 1, static_cast<std::size_t>(pClosing - p - 1));
    if ((JSON::IsPlain(strContent) || IsStrictContent(strContent, true)) && IsUtf8(strContent)) {
      return Put(p, pClosing + 1);
    }
    bWhole = AppendJsonText(strContent, true, strJson) && bWhole;
    return pClosing + 1;
  }
  const char* Number(const char* p) {
    bool bReal = false;
    const char* const pNext = JSON::ScanNumber(p, text.pEnd, bReal);
    const std::string_view strNumber(p, static_cast<std::size_t>(pNext - p));
    if (NumberKind(strNumber) != Kind::Text || strNumber == "-0") return Put(p, pNext);
    strJson += StrictNumber(strNumber);
    return pNext;
  }
  const char* Literal(const char* p, const char* pNext) { return Put(p, pNext); }
  const char* NoValue(const char* p) { return text.Fail(p, JSON::Fault::kValue); }
  const char* Nested(const char* p) {
    const bool bObject = *p == '{';
    const bool bOuterEmpty = std::exchange(bEmpty, true);
    strJson += *p;
    ++nDepth;
    const char* const pNext = bObject ? ReadObject(text, p, *this) : ReadArray(text, p, *this);
    if (!pNext) return nullptr;
    if (pNext[-1] != (bObject ? '}' : ']')) {
      // The text ends within, which the parser accepts in places.
      return text.Fail(pNext, bObject ? JSON::Fault::kInObject : JSON::Fault::kInArray);
    }
    --nDepth;
    if (!bEmpty) BreakLine();
    strJson += pNext[-1];
    bEmpty = bOuterEmpty;
    return pNext;
  }

 private:
  const char* Put(const char* p, const char* pNext) {
    strJson.append(p, pNext);
    return pNext;
  }

  void BeginItem() {
    if (!bEmpty) strJson += ',';
    bEmpty = false;
    BreakLine();
  }

  void BreakLine() {
    if (bIndented) strJson.append(1, '\n').append(2 * nDepth, ' ');
  }

  JsonText& text;
  const bool bIndented;
  std::string& strJson;
  std::uint32_t nIndent = 0;
  std::size_t nDepth = 0;
  bool bEmpty = true;  // nothing was written into the innermost container so far
};

}  // namespace

const char* AppendStrict(JsonText& text, const char* p, bool bIndented, std::string& strJson,
                         bool* pbWhole) {
  StrictWriter writer(text, bIndented, strJson);
  const char* const pNext = writer.Value(p, text.Peek(p));
  *pbWhole = writer.bWhole;
  return pNext;
}

const char* EndsWithin(const JsonText& text) {
  return text.eFault == JSON::Fault::kInArray ? "the text ends inside an array"
                                              : "the text ends inside an object";
}

std::string StrictJson(const std::string& strText, bool bIndented, const std::string& strName) {
  std::string strJson;
  bool bWhole = true;
  JsonText text(strText.data() + strText.size(), JSON::kMaxNesting);
  const char* const pBegin = strText.data() + strText.find_first_not_of(kWhiteSpace);
  const char* const pEnd = AppendStrict(text, pBegin, bIndented, strJson, &bWhole);
  if (!pEnd) throw InputError(strName + ": " + EndsWithin(text));
  const auto nRead = static_cast<std::size_t>(pEnd - strText.data());
  if (strText.find_first_not_of(kWhiteSpace, nRead) != std::string::npos) {
    throw InputError(strName + ": text behind the document");
  }
  return strJson;
}

}  // namespace qxrs

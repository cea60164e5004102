// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The plain parser, and the comparison of its values with the library's.

#include "tests/support/PlainParser.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "tests/support/PlainEscape.h"

namespace Plain {
namespace {

bool IsIn(char c, const char* set) { return c != '\0' && std::strchr(set, c) != nullptr; }

// Reads one document. The functions return the type they read, or -1, as the library's do.
class Reader {
 public:
  explicit Reader(std::string& text) : strBuffer(text), nEnd(text.size()) {}

  std::size_t Cursor() const { return nCursor; }

  // The next byte that is no white space; NUL where the text ends.
  char Peek() {
    while (!Ended() && IsIn(Byte(), " \t\f\n\r"))
      ++nCursor;
    return Ended() ? '\0' : Byte();
  }

  // The cursor stands on the opening bracket of the container that `value` is to hold.
  int Container(Value& value) {
    value.bContainer = true;
    value.bObject = Byte() == '{';
    if (nDepth == JSON::kMaxNesting) return -1;
    ++nDepth;
    value.eContainerType = value.bObject ? Object(value) : Array(value);
    --nDepth;
    return value.eContainerType;
  }

 private:
  bool Ended() const { return nCursor == nEnd || strBuffer[nCursor] == '\0'; }
  char Byte() const { return strBuffer[nCursor]; }

  int Object(Value& object) {
    ++nCursor;
    if (Ended()) return -1;
    if (Peek() == '}') {
      ++nCursor;
      return JSON::jtObject;
    }
    while (Peek() != '\0') {
      Value name;
      if (Byte() != '"' || String(name) < 0) return -1;
      object.vNames.push_back(*name.text);
      if (Peek() != ':') return -1;
      ++nCursor;
      if (Element(object) < 0 || !IsIn(Peek(), ",}")) return -1;
      if (strBuffer[nCursor++] == '}') break;
    }
    object.bSorted = true;
    return JSON::jtObject;
  }

  int Array(Value& array) {
    ++nCursor;
    if (Ended()) return -1;
    if (Peek() == '\0') return JSON::jtArray;
    if (Peek() == ']') {
      ++nCursor;
      return JSON::jtArray;
    }
    while (true) {
      if (IsIn(Peek(), ",]")) {
        array.vValues.emplace_back().eType = JSON::jtNull;
      } else if (Element(array) < 0) {
        return -1;
      }
      if (!IsIn(Peek(), ",]")) return -1;
      if (strBuffer[nCursor++] == ']' || Ended()) return JSON::jtArray;
    }
  }

  // A value that becomes the last one of `parent`.
  int Element(Value& parent) {
    if (!IsIn(Peek(), "\"+-0123456789tfn[{")) return -1;
    Value value;
    value.eType = IsIn(Byte(), "[{") ? Container(value) : Scalar(value);
    const int eType = value.eType;
    parent.vValues.push_back(std::move(value));
    return eType;
  }

  int Scalar(Value& value) {
    if (Byte() == '"') return String(value);
    if (Literal("true", value) || Literal("false", value)) return JSON::jtBoolean;
    if (Literal("null", value)) return JSON::jtNull;
    return IsIn(Byte(), "tfn") ? -1 : Number(value);
  }

  bool Literal(std::string_view literal, Value& value) {
    if (strBuffer.compare(nCursor, literal.size(), literal) != 0) return false;
    Take(value, nCursor, nCursor + literal.size());
    nCursor += literal.size();
    return true;
  }

  // The last byte of the text is never counted, but readers find it.
  int Number(Value& value) {
    const std::size_t nStart = nCursor;
    int eType = JSON::jtInteger;
    for (; nCursor + 1 < nEnd && IsIn(Byte(), "+-0123456789.eE"); ++nCursor) {
      if (IsIn(Byte(), ".eE")) eType = JSON::jtDouble;
    }
    Take(value, nStart, nCursor);
    if (IsIn(Byte(), "+-0123456789.eE")) value.strRest = Byte();
    return eType;
  }

  int String(Value& value) {
    const std::size_t nStart = ++nCursor;
    std::size_t nRead = nStart;
    std::size_t nWrite = nStart;
    while (nRead < nEnd && strBuffer[nRead] != '"') {
      const char c = strBuffer[nRead++];
      if (c != '\\') {
        strBuffer[nWrite++] = c;
      } else if (nRead == nEnd || !Escape(nRead, nWrite)) {
        return -1;
      }
    }
    if (nRead == nEnd) return -1;
    strBuffer[nWrite] = '\0';
    Take(value, nStart, nWrite);
    nCursor = nRead + 1;
    return JSON::jtString;
  }

  // Turns the escape whose backslash was read into its bytes.
  bool Escape(std::size_t& nRead, std::size_t& nWrite) {
    const char c = strBuffer[nRead++];
    if (c != 'u') {
      const std::size_t nLetter = std::string_view("bfnrt").find(c);
      strBuffer[nWrite++] = nLetter == std::string_view::npos ? c : "\b\f\n\r\t"[nLetter];
      return true;
    }
    if (nEnd - nRead < 4) return false;
    const unsigned long n = std::strtoul(strBuffer.substr(nRead, 4).c_str(), nullptr, 16);
    nRead += 4;
    if (n > 0x7FF) Write(nWrite, 0xE0 | ((n >> 12) & 0x0F));
    if (n > 0x7F) Write(nWrite, n > 0x7FF ? 0x80 | ((n >> 6) & 0x3F) : 0xC0 | (n >> 6));
    Write(nWrite, n > 0x7F ? 0x80 | (n & 0x3F) : n);
    return true;
  }

  void Write(std::size_t& nWrite, unsigned long byte) {
    strBuffer[nWrite++] = static_cast<char>(static_cast<unsigned char>(byte));
  }

  void Take(Value& value, std::size_t nFrom, std::size_t nTo) {
    value.text = strBuffer.substr(nFrom, nTo - nFrom);
    value.nAt = nFrom;
  }

  std::string& strBuffer;
  std::size_t nEnd;
  std::size_t nCursor = 0;
  int nDepth = 0;  // containers open
};

// All the text that readers find.
std::string Whole(const Value& value) { return value.text.value_or("") + value.strRest; }

using Entry = JSON::ObjectValue::NameMap;

// The order of names: by length, then by bytes up to a NUL; equal names keep their own.
bool IsBefore(const Entry& a, const Entry& b) {
  if (a.nLength != b.nLength) return a.nLength < b.nLength;
  const int nOrder = std::strncmp(a.pName, b.pName, static_cast<std::size_t>(a.nLength));
  return nOrder != 0 ? nOrder < 0 : a.nOrdinal < b.nOrdinal;
}

// What of the names is wrong, or of the index that a parse left. Read as a constant, the index
// stays where it is, be it shared with other objects.
std::string NamesDifference(const Value& want, const JSON::ObjectValue& got, bool bParsed) {
  const auto& index = std::as_const(got.vNameMap);
  std::vector<std::string> vNames(index.size());
  for (std::size_t i = 0; i < index.size(); ++i) {
    const Entry& entry = index[i];
    const auto nOrdinal = static_cast<std::size_t>(entry.nOrdinal);
    vNames.at(nOrdinal) = {entry.pName, static_cast<std::size_t>(entry.nLength)};
    if (!bParsed) continue;
    const bool bPlaced =
        want.bSorted ? (i == 0 || IsBefore(index[i - 1], entry)) &&
                           got.GetByOrdinal(entry.nOrdinal)->nNameIndex == static_cast<int>(i)
                     : nOrdinal == i;
    if (!bPlaced) return ": the index of names";
  }
  if (bParsed && static_cast<bool>(got.bSorted) != want.bSorted)
    return ": whether names are sorted";
  if (vNames.size() < want.vValues.size()) return ": too few names";
  const auto pEnd = vNames.begin() + static_cast<std::ptrdiff_t>(want.vValues.size());
  const bool bSame =
      bParsed ? vNames == want.vNames : std::equal(vNames.begin(), pEnd, want.vNames.begin());
  return bSame ? "" : ": names";
}

// `pStart` is the buffer of a tree that was parsed and not changed since.
std::string TreeDifference(const Value& want, const JSON::JSONValue& got, const char* pStart) {
  const bool bHasText = got.pText != nullptr;
  const std::string strText(bHasText ? got.pText : "",
                            bHasText ? static_cast<std::size_t>(got.nLength) : 0);
  const bool bParsed = pStart != nullptr;
  // A private copy of a text has all that readers find, up to a NUL. Nobody reads a container's.
  const bool bCounted = want.strRest.empty();
  const bool bCopied = strText == Whole(want).c_str() && (!bParsed || !bCounted);
  const bool bSameText = want.text == (bHasText ? std::optional(strText) : std::nullopt);
  if (want.eType != got.eType || (!bSameText && !bCopied && (!want.bContainer || bParsed))) {
    return ": type " + std::to_string(got.eType) + ", text " + Printable(strText) +
           " instead of type " + std::to_string(want.eType) + ", text " + Printable(Whole(want));
  }
  if (bParsed && bCounted && bHasText && got.pText != pStart + want.nAt) return ": its place";
  if (want.bContainer != (got.pComposite != nullptr)) return ": a container";
  if (!want.bContainer) return "";
  if (static_cast<int>(want.vValues.size()) != got.Size()) return ": its size";
  const auto* const pObject = dynamic_cast<const JSON::ObjectValue*>(got.pComposite);
  if (want.bObject != (pObject != nullptr)) return ": its kind";
  if (bParsed && want.eContainerType != got.pComposite->eType) return ": its own type";
  std::string strDifference = want.bObject ? NamesDifference(want, *pObject, bParsed) : "";
  for (int i = 0; i < got.Size() && strDifference.empty(); ++i) {
    strDifference =
        TreeDifference(want.vValues[static_cast<std::size_t>(i)], *got.GetByOrdinal(i), pStart);
    if (!strDifference.empty()) strDifference.insert(0, '/' + std::to_string(i));
  }
  return strDifference;
}

// Whether `key` is found by its length, with more text behind it, and by its NUL where it has no
// other; that is, the first of the keys with its length and its bytes, the latter up to a NUL.
bool FindsFirst(const JSON::CompositeValue& got, bool bSearched,
                const std::vector<std::string>& vKeys, const std::string& key, bool bObject) {
  const auto first = std::find_if(vKeys.begin(), vKeys.end(), [&](const std::string& other) {
    return other.size() == key.size() && std::strncmp(other.data(), key.data(), key.size()) == 0;
  });
  const bool bFound = bSearched && first != vKeys.end();
  const int nOrdinal = bFound ? static_cast<int>(first - vKeys.begin()) : -1;
  const std::string strMore = key + "tail";
  const auto nLength = static_cast<int>(key.size());
  return got.OrdinalOf(strMore.c_str(), nLength) == nOrdinal &&
         (key.find('\0') != std::string::npos || got.OrdinalOf(key.c_str(), -1) == nOrdinal) &&
         (!bObject || got.GetByName(strMore.c_str(), nLength) == got.GetByOrdinal(nOrdinal));
}

int ClampedToInt(double d) {
  if (d != d) return 0;
  return static_cast<int>(std::clamp(d, double{INT_MIN}, double{INT_MAX}));
}

// What the readers make of a scalar's text: what strtol and strtod do.
bool ReadsAs(const Value& expected, const JSON::JSONValue& value) {
  const std::string strText = Whole(expected);
  double d = 0;
  if (expected.eType == JSON::jtInteger) {
    d = ClampedToInt(static_cast<double>(std::strtoll(strText.c_str(), nullptr, 10)));
  }
  if (expected.eType == JSON::jtDouble) d = std::strtod(strText.c_str(), nullptr);
  if (expected.eType == JSON::jtBoolean) d = strText[0] == 't' ? 1 : 0;
  const bool bTrue = expected.eType == JSON::jtString ? strText[0] != '\0' : !(d == 0.0);
  const double dRead = value.AsDouble();
  return value.AsInt() == ClampedToInt(d) && std::memcmp(&dRead, &d, sizeof d) == 0 &&
         value.AsBoolean() == bTrue;
}

// What lookups answer in every container of the tree, for names and texts that are there and for
// some that are not. They may sort the indexes of the tree.
std::string LookupDifference(const Value& expected, const JSON::JSONValue& value) {
  if (!ReadsAs(expected, value)) return "what the readers read";
  if (!expected.bContainer) return "";
  const JSON::CompositeValue& container = *value.pComposite;
  // What is looked for: the names of an object, the texts of an array, which are C strings there,
  // and only found when all elements have one.
  std::vector<std::string> vKeys = expected.vNames;
  bool bSearched = true;
  for (const Value& element : expected.vValues) {
    if (expected.bObject) break;
    vKeys.emplace_back(Whole(element).c_str());
    bSearched = bSearched && element.eType == JSON::jtString;
  }
  // With many members a sample will do: every lookup here goes through all of them.
  for (std::size_t i = 0; i < vKeys.size(); i += vKeys.size() / 4 + 1) {
    const std::string& key = vKeys[i];
    const bool bNamed = i < expected.vValues.size() && bSearched &&
                        (expected.bObject || expected.vValues[i].text.has_value());
    const char* pName = container.NameAt(static_cast<int>(i));
    if ((pName != nullptr) != bNamed ||
        (bNamed && std::memcmp(pName, key.c_str(), key.size() + 1) != 0)) {
      return "NameAt " + std::to_string(i);
    }
    std::string strOther = 'x' + key;
    strOther.back() = static_cast<char>(strOther.back() ^ 1);
    for (std::string sought :
         {key, key + 'x', strOther, strOther.substr(1), key.substr(0, key.size() / 2)}) {
      if (!expected.bObject) sought = sought.c_str();
      if (!FindsFirst(container, bSearched, vKeys, sought, expected.bObject)) {
        return "lookup of " + Printable(sought);
      }
    }
  }
  for (std::size_t i = 0; i < expected.vValues.size(); ++i) {
    const JSON::JSONValue& child = *container.GetByOrdinal(static_cast<int>(i));
    const std::string strDifference = LookupDifference(expected.vValues[i], child);
    if (!strDifference.empty()) return std::to_string(i) + '/' + strDifference;
  }
  return "";
}

std::string UseDifference(const Value& expected, const JSON::JSONValue& value) {
  std::string strExpected;
  std::string strWritten;
  if (Write(expected, strExpected) != value.Serialize(strWritten)) return "result of Serialize";
  if (strWritten != strExpected) return "written " + strWritten + " instead of " + strExpected;
  return LookupDifference(expected, value);
}

}  // namespace

bool Write(const Value& value, std::string& strOutput) {
  if (value.eType == JSON::jtNone) return false;
  const std::string strText = Whole(value);
  if (value.bContainer) {
    strOutput += value.bObject ? '{' : '[';
    for (std::size_t i = 0; i < value.vValues.size(); ++i) {
      if (i > 0) strOutput += ',';
      if (value.bObject) strOutput += '"' + Escape(value.vNames[i]) + "\":";
      if (!Write(value.vValues[i], strOutput)) return false;
    }
    strOutput += value.bObject ? '}' : ']';
  } else if (value.eType == JSON::jtString) {
    strOutput += '"' + Escape(strText) + '"';
  } else if (value.eType == JSON::jtInteger || value.eType == JSON::jtDouble) {
    const char* kBytes = value.eType == JSON::jtInteger ? "+-0123456789" : "+-0123456789.eE";
    strOutput += strText.substr(0, strText.find_first_not_of(kBytes));
  } else if (value.eType == JSON::jtBoolean) {
    strOutput += strText[0] == 't' ? "true" : "false";
  } else {
    strOutput += "null";
  }
  return true;
}

std::string Printable(std::string_view text) {
  std::string strOutput;
  for (const char c : text) {
    char szHex[8] = {c};
    if (c < ' ' || c > '~') std::snprintf(szHex, sizeof szHex, "\\x%02X", c & 0xFF);
    strOutput += szHex;
  }
  return strOutput;
}

Document Parse(std::string_view text) {
  Document document;
  document.strBuffer = text;
  Reader reader(document.strBuffer);
  if (IsIn(reader.Peek(), "[{")) {
    document.bRoot = true;
    document.bAccepted = reader.Container(document.root) >= 0;
    document.root.eType = document.root.bObject ? JSON::jtObject : JSON::jtArray;
  }
  document.nCursor = reader.Cursor();
  return document;
}

std::string Difference(const Document& expected, const JSON::Message& message) {
  const auto nCursor = static_cast<std::size_t>(message.pCursor - message.pStart);
  if (nCursor != expected.nCursor) return "cursor " + std::to_string(nCursor);
  const auto nEnd = static_cast<std::size_t>(message.pEnd - message.pStart);
  if (nEnd != expected.strBuffer.size()) return "end " + std::to_string(nEnd);
  const std::string strDifference = TreeDifference(expected.root, message, message.pStart);
  return strDifference.empty() ? UseDifference(expected.root, message) : strDifference;
}

std::string Difference(const Value& expected, const JSON::JSONValue& value) {
  const std::string strDifference = TreeDifference(expected, value, nullptr);
  return strDifference.empty() ? UseDifference(expected, value) : strDifference;
}

}  // namespace Plain

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The plain parser, and the comparison of its values with the library's.

#include "tests/support/PlainParser.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <utility>

#include "tests/support/PlainEscape.h"

namespace Plain {
namespace {

bool IsIn(char c, const char* set) { return c != '\0' && std::strchr(set, c) != nullptr; }

// Reads one document. The functions return the type they read, or -1, as the library's do.
class Reader {
 public:
  explicit Reader(std::string& text) : strBuffer(text), nEnd(text.size()) {}

  bool Ended() const { return nCursor == nEnd || strBuffer[nCursor] == '\0'; }
  char Byte() const { return strBuffer[nCursor]; }
  std::size_t Cursor() const { return nCursor; }

  void SkipSpace() {
    while (!Ended() && IsIn(Byte(), " \t\f\n\r"))
      ++nCursor;
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
  int Object(Value& object) {
    ++nCursor;
    if (Ended()) return -1;
    SkipSpace();
    if (!Ended() && Byte() == '}') {
      ++nCursor;
      return JSON::jtObject;
    }
    while (!Ended()) {
      Value name;
      if (Byte() != '"' || String(name) < 0) return -1;
      object.vNames.push_back(*name.text);
      SkipSpace();
      if (Ended() || Byte() != ':') return -1;
      ++nCursor;
      if (Element(object) < 0) return -1;
      SkipSpace();
      if (Ended() || !IsIn(Byte(), ",}")) return -1;
      if (strBuffer[nCursor++] == '}') break;
      SkipSpace();
    }
    object.bSorted = true;
    return JSON::jtObject;
  }

  int Array(Value& array) {
    ++nCursor;
    if (Ended()) return -1;
    SkipSpace();
    if (Ended()) return JSON::jtArray;
    if (Byte() == ']') {
      ++nCursor;
      return JSON::jtArray;
    }
    while (true) {
      SkipSpace();
      if (!Ended() && IsIn(Byte(), ",]")) {
        array.vValues.emplace_back().eType = JSON::jtNull;
      } else if (Element(array) < 0) {
        return -1;
      }
      SkipSpace();
      if (Ended() || !IsIn(Byte(), ",]")) return -1;
      if (strBuffer[nCursor++] == ']' || Ended()) return JSON::jtArray;
    }
  }

  // A value that becomes the last one of `parent`.
  int Element(Value& parent) {
    SkipSpace();
    if (Ended() || !IsIn(Byte(), "\"+-0123456789tfn[{")) return -1;
    Value value;
    value.eType = IsIn(Byte(), "[{") ? Container(value) : Scalar(value);
    const int eType = value.eType;
    parent.vValues.push_back(std::move(value));
    return eType;
  }

  int Scalar(Value& value) {
    switch (Byte()) {
      case '"':
        return String(value);
      case 't':
      case 'f':
        return Literal("true", value) || Literal("false", value) ? JSON::jtBoolean : -1;
      case 'n':
        return Literal("null", value) ? JSON::jtNull : -1;
      default:
        return Number(value);
    }
  }

  bool Literal(std::string_view literal, Value& value) {
    if (strBuffer.compare(nCursor, literal.size(), literal) != 0) return false;
    Take(value, nCursor, nCursor + literal.size());
    nCursor += literal.size();
    return true;
  }

  // The last byte of the text never belongs to a number.
  int Number(Value& value) {
    const std::size_t nStart = nCursor;
    int eType = JSON::jtInteger;
    for (; nCursor + 1 < nEnd && IsIn(Byte(), "+-0123456789.eE"); ++nCursor) {
      if (IsIn(Byte(), ".eE")) eType = JSON::jtDouble;
    }
    Take(value, nStart, nCursor);
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
    if (n <= 0x7F) {
      Write(nWrite, n);
    } else if (n <= 0x7FF) {
      Write(nWrite, 0xC0 | ((n >> 6) & 0x1F));
      Write(nWrite, 0x80 | (n & 0x3F));
    } else {
      Write(nWrite, 0xE0 | ((n >> 12) & 0x0F));
      Write(nWrite, 0x80 | ((n >> 6) & 0x3F));
      Write(nWrite, 0x80 | (n & 0x3F));
    }
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

// The two outlines show the same of a value. Of a parsed one: its letter (x invalid, ? none, n
// null, b boolean, i integer, d double, s string), where its text lies, and of a container the
// index of its names, its values with their name indexes, and its own type. Of any other: letter,
// text, names and values.
constexpr char kLetters[] = "x?nbids[{";

std::string Place(std::size_t nAt, std::size_t nLength) {
  return '<' + std::to_string(nAt) + '+' + std::to_string(nLength) + '>';
}
std::string Entry(const std::string& name, std::size_t nOrdinal) {
  return name + '=' + std::to_string(nOrdinal) + ' ';
}
std::string End(bool bObject, int eContainerType, bool bSorted) {
  return (bObject ? "}" : "]") + std::to_string(eContainerType) + (bSorted ? "sorted" : "");
}

// The members in the order of a sorted name index: equal names in document order.
std::vector<std::size_t> NameOrder(const Value& object) {
  std::vector<std::size_t> vOrder(object.vNames.size());
  std::iota(vOrder.begin(), vOrder.end(), std::size_t(0));
  if (!object.bSorted) return vOrder;
  std::stable_sort(vOrder.begin(), vOrder.end(), [&](std::size_t i, std::size_t k) {
    const std::string& a = object.vNames[i];
    const std::string& b = object.vNames[k];
    if (a.size() != b.size()) return a.size() < b.size();
    return std::strncmp(a.data(), b.data(), a.size()) < 0;
  });
  return vOrder;
}

void Outline(const Value& value, bool bParsed, std::string& strOutput) {
  strOutput += kLetters[value.eType + 1];
  if (value.text) {
    strOutput += bParsed ? Place(value.nAt, value.text->size()) : '<' + *value.text + '>';
  }
  if (!value.bContainer) return;
  strOutput += value.bObject ? '{' : '[';
  std::vector<std::size_t> vNameIndexes(value.vValues.size() + 1, 0);
  if (bParsed && value.bObject) {
    std::size_t nIndex = 0;
    for (const std::size_t n : NameOrder(value)) {
      strOutput += Entry(value.vNames[n] + '\0', n);
      if (value.bSorted) vNameIndexes[n] = nIndex++;
    }
  }
  for (std::size_t i = 0; i < value.vValues.size(); ++i) {
    if (bParsed) strOutput += std::to_string(vNameIndexes[i]);
    if (!bParsed && value.bObject) strOutput += value.vNames[i].c_str() + std::string(":");
    Outline(value.vValues[i], bParsed, strOutput);
  }
  strOutput += bParsed ? End(value.bObject, value.eContainerType, value.bSorted) : "]";
}

// `pStart` is the buffer of a parsed value, and null for any other.
void Outline(const JSON::JSONValue& value, const char* pStart, std::string& strOutput) {
  const bool bParsed = pStart != nullptr;
  const auto nLength = static_cast<std::size_t>(value.nLength);
  strOutput += kLetters[value.eType + 1];
  if (value.pText != nullptr) {
    strOutput += bParsed ? Place(static_cast<std::size_t>(value.pText - pStart), nLength)
                         : '<' + std::string(value.pText, nLength) + '>';
  }
  if (bParsed && value.bOwnsText) strOutput += "owned";
  if (value.pComposite == nullptr) return;
  const auto* pObject = dynamic_cast<const JSON::ObjectValue*>(value.pComposite);
  strOutput += pObject != nullptr ? '{' : '[';
  if (bParsed && pObject != nullptr) {
    // Read as a constant, the index stays where it is, be it shared with other objects.
    for (const JSON::ObjectValue::NameMap& entry : std::as_const(pObject->vNameMap)) {
      strOutput += Entry({entry.pName, static_cast<std::size_t>(entry.nLength) + 1},
                         static_cast<std::size_t>(entry.nOrdinal));
      if (entry.bOwnsName) strOutput += "owned";
    }
  }
  for (int i = 0; i < value.Size(); ++i) {
    const JSON::JSONValue& child = *value.GetByOrdinal(i);
    if (bParsed) strOutput += std::to_string(child.nNameIndex);
    if (!bParsed && pObject != nullptr) strOutput += pObject->NameAt(i) + std::string(":");
    Outline(child, pStart, strOutput);
  }
  const JSON::CompositeValue& container = *value.pComposite;
  const bool bSorted = pObject != nullptr && pObject->bSorted;
  strOutput += bParsed ? End(pObject != nullptr, container.eType, bSorted) : "]";
}

std::string FirstDifference(const std::string& wanted, const std::string& got) {
  if (wanted == got) return "";
  const auto differing = std::mismatch(wanted.begin(), wanted.end(), got.begin(), got.end());
  const auto nAt = static_cast<std::size_t>(differing.first - wanted.begin());
  const std::size_t nFrom = nAt - std::min<std::size_t>(nAt, 40);
  return Printable(got.substr(nFrom, 80)) + " instead of " + Printable(wanted.substr(nFrom, 80));
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

}  // namespace

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
  if (!text.empty() && text[0] != '\0') reader.SkipSpace();
  if (!reader.Ended() && IsIn(reader.Byte(), "[{")) {
    document.bRoot = true;
    document.bAccepted = reader.Container(document.root) >= 0;
    document.root.eType = document.root.bObject ? JSON::jtObject : JSON::jtArray;
  }
  document.nCursor = reader.Cursor();
  document.strOutline = Place(document.nCursor, text.size());
  Outline(document.root, true, document.strOutline);
  return document;
}

bool Write(const Value& value, std::string& strOutput) {
  if (value.eType == JSON::jtNone) return false;
  const std::string strText = value.text.value_or("");
  if (value.bContainer) {
    strOutput += value.bObject ? '{' : '[';
    for (std::size_t i = 0; i < value.vValues.size(); ++i) {
      if (i > 0) strOutput += ',';
      if (value.bObject) strOutput += '"' + Plain::Escape(value.vNames[i]) + "\":";
      if (!Write(value.vValues[i], strOutput)) return false;
    }
    strOutput += value.bObject ? '}' : ']';
  } else if (value.eType == JSON::jtString) {
    strOutput += '"' + Plain::Escape(strText) + '"';
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

std::string Difference(const Document& expected, const JSON::Message& message) {
  std::string strGot = Place(static_cast<std::size_t>(message.pCursor - message.pStart),
                             static_cast<std::size_t>(message.pEnd - message.pStart));
  Outline(message, message.pStart, strGot);
  return FirstDifference(expected.strOutline, strGot);
}

std::string Difference(const Value& expected, const JSON::JSONValue& value) {
  std::string strWanted;
  std::string strGot;
  Outline(expected, false, strWanted);
  Outline(value, nullptr, strGot);
  return FirstDifference(strWanted, strGot);
}

std::string LookupDifference(const Value& expected, const JSON::JSONValue& value) {
  if (!expected.bContainer) return "";
  const JSON::CompositeValue& container = *value.pComposite;
  // What is looked for: the names of an object, the texts of an array, which are C strings there,
  // and only found when all elements have one.
  std::vector<std::string> vKeys = expected.vNames;
  bool bSearched = true;
  for (const Value& element : expected.vValues) {
    if (expected.bObject) break;
    vKeys.emplace_back(element.text.value_or("").c_str());
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

}  // namespace Plain

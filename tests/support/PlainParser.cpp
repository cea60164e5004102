// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The plain parser, and the comparison of its documents with the library's.

#include "tests/support/PlainParser.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <utility>

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
      object.vNames.push_back(name.text);
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

  static void Take(Value& value, std::size_t nFrom, std::size_t nTo) {
    value.bHasText = true;
    value.text = {nFrom, static_cast<int>(nTo - nFrom)};
  }

  std::string& strBuffer;
  std::size_t nEnd;
  std::size_t nCursor = 0;
  int nDepth = 0;  // containers open
};

std::string OutlineOf(const Document& document, const Value& value) {
  const auto Text = [&](Slice slice) {
    return Printable(
        {document.strBuffer.data() + slice.nStart, static_cast<std::size_t>(slice.nLength)});
  };
  if (!value.bContainer) {
    return "x?nbids"[value.eType + 1] + (value.bHasText ? '<' + Text(value.text) + '>' : "");
  }
  std::string strOutput = value.bObject ? "{" : "[";
  for (std::size_t i = 0; i < std::max(value.vValues.size(), value.vNames.size()); ++i) {
    if (i > 0) strOutput += ' ';
    if (value.bObject) strOutput += Text(value.vNames[i]) + ':';
    if (i < value.vValues.size()) strOutput += OutlineOf(document, value.vValues[i]);
  }
  strOutput += value.bObject ? "}" : "]";
  if (value.eContainerType == JSON::jtInvalid) strOutput += '!';
  if (value.bObject && !value.bSorted) strOutput += '~';
  return strOutput;
}

// Compares one document with one message; keeps the first difference and the path to it.
class Comparison {
 public:
  Comparison(const Document& document, const JSON::Message& got)
      : expected(document), message(got) {}

  std::string Trees() {
    if (message.eType != (expected.bRoot ? expected.root.eType : JSON::jtInvalid)) {
      Differ("type of the message", expected.root.eType, message.eType);
    } else if (Same("text of the message", 0, message.pText != nullptr) &&
               Same("root", expected.bRoot, message.pComposite != nullptr) && expected.bRoot) {
      SameContainer(*message.pComposite, expected.root);
      if (strDifference.empty()) Same("cursor", expected.nCursor, message.pCursor - message.pStart);
      if (strDifference.empty())
        Same("end", expected.strBuffer.size(), message.pEnd - message.pStart);
    }
    return strDifference;
  }

  std::string Lookups() {
    if (expected.bRoot) SameLookups(*message.pComposite, expected.root);
    return strDifference;
  }

 private:
  template <typename Wanted, typename Got>
  bool Same(const char* what, Wanted want, Got got) {
    return static_cast<long long>(want) == static_cast<long long>(got) ||
           Differ(what, static_cast<long long>(want), static_cast<long long>(got));
  }
  bool Differ(const std::string& what, long long nWant, long long nGot) {
    strDifference =
        ": " + what + " should be " + std::to_string(nWant) + ", is " + std::to_string(nGot);
    return false;
  }
  bool At(std::size_t i, bool bSame) {
    if (!bSame) strDifference = "/" + std::to_string(i) + strDifference;
    return bSame;
  }

  const char* Bytes(Slice slice) const { return expected.strBuffer.data() + slice.nStart; }

  bool SameValue(const JSON::JSONValue& got, const Value& want, std::size_t nNameIndex) {
    return Same("type", want.eType, got.eType) &&
           Same("presence of text", want.bHasText, got.pText != nullptr) &&
           (!want.bHasText || Same("text offset", want.text.nStart, got.pText - message.pStart)) &&
           Same("length", want.text.nLength, got.nLength) &&
           Same("ownership of text", false, got.bOwnsText) &&
           Same("name index", nNameIndex, got.nNameIndex) &&
           Same("presence of a container", want.bContainer, got.pComposite != nullptr) &&
           (!want.bContainer || SameContainer(*got.pComposite, want));
  }

  bool SameContainer(const JSON::CompositeValue& got, const Value& want) {
    if (!Same("container type", want.eContainerType, got.eType)) return false;
    const auto* pObject = dynamic_cast<const JSON::ObjectValue*>(&got);
    if (!Same("being an object", want.bObject, pObject != nullptr)) return false;
    const auto& array =
        want.bObject ? pObject->avValues : dynamic_cast<const JSON::ArrayValue&>(got);
    if (!Same("size", want.vValues.size(), array.vValues.size()) ||
        !Same("Size()", want.vValues.size(), got.Size()) ||
        !Same("string index", 0, array.vOrdinalMap.size())) {
      return false;
    }
    std::vector<std::size_t> vNameIndexes(want.vValues.size(), 0);
    if (want.bObject && !SameNames(*pObject, want, vNameIndexes)) return false;
    for (std::size_t i = 0; i < want.vValues.size(); ++i) {
      if (!At(i, SameValue(array.vValues[i], want.vValues[i], vNameIndexes[i]))) return false;
    }
    return true;
  }

  // The name index: sorted, equal names in document order, or as read. Fills in where each member's
  // name stands in a sorted one.
  bool SameNames(const JSON::ObjectValue& got, const Value& want,
                 std::vector<std::size_t>& vNameIndexes) {
    // Read as a constant, the index stays where it is, be it shared with other objects.
    const auto& vNameMap = std::as_const(got.vNameMap);
    if (!Same("number of names", want.vNames.size(), vNameMap.size()) ||
        !Same("being sorted", want.bSorted, got.bSorted)) {
      return false;
    }
    std::vector<std::size_t> vOrder(want.vNames.size());
    std::iota(vOrder.begin(), vOrder.end(), std::size_t(0));
    if (want.bSorted) {
      std::stable_sort(vOrder.begin(), vOrder.end(), [&](std::size_t a, std::size_t b) {
        return Compare(want.vNames[a], want.vNames[b]) < 0;
      });
    }
    for (std::size_t i = 0; i < vOrder.size(); ++i) {
      const Slice name = want.vNames[vOrder[i]];
      const JSON::ObjectValue::NameMap& entry = vNameMap[i];
      const auto nLength = static_cast<std::size_t>(name.nLength);
      if (!Same("ordinal of a name", vOrder[i], entry.nOrdinal) ||
          !Same("length of a name", name.nLength, entry.nLength) ||
          !Same("ownership of a name", false, entry.bOwnsName) ||
          !Same("bytes of a name", 0, std::memcmp(entry.pName, Bytes(name), nLength + 1))) {
        return At(vOrder[i], false);
      }
      if (want.bSorted) vNameIndexes[vOrder[i]] = i;
    }
    return true;
  }

  int Compare(Slice a, Slice b) const {
    if (a.nLength != b.nLength) return a.nLength < b.nLength ? -1 : 1;
    return std::strncmp(Bytes(a), Bytes(b), static_cast<std::size_t>(a.nLength));
  }

  bool SameLookups(const JSON::CompositeValue& got, const Value& want) {
    if (want.bObject && !SameLookupsOfObject(dynamic_cast<const JSON::ObjectValue&>(got), want)) {
      return false;
    }
    for (std::size_t i = 0; i < want.vValues.size(); ++i) {
      const Value& child = want.vValues[i];
      const JSON::JSONValue* pGot = got.GetByOrdinal(static_cast<int>(i));
      if (child.bContainer && !At(i, SameLookups(*pGot->pComposite, child))) return false;
    }
    return true;
  }

  bool SameLookupsOfObject(const JSON::ObjectValue& got, const Value& want) {
    // With many members a sample will do: every lookup here goes through all of them.
    const std::size_t nStep = want.vNames.size() / 4 + 1;
    for (std::size_t i = 0; i < want.vNames.size(); i += nStep) {
      const Slice name = want.vNames[i];
      std::string strName(Bytes(name), static_cast<std::size_t>(name.nLength));
      const char* pName = got.NameAt(static_cast<int>(i));
      const bool bMember = i < want.vValues.size();
      if (!Same("presence of NameAt", bMember, pName != nullptr) ||
          (bMember &&
           !Same("NameAt", 0, std::memcmp(pName, strName.c_str(), strName.size() + 1))) ||
          !SameLookup(got, want, strName) || !SameLookup(got, want, strName + 'x')) {
        return At(i, false);
      }
      if (strName.empty()) continue;
      if (!SameLookup(got, want, strName.substr(1))) return At(i, false);
      strName.back() = static_cast<char>(strName.back() ^ 1);
      if (!SameLookup(got, want, strName)) return At(i, false);
    }
    return true;
  }

  // Looks `key` up by its length, with more text behind it, and by its NUL where it has no other.
  bool SameLookup(const JSON::ObjectValue& got, const Value& want, const std::string& key) {
    int nOrdinal = -1;
    for (std::size_t i = 0; i < want.vNames.size() && nOrdinal < 0; ++i) {
      const Slice name = want.vNames[i];
      if (static_cast<std::size_t>(name.nLength) == key.size() &&
          std::strncmp(Bytes(name), key.data(), key.size()) == 0) {
        nOrdinal = static_cast<int>(i);
      }
    }
    const auto nLength = static_cast<int>(key.size());
    const JSON::JSONValue* pFound = got.GetByName((key + "tail").c_str(), nLength);
    return Same("OrdinalOf", nOrdinal, got.OrdinalOf((key + "tail").c_str(), nLength)) &&
           Same("GetByName finding the member of OrdinalOf", true,
                pFound == got.GetByOrdinal(nOrdinal)) &&
           (key.find('\0') != std::string::npos ||
            Same("OrdinalOf without length", nOrdinal, got.OrdinalOf(key.c_str(), -1)));
  }

  const Document& expected;
  const JSON::Message& message;
  std::string strDifference;
};

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
  return document;
}

std::string Outline(const Document& document) {
  return document.bRoot ? OutlineOf(document, document.root) : "";
}

std::string Difference(const Document& expected, const JSON::Message& message) {
  return Comparison(expected, message).Trees();
}

std::string LookupDifference(const Document& expected, const JSON::Message& message) {
  return Comparison(expected, message).Lookups();
}

}  // namespace Plain

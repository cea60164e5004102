// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The flat interface. Input: a text. Every reader, by ordinal, by name and by path, must give what
// the class gives for the same value, and what the C library reads from the value's text.

#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "fuzz/common/Fuzz.h"
#include "json/JSON.h"
#include "json/JSONMessage.h"
#include "tests/support/PlainEscape.h"

namespace {

using JSON::JSONValue;

bool Same(const char* a, const char* b) {
  return a == nullptr || b == nullptr ? a == b : std::strcmp(a, b) == 0;
}
bool Same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

// With all that stands behind it in the document, as the C library is given it.
std::string TextOf(const JSONValue& value) { return value.pText == nullptr ? "" : value.pText; }

unsigned long long UnsignedOf(const JSONValue& value) {
  long long n = value.AsBoolean() ? 1 : 0;
  if (value.eType == JSON::jtInteger) {
    n = 0;
    std::sscanf(TextOf(value).c_str(), "%lld", &n);
  } else if (value.eType == JSON::jtDouble) {
    const double d = std::strtod(TextOf(value).c_str(), nullptr);
    if (!(d > 0)) return 0;
    return d >= 18446744073709551616.0 ? ULLONG_MAX : static_cast<unsigned long long>(d);
  } else if (value.eType != JSON::jtBoolean) {
    return 0;
  }
  return static_cast<unsigned long long>(n);
}

// The class's own readers against the C library.
void CheckValue(const JSONValue& value) {
  const std::string strText = TextOf(value);
  if (value.eType == JSON::jtInteger) {
    const long long n = std::strtoll(strText.c_str(), nullptr, 10);
    const long long nCut = n < INT_MIN ? INT_MIN : n > INT_MAX ? INT_MAX : n;
    Fuzz::Expect(value.AsInt() == nCut, "AsInt of an integer");
    Fuzz::Expect(value.AsDouble() == static_cast<double>(nCut), "AsDouble of an integer");
  } else if (value.eType == JSON::jtDouble) {
    Fuzz::Expect(Same(value.AsDouble(), std::strtod(strText.c_str(), nullptr)), "AsDouble");
  }
}

class Session {
 public:
  explicit Session(const char* szText) {
    const bool bAccepted = message.Parse(szText, -1);
    Fuzz::Expect(JSON_ParseMessage(handle, szText) == (bAccepted ? 1 : 0), "the result");
    Fuzz::Expect(JSON_MessageSize(handle) == message.Size(), "the size");
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() { JSON_FreeMessage(handle); }

  void Run() {
    for (int i = -1; i <= message.Size(); ++i)
      CheckOrdinal(i);
    CheckName("");
    CheckName(nullptr);
    CheckName("rows");
    CheckPath(message, "");
  }

 private:
  void CheckOrdinal(int n) {
    const JSONValue& value = std::as_const(message)[n];
    CheckValue(value);
    Fuzz::Expect(JSON_IsOrdinalNull(handle, n) == IsNull(value), "IsOrdinalNull");
    Fuzz::Expect(Same(JSON_GetOrdinalAsString(handle, n), StringOf(value)), "OrdinalAsString");
    Fuzz::Expect(JSON_GetOrdinalAsInt(handle, n) == value.AsInt(), "OrdinalAsInt");
    Fuzz::Expect(Same(JSON_GetOrdinalAsDouble(handle, n), value.AsDouble()), "OrdinalAsDouble");
    Fuzz::Expect(JSON_GetOrdinalAsUnsignedLong64(handle, n) == UnsignedOf(value),
                 "OrdinalAsUnsignedLong64");
    if (message.eType == JSON::jtObject) CheckName(message.pComposite->NameAt(n));
  }

  void CheckName(const char* name) {
    const JSONValue& value = std::as_const(message)[name];
    Fuzz::Expect(JSON_IsNameNull(handle, name) == IsNull(value), "IsNameNull");
    Fuzz::Expect(Same(JSON_GetNameAsString(handle, name), StringOf(value)), "NameAsString");
    Fuzz::Expect(JSON_GetNameAsInt(handle, name) == value.AsInt(), "NameAsInt");
    Fuzz::Expect(Same(JSON_GetNameAsDouble(handle, name), value.AsDouble()), "NameAsDouble");
    Fuzz::Expect(JSON_GetNameAsUnsignedLong64(handle, name) == UnsignedOf(value),
                 "NameAsUnsignedLong64");
  }

  // The path that leads to `value`, and those of what is in it. A name is found by its path when it
  // is the first of its kind and holds neither '.' nor NUL.
  void CheckPath(const JSONValue& value, const std::string& path) {
    const JSONValue& found = message.Path(path.c_str());
    Fuzz::Expect(JSON_IsPathNull(handle, path.c_str()) == IsNull(found), "IsPathNull");
    Fuzz::Expect(Same(JSON_GetPathAsString(handle, path.c_str()), StringOf(found)), "PathAsString");
    Fuzz::Expect(JSON_GetPathAsInt(handle, path.c_str()) == found.AsInt(), "PathAsInt");
    Fuzz::Expect(Same(JSON_GetPathAsDouble(handle, path.c_str()), found.AsDouble()),
                 "PathAsDouble");
    if (value.pComposite == nullptr || --nPathsLeft < 0) return;
    for (int i = 0; i < value.Size() && nPathsLeft > 0; ++i) {
      const JSONValue& inside = *value.GetByOrdinal(i);
      std::string strSegment = std::to_string(i);
      bool bReachable = true;
      if (dynamic_cast<const JSON::ObjectValue*>(value.pComposite) != nullptr) {
        strSegment = value.pComposite->NameAt(i);
        bReachable = value.GetByName(strSegment.c_str(), -1) == &inside &&
                     strSegment.find('.') == std::string::npos &&
                     !(path.empty() && strSegment.empty());
      }
      const std::string strPath = path.empty() ? strSegment : path + '.' + strSegment;
      if (bReachable) {
        Fuzz::Expect(&message.Path(strPath.c_str()) == &inside, "a path leads to its value");
        CheckPath(inside, strPath);
      } else {
        message.Path(strPath.c_str());
      }
    }
  }

  static int IsNull(const JSONValue& value) { return value.eType == JSON::jtNull ? 1 : 0; }
  static const char* StringOf(const JSONValue& value) {
    return value.eType == JSON::jtString ? value.pText : nullptr;
  }

  JSON_HANDLE handle = JSON_AllocMessage();
  JSON::Message message;
  int nPathsLeft = 30;  // deep paths are long, and so is what they cost
};

void CheckEscape(const std::string& text) {
  const std::string strEscaped = Plain::Escape(text);
  for (const std::size_t nRoom : {strEscaped.size() + 1, strEscaped.size() + 2}) {
    std::string strBuffer(nRoom, '#');
    char* pDest = strBuffer.data();
    const int nWritten = JSON_EscapeString(&pDest, pDest + nRoom, text.c_str());
    Fuzz::Expect(nWritten == (nRoom > strEscaped.size() + 1 ? 1 : 0), "whether it fits");
    if (nWritten == 1) Fuzz::ExpectEqual(strBuffer.c_str(), strEscaped, "the escaped text");
  }
}

}  // namespace

void Fuzz::Run(std::string_view input) {
  const std::string strInput(input.substr(0, input.find('\0')));
  Session(strInput.c_str()).Run();
  CheckEscape(strInput);
}

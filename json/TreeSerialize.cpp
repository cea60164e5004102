// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A tree writes itself as compact JSON text. Scalars are written from the text they hold, numbers
// as far as their bytes can belong to one. A host's own containers write themselves.

#include <cstddef>
#include <cstdint>
#include <string>

#include "json/Items.h"
#include "json/JSONSerialize.h"
#include "json/JSONValue.h"
#include "json/Levels.h"
#include "json/ScalarText.h"
#include "json/Storage.h"

namespace JSON {
namespace {

void AppendQuoted(std::string& output, const char* pText) {
  output += '"';
  if (pText != nullptr) {
    EscapeString(output, pText);
  }
  output += '"';
}

// REQUIRES: the value has no container.
void AppendScalar(std::string& output, const JSONValue& value) {
  switch (value.eType) {
    case jtString:
      AppendQuoted(output, value.pText);
      break;
    case jtInteger:
    case jtDouble:
      output += ScalarText(value);
      break;
    case jtBoolean:
      output += value.pText != nullptr && *value.pText == 't' ? "true" : "false";
      break;
    default:
      output += "null";
      break;
  }
}

class TreeWriter {
 public:
  explicit TreeWriter(std::string& output) : output_(output) {}

  // Writes a container of ours with everything below it; false when it met an empty value.
  bool Write(const ArrayValue& array) {
    Open(array);
    return WriteLevels();
  }
  bool Write(const ObjectValue& object) {
    Open(object);
    return WriteLevels();
  }

 private:
  // A container of which the elements before nNext are written.
  struct Level {
    const ArrayValue* pElements;
    const ObjectValue* pObject;  // null for an array
    std::uint32_t nNext;
  };

  void Open(const ArrayValue& array) {
    output_ += '[';
    levels_.Push({&array, nullptr, 0});
  }
  void Open(const ObjectValue& object) {
    if (!object.bSorted) object.Sort();  // every member's nNameIndex leads to its name
    output_ += '{';
    levels_.Push({&object.avValues, &object, 0});
  }

  bool WriteLevels() {
    while (!levels_.IsEmpty()) {
      if (!WriteElements(levels_.Innermost())) return false;
    }
    return true;
  }

  // Writes elements up to the end of the level, or up to a container, which is then the innermost.
  bool WriteElements(Level& level) {
    const Sequence<UnsafeJSONValue>& values = level.pElements->vValues;
    while (level.nNext != Items::Count(values)) {
      const UnsafeJSONValue& value = Items::Data(values)[level.nNext];
      if (level.nNext++ != 0) output_ += ',';
      if (level.pObject != nullptr) WriteName(*level.pObject, value);
      if (value.eType == jtNone) return false;
      if (value.pComposite == nullptr) {
        AppendScalar(output_, value);
        continue;
      }
      switch (Storage::KindOf(*value.pComposite)) {
        case Storage::Kind::kArray:
          Open(static_cast<const ArrayValue&>(*value.pComposite));
          return true;
        case Storage::Kind::kObject:
          Open(static_cast<const ObjectValue&>(*value.pComposite));
          return true;
        case Storage::Kind::kForeign:
          if (!value.pComposite->Serialize(output_)) return false;
      }
    }
    output_ += level.pObject != nullptr ? '}' : ']';
    levels_.Pop();
    return true;
  }

  void WriteName(const ObjectValue& object, const JSONValue& value) {
    const auto nName = static_cast<std::uint32_t>(value.nNameIndex);
    const bool bNamed = nName < Items::Count(object.vNameMap);
    AppendQuoted(output_, bNamed ? Items::Data(object.vNameMap)[nName].pName : nullptr);
    output_ += ':';
  }

  std::string& output_;
  Levels<Level> levels_;
};

}  // namespace

bool JSONValue::Serialize(std::string& output) const {
  if (eType == jtNone) {
    return false;
  }
  if (pComposite != nullptr) {
    return pComposite->Serialize(output);
  }
  AppendScalar(output, *this);
  return true;
}

bool ArrayValue::Serialize(std::string& output) const { return TreeWriter(output).Write(*this); }
bool ObjectValue::Serialize(std::string& output) const { return TreeWriter(output).Write(*this); }

}  // namespace JSON

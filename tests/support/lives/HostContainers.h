// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Containers of a host's own: subclasses of the library's that notice how they are filled, and a
// kind that the library knows nothing of.

#ifndef QXRECORDSET_TESTS_SUPPORT_LIVES_HOSTCONTAINERS_H
#define QXRECORDSET_TESTS_SUPPORT_LIVES_HOSTCONTAINERS_H

#include "json/JSONValue.h"

namespace Support {

// What was called of a container since the counts were last reset.
struct HostCounts {
  int nCleared = 0;
  int nNames = 0;
  int nValues = 0;
};

// An ObjectValue or ArrayValue that counts.
template <typename Base>
class Counting : public Base, public HostCounts {
 public:
  using Base::Base;
  Counting* Clone(std::ptrdiff_t nDelta) const override {
    auto* const pClone = new Counting;
    this->CopyTo(*pClone, nDelta);
    return pClone;
  }
  void Clear() override {
    ++nCleared;
    Base::Clear();
  }
  void AddValue(JSON::JSONValue& value) override {
    ++nValues;
    Base::AddValue(value);
  }
};

using HostArray = Counting<JSON::ArrayValue>;

class HostObject : public Counting<JSON::ObjectValue> {
 public:
  using Counting::Counting;
  HostObject* Clone(std::ptrdiff_t nDelta) const override {
    auto* const pClone = new HostObject;
    CopyTo(*pClone, nDelta);
    return pClone;
  }
  void AddName(JSON::JSONValue& name) override {
    ++nNames;
    Counting::AddName(name);
  }
};

// An array by another implementation of the interface.
class HostList : public JSON::CompositeValue {
 public:
  using Value = JSON::JSONValue;
  HostList* Clone(std::ptrdiff_t nDelta) const override {
    auto* const pClone = new HostList;
    array.CopyTo(pClone->array, nDelta);
    return pClone;
  }
  int Size() const override { return array.Size(); }
  void Clear() override { array.Clear(); }
  void AddValue(Value& value) override { array.AddValue(value); }
  Value* GetByOrdinal(int n) const override { return array.GetByOrdinal(n); }
  Value* GetByName(const char* name, int n) const override { return array.GetByName(name, n); }
  const char* NameAt(int n) const override { return array.NameAt(n); }
  int OrdinalOf(const char* name, int n) const override { return array.OrdinalOf(name, n); }
  bool MakeMap() const override { return array.MakeMap(); }
  Value* UpdateByOrdinal(int n, const char* text, JSON::Type type) override {
    return array.UpdateByOrdinal(n, text, type);
  }
  Value* UpdateByName(const char* name, const char* text, JSON::Type type) override {
    return array.UpdateByName(name, text, type);
  }
  bool Serialize(std::string& output) const override { return array.Serialize(output); }

 private:
  JSON::ArrayValue array;
};

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_LIVES_HOSTCONTAINERS_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The document tree: JSON values, and the arrays and objects that hold them.
//
// A parsed document keeps its text in one buffer. Every scalar is a small record (JSONValue) that
// points at its characters in that buffer, so parsing allocates nothing per scalar, and numbers
// stay text until a reader asks for them. Objects and arrays are containers (ObjectValue,
// ArrayValue) that a value points at through pComposite. Only values written by the update
// operations (Set, SetNull) carry a private copy of their text.
//
// Ownership: a JSONValue is a handle and releases nothing. The container whose element it is owns
// its private text and its child container; a JSON::Message (json/JSONMessage.h) owns the root
// container and the text buffer. Pointers and references handed out by lookups stay valid until the
// container that holds the value is next changed.
//
// A host may write the fields of values and names itself. What an element's fields are given, a
// container made with new or a text made with new char[], its container releases. The containers of
// a parsed or copied document lie in its message's memory: they are never deleted by a caller, and
// belong to that message alone. AddValue() and Clone() make copies for other owners.
//
// Threads: one tree is used by one thread at a time. Const lookups count as use: they may sort a
// name index. Distinct trees are independent.
//
// Failures come back by value: a null pointer, an empty value (None()), -1, 0 or false. Nothing
// here throws, exhausted memory (std::bad_alloc) apart.

#ifndef QXRECORDSET_JSON_JSONVALUE_H
#define QXRECORDSET_JSON_JSONVALUE_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "json/Sequence.h"
#include "qxrecordset_export.h"

namespace JSON {

class CompositeValue;
class Items;
class JSONValue;
class NameFinder;
class Storage;
class UnsafeJSONValue;

// What a value is. The numbers are part of the interface.
enum Type : int {
  jtInvalid = -1,  // freshly made, or left behind by a parse that failed there
  jtNone = 0,      // the empty value of a lookup that found nothing
  jtNull = 1,      // null
  jtBoolean = 2,   // true or false; text "true" or "false"
  jtInteger = 3,   // a number written without '.', 'e' and 'E'; text as written
  jtDouble = 4,    // any other number; text as written
  jtString = 5,    // text: the unescaped bytes, NUL-terminated
  jtArray = 6,     // pComposite is an ArrayValue
  jtObject = 7,    // pComposite is an ObjectValue
};

// The root of all values and containers: what they are.
class QXRECORDSET_EXPORT BaseValue {
 public:
  explicit BaseValue(Type type = jtInvalid) noexcept : eType(type) {}
  virtual ~BaseValue();

  Type eType;  // what it is

 protected:
  BaseValue(const BaseValue&) noexcept = default;
  BaseValue& operator=(const BaseValue&) noexcept = default;
};

// One value of a document: a handle on its text or on its container.
class QXRECORDSET_EXPORT JSONValue : public BaseValue {
 public:
  // A value without text and without container.
  explicit JSONValue(Type type = jtInvalid) noexcept : BaseValue(type) {}
  ~JSONValue() override;

  // ---- Looking into a value ---------------------------------------------------------------------

  // Number of elements or members; 0 for a scalar.
  virtual int Size() const;

  // The element or member at 0-based position `ordinal` (members count in document order), or null
  // when there is none. Constant time. Looking changes nothing, but what is found may be changed.
  virtual JSONValue* GetByOrdinal(int ordinal) const;

  // The member of that name, or null. `length` is the number of bytes of `name` to use; a negative
  // one means up to its NUL. An array reads the name as a decimal ordinal, from its first byte and
  // without regard to `length`; a name that does not begin with a number means element 0. When
  // several members share the name, the first in document order is found. The first lookup after a
  // change sorts the member names (n log n), and every further one is a binary search; in large
  // objects that grow, lookups use a hash instead, in constant time.
  virtual JSONValue* GetByName(const char* name, int length) const;

  // The same by index. They give None() or, where the result can be changed, NonConstNone() when
  // there is no such element or member.
  virtual const JSONValue& operator[](int ordinal) const;
  virtual JSONValue& operator[](int ordinal);
  virtual const JSONValue& operator[](const char* name) const;
  virtual JSONValue& operator[](const char* name);

  // Appends the value as compact JSON text to `output` and returns true. Members keep their
  // document order; numbers keep the text they were read or set with; a string ends at its first
  // NUL; a string without text is written as "". An empty value (jtNone) appends nothing and
  // returns false; one that lies inside a container ends the text there and returns false. When
  // memory runs out, a part of the text may have been appended.
  virtual bool Serialize(std::string& output) const;

  // ---- Reading a scalar -------------------------------------------------------------------------
  //
  // The text is converted on every call, from its first byte up to the first one that does not
  // belong to the number or literal; nothing behind that byte is read, and nLength does not matter.
  // A value without text reads as 0, 0.0 and false.

  // The value as a 32-bit integer. Integers outside the range, and reals whose whole part is, give
  // the nearest bound; reals are cut towards zero, not-a-number gives 0; true gives 1; strings,
  // nulls and containers give 0.
  int AsInt() const;

  // The value as a double. An integer is read by AsInt() first, so it is limited to 32 bits; true
  // gives 1.0; strings, nulls and containers give 0.0.
  double AsDouble() const;

  // The same as AsInt() with 64 bits.
  long long AsLong64() const;

  // The same as AsDouble() without a limit for integers: each gives the nearest double.
  double AsReal() const;

  // True for true, for a number that is not zero (not-a-number included) and for a string that is
  // not empty; false for everything else.
  bool AsBoolean() const;

  // The empty values that failed lookups give: type jtNone, nothing else. They are recognised by
  // their address, and no update changes them.
  static const JSONValue& None();
  static JSONValue& NonConstNone();

  // ---- Changing a value in place ----------------------------------------------------------------
  //
  // Stores a value under a member name or at an ordinal of this value and returns the stored value,
  // or None() when nothing was stored: this is an empty value, `name` is null, the ordinal is
  // negative, this is an array and the key a name, or this is an object and the ordinal names no
  // existing member. A value that is no container becomes one first: an object for a name, an array
  // for an ordinal (and keeps it when the update then fails). A name that is new to an object is
  // appended; an ordinal beyond the end of an array fills the gap with nulls. Whatever the slot
  // held before is released. Texts are copied before anything is released, so they may come from
  // the value that is replaced; a string is stored as passed and escaped when it is written. A null
  // text stores a string without text. Doubles are stored as "%g" writes them. When memory runs
  // out, nothing has changed; texts and names of 2 GB and more never fit.

  const JSONValue& Set(const char* name, bool value);
  const JSONValue& Set(const char* name, const char* value);
  const JSONValue& Set(const char* name, double value);
  const JSONValue& Set(const char* name, unsigned long long value);
  const JSONValue& Set(const char* name, unsigned long value);
  const JSONValue& Set(const char* name, long value);
  const JSONValue& Set(const char* name, int value);
  const JSONValue& SetNull(const char* name);

  const JSONValue& Set(int ordinal, bool value);
  const JSONValue& Set(int ordinal, const char* value);
  const JSONValue& Set(int ordinal, double value);
  const JSONValue& Set(int ordinal, unsigned long long value);
  const JSONValue& Set(int ordinal, unsigned long value);
  const JSONValue& Set(int ordinal, long value);
  const JSONValue& Set(int ordinal, int value);
  const JSONValue& SetNull(int ordinal);

  // The common bodies of the operations above: `text` is stored as it stands, as a value of type
  // `type`. They give null where Set gives None().
  JSONValue* InternalUpdateByName(const char* name, const char* text, Type type);
  JSONValue* InternalUpdateByOrdinal(int ordinal, const char* text, Type type);

  // Replaces this value's text by a private copy of `text` (none for a null pointer) and marks it
  // as owned; type and container stay. Only for values that a container holds: it releases the
  // copy.
  void InternalUpdateValue(const char* text);

  // ---- Fields -----------------------------------------------------------------------------------

  int nLength = 0;                       // bytes of text, as parsed or of the private copy
  const char* pText = nullptr;           // see Type; parsed numbers and literals end without a NUL
  CompositeValue* pComposite = nullptr;  // the container of an array or object

  // For a member of an object, the position of its name in the object's sorted name index; for an
  // element of an array of strings whose string index was built, its ordinal. 0 until then.
  mutable int nNameIndex = 0;
  bool bOwnsText = false;  // pText is a private copy that the holding container releases

 protected:
  JSONValue(const JSONValue& other) noexcept;
  JSONValue& operator=(const JSONValue& other) noexcept;
  JSONValue(Type type, const char* text, int length, int nameIndex,
            CompositeValue* composite) noexcept
      : BaseValue(type),
        nLength(length),
        pText(text),
        pComposite(composite),
        nNameIndex(nameIndex) {}
};

// The copyable form of a value, and the element type of the containers. A copy is shallow: both
// refer to the same text and container, so only one of them may be left with a container that
// releases what they refer to.
class QXRECORDSET_EXPORT UnsafeJSONValue : public JSONValue {
 public:
  explicit UnsafeJSONValue(Type type = jtInvalid) noexcept : JSONValue(type) {}
  UnsafeJSONValue(const JSONValue& other) noexcept
      : JSONValue(other) {}  // NOLINT: implicit on purpose
  UnsafeJSONValue(const UnsafeJSONValue& other) noexcept = default;
  UnsafeJSONValue& operator=(const UnsafeJSONValue& other) noexcept = default;
  ~UnsafeJSONValue() override;

 private:
  friend class Items;
  using JSONValue::JSONValue;
};

// What arrays and objects share. A container made by the parser carries jtArray or jtObject in
// eType when its text was read to the end and jtInvalid when it was not; one made otherwise keeps
// jtInvalid.
class QXRECORDSET_EXPORT CompositeValue : public BaseValue {
 public:
  ~CompositeValue() override;

  // A new container with copies of everything in this one; the caller owns it and deletes it. Texts
  // and names that are not owned are not copied: the copy's pointers are moved by `nDelta` bytes,
  // the distance from this document's buffer to the buffer that the copy will belong to. Owned
  // texts and names are duplicated. A tree may be of any depth; a host's own containers are copied
  // by their own Clone(), one within the other.
  virtual CompositeValue* Clone(std::ptrdiff_t nDelta) const = 0;

  // Number of elements or members.
  virtual int Size() const = 0;

  // Releases and removes everything: owned texts, owned names, child containers.
  virtual void Clear() = 0;

  // Appends a field-by-field copy of `value` and from then on owns what its fields point at: the
  // caller gives up a container made with new, and a private text. A container that lies in the
  // memory of a message stays there, and the new element gets a copy of it. Texts in a message's
  // buffer are not copied and must outlive the container. Keeps no index current. An object needs
  // one AddName() for every AddValue().
  virtual void AddValue(JSONValue& value) = 0;

  // Lookups; see JSONValue::GetByOrdinal and JSONValue::GetByName.
  virtual JSONValue* GetByOrdinal(int ordinal) const = 0;
  virtual JSONValue* GetByName(const char* name, int length) const = 0;

  // The name of member `ordinal`; for an array of nothing but strings, the text of that element.
  // Null when there is none, or when the nNameIndex of the member is out of range. The pointer
  // lives as long as the name or element.
  virtual const char* NameAt(int ordinal) const = 0;

  // The ordinal of the member with that name, or -1; for an array of nothing but strings, the
  // ordinal of the first element with that text. A null name gives 0. `length` as in GetByName.
  virtual int OrdinalOf(const char* name, int length) const = 0;

  // Builds the string index of an array. False for an array that holds anything but strings, and
  // for every object. The index follows what is changed through the array, but not what AddValue()
  // appends, nor an element that is given another text or members of its own. Lookups then compare
  // the texts as they are now in an order that may be wrong, and may miss one until the index is
  // built anew.
  virtual bool MakeMap() const = 0;

  // Replace the value at `ordinal`, or under `name`, by a private copy of `text` with type `type`,
  // and return it; null when nothing was stored. See JSONValue::Set for what is refused and what is
  // appended. A null text stores no text.
  virtual JSONValue* UpdateByOrdinal(int ordinal, const char* text, Type type) = 0;
  virtual JSONValue* UpdateByName(const char* name, const char* text, Type type) = 0;

  // Appends the container as compact JSON text; see JSONValue::Serialize.
  virtual bool Serialize(std::string& output) const = 0;

 protected:
  // What a host derives directly from this class is a container of its own kind.
  CompositeValue() noexcept = default;

 private:
  friend class ArrayValue;
  friend class ObjectValue;
  friend class Storage;

  enum class Kind : std::uint8_t { kForeign, kArray, kObject };
  CompositeValue(Kind kind, bool bPool) noexcept : eKind(kind), bInPool(bPool) {}

  const Kind eKind = Kind::kForeign;
  const bool bInPool = false;  // lies in a message's memory pool, which releases it
};

// An array. Its elements' ordinals are their positions.
class QXRECORDSET_EXPORT ArrayValue : public CompositeValue {
 public:
  // An empty array with room for `nReserve` elements. Allocated with new (or held by value) by
  // its owner.
  explicit ArrayValue(int nReserve = 0);
  ArrayValue(const ArrayValue&) = delete;
  ArrayValue& operator=(const ArrayValue&) = delete;
  ~ArrayValue() override;

  ArrayValue* Clone(std::ptrdiff_t nDelta) const override;
  int Size() const override;
  void Clear() override;
  void AddValue(JSONValue& value) override;
  JSONValue* GetByOrdinal(int ordinal) const override;
  JSONValue* GetByName(const char* name, int length) const override;
  const char* NameAt(int ordinal) const override;
  int OrdinalOf(const char* name, int length) const override;
  bool MakeMap() const override;
  JSONValue* UpdateByOrdinal(int ordinal, const char* text, Type type) override;
  JSONValue* UpdateByName(const char* name, const char* text, Type type) override;
  bool Serialize(std::string& output) const override;

  // Appends copies of this array's elements to `target`; see Clone for `nDelta`.
  void CopyTo(ArrayValue& target, std::ptrdiff_t nDelta) const;

  // One entry of the string index: an element's text, and where the element stands.
  struct QXRECORDSET_EXPORT OrdinalMap {
    const char* pText;  // the element's text
    int nOrdinal;       // the element's position

    // Orders entries by their texts, as strcmp does.
    static bool Less(const OrdinalMap& a, const OrdinalMap& b);
  };

  Sequence<UnsafeJSONValue> vValues;         // the elements
  mutable Sequence<OrdinalMap> vOrdinalMap;  // the string index; empty: not built

 private:
  friend class Storage;
  friend class ObjectValue;

  // In a message's memory pool, with room for nRoom elements there.
  ArrayValue(UnsafeJSONValue* pRoom, std::uint32_t nRoom) noexcept
      : CompositeValue(Kind::kArray, true), vValues(pRoom, nRoom) {}
};

// An object. Its members keep their document order (their ordinals); an index of their names,
// sorted by length and then by bytes, is brought up to date by the first lookup that needs it. In
// an object with more than a dozen members that grew since it was sorted, looking for a name does
// not need it: the name is found by a hash, and bSorted stays false.
class QXRECORDSET_EXPORT ObjectValue : public CompositeValue {
 public:
  // An empty object with room for `nReserve` members. Allocated with new (or held by value) by
  // its owner.
  explicit ObjectValue(int nReserve = 0);
  ObjectValue(const ObjectValue&) = delete;
  ObjectValue& operator=(const ObjectValue&) = delete;
  ~ObjectValue() override;

  ObjectValue* Clone(std::ptrdiff_t nDelta) const override;
  int Size() const override;
  void Clear() override;
  void AddValue(JSONValue& value) override;
  JSONValue* GetByOrdinal(int ordinal) const override;
  JSONValue* GetByName(const char* name, int length) const override;
  const char* NameAt(int ordinal) const override;
  int OrdinalOf(const char* name, int length) const override;
  bool MakeMap() const override;
  JSONValue* UpdateByOrdinal(int ordinal, const char* text, Type type) override;
  JSONValue* UpdateByName(const char* name, const char* text, Type type) override;
  bool Serialize(std::string& output) const override;

  // Appends a name for the member whose value is appended next: the text of `name`, which must
  // outlive the object; it is not copied and never released. Keeps no index current.
  virtual void AddName(JSONValue& name);

  // Brings the name index up to date: sorts it (n log n; equal names keep their document order) and
  // gives every member its nNameIndex. Const: it changes bookkeeping only.
  void Sort() const;

  // Copies this object's members and names into `target`; see Clone for `nDelta`.
  void CopyTo(ObjectValue& target, std::ptrdiff_t nDelta) const;

  // One entry of the name index: a member's name, and where the member stands.
  struct QXRECORDSET_EXPORT NameMap {
    const char* pName = nullptr;  // the member's name
    int nLength = 0;              // bytes of name, without the NUL
    bool bOwnsName = false;       // pName is a private copy that the object releases
    int nOrdinal = 0;             // the member's position in document order

    // Orders entries by length first and by bytes (up to a NUL, as strncmp does) second.
    static bool Less(const NameMap& a, const NameMap& b);

    // Replaces the name by a private copy of `name` (none for a null pointer) and marks it as
    // owned.
    void UpdateName(const char* name);
  };

  // A bool to its users. Writing it, whatever the value, makes the object look at its names anew.
  class Order {
   public:
    Order(bool bSorted = false) noexcept  // NOLINT: implicit on purpose
        : eState(bSorted ? kClaimed : kStale), nOrdered(0) {}
    Order(const Order& other) noexcept : Order(static_cast<bool>(other)) {}
    Order& operator=(const Order& other) noexcept {
      eState = other ? kClaimed : kStale;
      return *this;
    }
    ~Order() = default;

    // Whether the names are sorted, or a host said so.
    operator bool() const noexcept {  // NOLINT: implicit on purpose
      return eState == kSorted || eState == kClaimed;
    }

   private:
    friend class NameFinder;
    // See json/NameFinder.h.
    enum State : std::uint32_t { kStale, kSorted, kClaimed, kGrown, kHashed };
    std::uint32_t eState : 3;
    std::uint32_t nOrdered : 29;
  };

  ArrayValue avValues;                 // the member values in document order
  mutable Order bSorted = false;       // vNameMap is sorted and every nNameIndex is right
  mutable Sequence<NameMap> vNameMap;  // one entry per member

 private:
  friend class Storage;

  // In a message's memory pool, with room for nRoom members there.
  ObjectValue(UnsafeJSONValue* pRoom, std::uint32_t nRoom) noexcept
      : CompositeValue(Kind::kObject, true), avValues(pRoom, nRoom) {}
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_JSONVALUE_H

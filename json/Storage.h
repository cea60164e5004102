// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Where containers lie, and who releases what.
//
// The containers that a message reads or copies lie in its memory pool (json/Arena.h), with their
// elements and names right behind them; all others lie on the heap. The pool is released as a
// whole, so one question is left: what in it owns memory outside of it, such as the text that an
// update stored? The rule:
//
//   Elements that were handed out are looked through when they are released. Elements in a pool
//   that were never handed out own nothing, and neither does anything below them.
//
// It holds because a container is reached from outside only through an element of its parent, and
// whatever gives access to elements (a lookup, an update, Sequence itself) notes that in the parent
// before. A const lookup that ends at a scalar hands out nothing: there is nothing to change.
// Builds with assertions look through everything and check the rule.

#ifndef QXRECORDSET_JSON_STORAGE_H
#define QXRECORDSET_JSON_STORAGE_H

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <new>
#include <typeinfo>

#include "json/Arena.h"
#include "json/Items.h"
#include "json/JSONValue.h"

namespace JSON {

class Message;

class Storage {
 public:
  using Kind = CompositeValue::Kind;

  // ---- Containers -------------------------------------------------------------------------------

  // A new empty container with room for `nReserve` elements. In the pool this is one step, and the
  // elements lie right behind their container; without a pool it is made with new.
  template <typename Container>
  static Container* Make(Arena* pArena, std::uint32_t nReserve) {
    if (pArena == nullptr) {
      return new Container(static_cast<int>(nReserve));
    }
    constexpr std::size_t nContainer =
        (sizeof(Container) + Arena::kAlignment - 1) / Arena::kAlignment * Arena::kAlignment;
    char* const p = static_cast<char*>(
        pArena->Allocate(nContainer + std::size_t{nReserve} * sizeof(UnsafeJSONValue)));
    // The room that was just taken, behind the container; all its parts keep the alignment.
    UnsafeJSONValue* const pItems =
        nReserve != 0 ? reinterpret_cast<UnsafeJSONValue*>(p + nContainer) : nullptr;
    return new (p) Container(pItems, nReserve);
  }

  static bool InPool(const CompositeValue& composite) noexcept { return composite.bInPool; }

  // What the container is, exactly: a host's subclass of ours is as foreign as a class of its own.
  static Kind KindOf(const CompositeValue& composite) noexcept {
    if (composite.bInPool) return composite.eKind;  // a host's own never lies there
    const std::type_info& kind =
        composite.eKind == Kind::kArray ? typeid(ArrayValue) : typeid(ObjectValue);
    return typeid(composite) == kind ? composite.eKind : Kind::kForeign;
  }

  // The elements or member values. REQUIRES: the container is of ours, or a subclass.
  static ArrayValue& ElementsOf(CompositeValue& composite) noexcept {
    assert(composite.eKind != Kind::kForeign);
    return composite.eKind == Kind::kArray ? static_cast<ArrayValue&>(composite)
                                           : static_cast<ObjectValue&>(composite).avValues;
  }
  static const ArrayValue& ElementsOf(const CompositeValue& composite) noexcept {
    return ElementsOf(const_cast<CompositeValue&>(composite));
  }

  // The root of a message, which is the first thing in its pool, so that it has the same address
  // each time. MakeRoot() releases what root there is. Defined with the message.
  static CompositeValue& MakeRoot(Message& message, Type type, std::uint32_t nReserve);
  static void ReleaseRoot(Message& message) noexcept;

  // ---- Elements ---------------------------------------------------------------------------------

  // What a lookup in the value finds, or null, without handing it out where value and container are
  // of ours. For callers that give away no way to change it.
  static const JSONValue* Look(const JSONValue& value, const char* name, int length);

  // The ordinal that a name spells, or -1 when there is no such element.
  static int OrdinalIn(const ArrayValue& elements, const char* name);

  // One more element, in the pool or, when there is none, on the heap.
  static UnsafeJSONValue& Append(ArrayValue& array, Arena* pArena, Type type, const char* pText,
                                 int nLength, int nNameIndex, CompositeValue* pComposite) {
    return Items::Append(array.vValues, pArena, type, pText, nLength, nNameIndex, pComposite);
  }
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_STORAGE_H

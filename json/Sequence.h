// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// JSON::Sequence is the array type inside the JSON containers: elements, member names and the
// string index of an array are Sequences. It reads like a std::vector (size, index, iterators) and
// its elements may be changed in place; only the containers themselves make it longer or shorter,
// because its storage may lie in the memory pool of a message or be shared with sibling objects.
// Access to the elements of a Sequence that is not const first gives a shared Sequence storage of
// its own.
//
// A Sequence remembers that its elements were handed out, by itself or by a lookup of its
// container. From then on they may own heap memory, so they are looked through when they are
// released; elements in a memory pool that were never handed out own nothing and are dropped
// unseen.
//
// Pointers and iterators into a Sequence stay valid until the container that holds it is next
// changed. Not safe for use from several threads at once.

#ifndef QXRECORDSET_JSON_SEQUENCE_H
#define QXRECORDSET_JSON_SEQUENCE_H

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <stdexcept>

#include "qxrecordset_export.h"

namespace JSON {

class Items;  // the library's side: growth, sharing, release

// Where the elements of a Sequence lie, and who releases their storage.
enum class Home : std::uint8_t {
  kNone,    // there is no storage
  kHeap,    // a heap block of this sequence alone, which releases it
  kPool,    // a piece of the message's memory pool that this sequence alone uses
  kShared,  // a piece of the pool that siblings use as well: copied before it is changed
};

template <typename T>
class Sequence {
 public:
  // The types that a std::vector names as well.
  using value_type = T;
  using size_type = std::size_t;
  using difference_type = std::ptrdiff_t;
  using reference = T&;
  using const_reference = const T&;
  using iterator = T*;
  using const_iterator = const T*;
  using reverse_iterator = std::reverse_iterator<iterator>;
  using const_reverse_iterator = std::reverse_iterator<const_iterator>;

  Sequence() noexcept = default;
  Sequence(const Sequence&) = delete;
  Sequence& operator=(const Sequence&) = delete;

  // Number of elements, and the number there is room for before the storage moves. A sequence with
  // shared storage reports no room beyond its size.
  size_type size() const noexcept { return nSize; }
  size_type capacity() const noexcept { return nCapacity > nSize ? nCapacity : nSize; }
  bool empty() const noexcept { return nSize == 0; }

  // Element `i`. REQUIRES: i < size().
  T& operator[](size_type i) {
    assert(i < nSize);
    return Own()[i];
  }
  const T& operator[](size_type i) const noexcept {
    assert(i < nSize);
    return Look()[i];
  }

  // The same with a check: std::out_of_range for an index that is too large.
  T& at(size_type i) { return Own()[Checked(i)]; }
  const T& at(size_type i) const { return Look()[Checked(i)]; }

  // First and last element. REQUIRES: not empty.
  T& front() { return (*this)[0]; }
  const T& front() const noexcept { return (*this)[0]; }
  T& back() { return (*this)[nSize - size_type{1}]; }
  const T& back() const noexcept { return (*this)[nSize - size_type{1}]; }

  // The elements as one array; null when nothing was ever stored.
  T* data() { return Own(); }
  const T* data() const noexcept { return Look(); }

  // From the first element to behind the last one.
  iterator begin() { return Own(); }
  iterator end() { return Own() + nSize; }
  const_iterator begin() const noexcept { return Look(); }
  const_iterator end() const noexcept { return Look() + nSize; }
  const_iterator cbegin() const noexcept { return Look(); }
  const_iterator cend() const noexcept { return Look() + nSize; }

  // From the last element to before the first one.
  reverse_iterator rbegin() { return reverse_iterator(end()); }
  reverse_iterator rend() { return reverse_iterator(begin()); }
  const_reverse_iterator rbegin() const noexcept { return const_reverse_iterator(end()); }
  const_reverse_iterator rend() const noexcept { return const_reverse_iterator(begin()); }

 private:
  friend class Items;
  friend class ArrayValue;

  // Without elements, with room for nRoom of them in a memory pool.
  Sequence(T* pRoom, std::uint32_t nRoom) noexcept
      : pItems(pRoom), nCapacity(nRoom), eHome(pRoom != nullptr ? Home::kPool : Home::kNone) {}

  size_type Checked(size_type i) const {
    if (i >= nSize) throw std::out_of_range("JSON::Sequence::at");
    return i;
  }

  // The elements, to be read. What a pointer in an element points at may still be changed.
  const T* Look() const noexcept {
    bHandedOut = true;
    return pItems;
  }

  // The elements, as storage that this sequence alone may change.
  T* Own() {
    bHandedOut = true;
    if (eHome == Home::kShared) Detach();
    return pItems;
  }
  QXRECORDSET_EXPORT void Detach();  // replaces shared storage by a copy on the heap

  T* pItems = nullptr;
  std::uint32_t nSize = 0;          // elements
  std::uint32_t nCapacity = 0;      // elements; 0 when the storage is shared
  Home eHome = Home::kNone;         // of the storage
  mutable bool bHandedOut = false;  // the elements may own heap memory
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_SEQUENCE_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// JSON::Sequence is the array type inside the JSON containers: elements, member names and the string
// index of an array are Sequences. It reads like a std::vector (size, index, iterators) and its
// elements may be changed in place; only the containers themselves make it longer or shorter,
// because its storage may lie in the memory pool of a message or be shared with sibling objects.
//
// Pointers and iterators into a Sequence stay valid until the container that holds it is next
// changed. Not safe for use from several threads at once.

#ifndef QXRECORDSET_JSON_SEQUENCE_H
#define QXRECORDSET_JSON_SEQUENCE_H

#include <cstddef>
#include <cstdint>

namespace JSON {

class SequenceStorage;  // the library's side: growth, sharing, release

template <typename T>
class Sequence {
 public:
  using value_type = T;
  using size_type = std::size_t;
  using difference_type = std::ptrdiff_t;
  using reference = T&;
  using const_reference = const T&;
  using iterator = T*;
  using const_iterator = const T*;

  Sequence() noexcept : nCapacity(0), bOnHeap(0) {}
  Sequence(const Sequence&) = delete;
  Sequence& operator=(const Sequence&) = delete;

  // Number of elements, and the number there is room for before the storage moves. Sequences whose
  // storage is shared report no room beyond their size.
  size_type size() const noexcept { return nSize; }
  size_type capacity() const noexcept { return nCapacity > nSize ? nCapacity : nSize; }
  bool empty() const noexcept { return nSize == 0; }

  // Element `i`. REQUIRES: i < size().
  T& operator[](size_type i) noexcept { return pItems[i]; }
  const T& operator[](size_type i) const noexcept { return pItems[i]; }

  // First and last element. REQUIRES: not empty.
  T& front() noexcept { return pItems[0]; }
  const T& front() const noexcept { return pItems[0]; }
  T& back() noexcept { return pItems[nSize - 1]; }
  const T& back() const noexcept { return pItems[nSize - 1]; }

  // The elements as one array; null when nothing was ever stored.
  T* data() noexcept { return pItems; }
  const T* data() const noexcept { return pItems; }

  iterator begin() noexcept { return pItems; }
  iterator end() noexcept { return pItems + nSize; }
  const_iterator begin() const noexcept { return pItems; }
  const_iterator end() const noexcept { return pItems + nSize; }
  const_iterator cbegin() const noexcept { return pItems; }
  const_iterator cend() const noexcept { return pItems + nSize; }

 private:
  friend class SequenceStorage;

  T* pItems = nullptr;
  std::uint32_t nSize = 0;           // elements
  std::uint32_t nCapacity : 31;  // elements; 0 with nSize > 0 marks shared storage
  std::uint32_t bOnHeap : 1;     // pItems was allocated for this sequence alone
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_SEQUENCE_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Support::GuardedBuffer holds a text whose last byte is followed by an unreadable page: code that
// reads or writes at or beyond the end of the text is stopped on the spot, in every kind of build.

#ifndef QXRECORDSET_TESTS_SUPPORT_GUARDEDBUFFER_H
#define QXRECORDSET_TESTS_SUPPORT_GUARDEDBUFFER_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <new>
#include <string_view>

namespace Support {

class GuardedBuffer {
 public:
  // Room for texts of up to `nCapacity` bytes; it holds the empty text.
  explicit GuardedBuffer(std::size_t nCapacity) {
    const auto nPage = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t nReadable = (nCapacity + nPage - 1) / nPage * nPage;
    nMapped = nReadable + nPage;
    void* pMapped =
        mmap(nullptr, nMapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    pBase = static_cast<char*>(pMapped);
    pEnd = pBase + nReadable;
    if (pMapped == MAP_FAILED || mprotect(pEnd, nPage, PROT_NONE) != 0) throw std::bad_alloc();
  }
  explicit GuardedBuffer(std::string_view text) : GuardedBuffer(text.size()) { Place(text); }
  GuardedBuffer(const GuardedBuffer&) = delete;
  GuardedBuffer& operator=(const GuardedBuffer&) = delete;
  ~GuardedBuffer() { munmap(pBase, nMapped); }

  // Puts `text`, without a NUL, against the unreadable page in place of the text held so far, and
  // returns where it begins. REQUIRES: text.size() is no more than the capacity.
  char* Place(std::string_view text) {
    nSize = text.size();
    if (nSize != 0) std::memcpy(data(), text.data(), nSize);
    return data();
  }

  char* data() const { return pEnd - nSize; }
  int size() const { return static_cast<int>(nSize); }
  std::string_view view() const { return {data(), nSize}; }

 private:
  char* pBase = nullptr;    // first byte of the mapping
  char* pEnd = nullptr;     // first byte of the unreadable page
  std::size_t nMapped = 0;  // bytes, the unreadable page included
  std::size_t nSize = 0;    // bytes of text
};

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_GUARDEDBUFFER_H

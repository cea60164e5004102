// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Tools that follow each piece of memory from its allocation to its release. Under them nothing is
// kept for later, or they would miss what is used after its release.

#ifndef QXRECORDSET_MEMORY_CHECKERS_H
#define QXRECORDSET_MEMORY_CHECKERS_H

#include <cstdint>

#if defined(__SANITIZE_ADDRESS__)
#define QXRECORDSET_ADDRESS_SANITIZER 1
#elif defined(__SANITIZE_THREAD__)
#define QXRECORDSET_OTHER_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QXRECORDSET_ADDRESS_SANITIZER 1
#elif __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define QXRECORDSET_OTHER_SANITIZER 1
#endif
#endif
#ifndef QXRECORDSET_ADDRESS_SANITIZER
#define QXRECORDSET_ADDRESS_SANITIZER 0
#endif
#ifndef QXRECORDSET_OTHER_SANITIZER
#define QXRECORDSET_OTHER_SANITIZER 0
#endif

namespace memory {

// Whether this is a build with such a sanitizer.
constexpr bool kSanitized = QXRECORDSET_ADDRESS_SANITIZER != 0 || QXRECORDSET_OTHER_SANITIZER != 0;

// Whether valgrind's memcheck runs the process. It answers a request, which is a sequence of
// instructions that does nothing on a processor: four rotations by 64 (32) bits in all, and an
// exchange of a register with itself. The address of the request and the answer by default are in
// registers. This one says that a byte is defined, which only memcheck answers by -1.
inline bool UnderMemcheck() noexcept {
  std::uintptr_t nAnswer = 0;
#if defined(__x86_64__) || defined(__i386__)
  constexpr std::uintptr_t kMakeDefined = (std::uintptr_t{'M'} << 24) + ('C' << 16) + 2;
  const char cByte = 0;
  const volatile std::uintptr_t aRequest[6] = {kMakeDefined,
                                               reinterpret_cast<std::uintptr_t>(&cByte), 1};
#if defined(__x86_64__)
  asm volatile(
      "rolq $3, %%rdi; rolq $13, %%rdi; rolq $61, %%rdi; rolq $51, %%rdi; xchgq %%rbx, %%rbx"
      : "+d"(nAnswer)
      : "a"(&aRequest[0])
      : "cc", "memory");
#else
  asm volatile(
      "roll $3, %%edi; roll $13, %%edi; roll $29, %%edi; roll $19, %%edi; xchgl %%ebx, %%ebx"
      : "+d"(nAnswer)
      : "a"(&aRequest[0])
      : "cc", "memory");
#endif
#endif
  return nAnswer != 0;
}

}  // namespace memory

#endif  // QXRECORDSET_MEMORY_CHECKERS_H

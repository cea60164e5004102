// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The request to the system.

#include "memory/HugePages.h"

#if defined(__linux__)
#include <sys/mman.h>

#include <cerrno>
#include <cstdint>
#endif

namespace memory {

#if defined(__linux__) && defined(MADV_HUGEPAGE)

// Whole pages of any size that Linux has: the request is for addresses that begin a page.
void PreferHugePages(std::string& text) noexcept {
  constexpr std::uintptr_t kPage = std::uintptr_t{64} * 1024;
  if (text.capacity() < kFewestHugeBytes) return;
  const auto nFirst = reinterpret_cast<std::uintptr_t>(text.data());
  const std::uintptr_t nSkipped = -nFirst % kPage;
  const std::size_t nBytes = (text.capacity() - nSkipped) / kPage * kPage;
  const int nError = errno;
  static_cast<void>(madvise(text.data() + nSkipped, nBytes, MADV_HUGEPAGE));
  errno = nError;
}

#else

void PreferHugePages(std::string& /*text*/) noexcept {}

#endif

}  // namespace memory

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What the module has in place of parts of the C and C++ libraries that would be larger than the
// record sets: functions found here are not taken from there.

#include <chrono>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

std::uint64_t nSeed = 0;  // of the next object that hashes names

}  // namespace

// Called once, with random bits: a module starts with the same memory each time.
extern "C" void QX_Seed(std::uint32_t nLow, std::uint32_t nHigh) {
  nSeed = std::uint64_t{nHigh} << 32 | nLow;
}

// Asked for nothing but the keys of name hashes, which have to be different and unknown.
std::chrono::steady_clock::time_point std::chrono::steady_clock::now() noexcept {
  constexpr std::uint64_t kStep = 0x9E3779B97F4A7C15u;  // 2^64 / golden ratio
  nSeed += kStep;
  return time_point(duration(static_cast<std::int64_t>(nSeed)));
}

// Nothing in the module prints: what would write real numbers is not among its exports.
extern "C" int snprintf(char* buffer, std::size_t size, const char* /*format*/, ...) {
  if (size != 0) *buffer = '\0';
  return 0;
}

// A module has no end at which anything would be called.
extern "C" int __cxa_atexit(void (*)(void*), void*, void*) { return 0; }

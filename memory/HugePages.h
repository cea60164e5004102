// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Memory of several megabytes that is written from front to back costs more in page faults than in
// writing. Where the system has huge pages for those who ask, large texts ask for them.

#ifndef QXRECORDSET_MEMORY_HUGEPAGES_H
#define QXRECORDSET_MEMORY_HUGEPAGES_H

#include <cstddef>
#include <string>

namespace memory {

// Texts with so many bytes of room, or more.
constexpr std::size_t kFewestHugeBytes = std::size_t{4} * 1024 * 1024;

// Asks for huge pages behind the text's room, before it is filled. Without them all is as it was.
void PreferHugePages(std::string& text) noexcept;

}  // namespace memory

#endif  // QXRECORDSET_MEMORY_HUGEPAGES_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// gzip and Zstandard, by libarchive. A compressed input is recognised by its first bytes, a
// compressed output by the end of its name.

#ifndef QXRECORDSET_TOOLS_SUPPORT_COMPRESSION_H
#define QXRECORDSET_TOOLS_SUPPORT_COMPRESSION_H

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

struct archive;

namespace qxrs {

// Whether a file that begins like this is compressed; four bytes are enough.
bool IsCompressed(std::string_view strFirstBytes);

// The ending .gz or .zst of a file's name, or nothing.
std::string_view CompressionSuffix(std::string_view strName);

class Decompressor {
 public:
  // Reads up to `nSize` compressed bytes to `pBytes`; 0 at the end.
  using ReadRaw = std::function<std::size_t(char* pBytes, std::size_t nSize)>;

  // `strName` names the input in complaints.
  Decompressor(std::string strName, ReadRaw read);
  Decompressor(const Decompressor&) = delete;
  Decompressor& operator=(const Decompressor&) = delete;
  ~Decompressor();

  // Up to `nSize` bytes of the text; 0 at its end. Throws InputError where the data are damaged or
  // end too soon.
  std::size_t Read(char* pBytes, std::size_t nSize);

 private:
  struct State;
  const std::unique_ptr<State> pState;
};

class Compressor {
 public:
  using WriteRaw = std::function<void(std::string_view)>;

  // `strSuffix` is .gz or .zst.
  Compressor(std::string_view strSuffix, WriteRaw write);
  Compressor(const Compressor&) = delete;
  Compressor& operator=(const Compressor&) = delete;
  ~Compressor();

  void Write(std::string_view strText);
  void End();  // the compressed text is complete then

 private:
  struct State;
  const std::unique_ptr<State> pState;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_COMPRESSION_H

// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// gzip and Zstandard, by zlib and libzstd. A compressed input is recognised by its first bytes, a
// compressed output by the end of its name.

#ifndef QXRECORDSET_TOOLS_SUPPORT_COMPRESSION_H
#define QXRECORDSET_TOOLS_SUPPORT_COMPRESSION_H

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace qxrs {

enum class Compression { None, Gzip, Zstd };

// By the first bytes of a file; four are enough.
Compression CompressionOf(std::string_view strFirstBytes);

// By the file's name: .gz, .zst or anything else. `strName` loses that ending.
Compression TakeCompressionSuffix(std::string& strName);

// Both directions work piece by piece.
class Decompressor {
 public:
  // Reads up to `nSize` compressed bytes to `pBytes`; 0 at the end.
  using ReadRaw = std::function<std::size_t(char* pBytes, std::size_t nSize)>;

  Decompressor() = default;
  Decompressor(const Decompressor&) = delete;
  Decompressor& operator=(const Decompressor&) = delete;
  virtual ~Decompressor() = default;

  // Up to `nSize` bytes of the text; 0 at its end. Throws InputError where the data are damaged or
  // end too soon.
  virtual std::size_t Read(char* pBytes, std::size_t nSize) = 0;
};

class Compressor {
 public:
  using WriteRaw = std::function<void(std::string_view)>;

  Compressor() = default;
  Compressor(const Compressor&) = delete;
  Compressor& operator=(const Compressor&) = delete;
  virtual ~Compressor() = default;

  // With bEnd the compressed text is complete.
  virtual void Write(std::string_view strText, bool bEnd) = 0;
};

// Null for Compression::None. `strName` names the input in complaints.
std::unique_ptr<Decompressor> MakeDecompressor(Compression eCompression, std::string strName,
                                               Decompressor::ReadRaw read);
std::unique_ptr<Compressor> MakeCompressor(Compression eCompression, Compressor::WriteRaw write);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_COMPRESSION_H

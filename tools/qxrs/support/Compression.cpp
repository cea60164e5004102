// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The streams of zlib and libzstd.

#include "tools/qxrs/support/Compression.h"

#include <zlib.h>
#include <zstd.h>

#include <new>
#include <utility>
#include <vector>

#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

constexpr std::size_t kPiece = 65536;       // bytes of compressed data at a time
constexpr int kGzipWindow = 15 + 16;        // the largest window, in a gzip file
constexpr int kZstdLevel = 3;               // libzstd's default
constexpr int kMemoryLevel = 8;             // zlib's default
constexpr int kZstdLargestWindowBits = 24;  // 16 MB: memory stays bounded

// The compressed bytes that were read and not used yet.
struct RawBytes {
  Decompressor::ReadRaw read;
  std::vector<char> vBytes = std::vector<char>(kPiece);
  std::size_t nUsed = 0;
  std::size_t nSize = 0;

  // Whether there are some.
  bool Fill() {
    if (nUsed == nSize) {
      nSize = read(vBytes.data(), vBytes.size());
      nUsed = 0;
    }
    return nSize != 0;
  }
};

[[noreturn]] void Refuse(const std::string& strName, const char* szReason) {
  throw InputError(strName + ": the compressed data " + szReason);
}

class GzipReader : public Decompressor {
 public:
  GzipReader(std::string strFileName, ReadRaw read)
      : strName(std::move(strFileName)), raw{std::move(read)} {
    if (inflateInit2(&stream, kGzipWindow) != Z_OK) throw std::bad_alloc();
  }
  ~GzipReader() override { inflateEnd(&stream); }

  std::size_t Read(char* pBytes, std::size_t nSize) override {
    stream.next_out = reinterpret_cast<Bytef*>(pBytes);
    stream.avail_out = static_cast<uInt>(nSize);
    while (stream.avail_out == nSize) {
      if (!raw.Fill()) {
        if (bInside) Refuse(strName, "end too soon");
        return 0;
      }
      Step();
    }
    return nSize - stream.avail_out;
  }

 private:
  void Step() {
    stream.next_in = reinterpret_cast<Bytef*>(raw.vBytes.data() + raw.nUsed);
    stream.avail_in = static_cast<uInt>(raw.nSize - raw.nUsed);
    bInside = true;
    const int nResult = inflate(&stream, Z_NO_FLUSH);
    raw.nUsed = raw.nSize - stream.avail_in;
    if (nResult == Z_STREAM_END) {
      bInside = false;  // another member may follow
      inflateReset(&stream);
    } else if (nResult != Z_OK && nResult != Z_BUF_ERROR) {
      Refuse(strName, "are damaged");
    }
  }

  const std::string strName;
  RawBytes raw;
  z_stream stream{};
  bool bInside = false;  // a member has begun and not ended
};

class ZstdReader : public Decompressor {
 public:
  ZstdReader(std::string strFileName, ReadRaw read)
      : strName(std::move(strFileName)), raw{std::move(read)}, pStream(ZSTD_createDStream()) {
    if (!pStream) throw std::bad_alloc();
    ZSTD_DCtx_setParameter(pStream.get(), ZSTD_d_windowLogMax, kZstdLargestWindowBits);
  }

  std::size_t Read(char* pBytes, std::size_t nSize) override {
    ZSTD_outBuffer out{pBytes, nSize, 0};
    while (out.pos == 0) {
      // The stream may hold text for which it needs no more bytes.
      if (!bFull && !raw.Fill()) {
        if (nWanted != 0) Refuse(strName, "end too soon");
        return 0;
      }
      ZSTD_inBuffer in{raw.vBytes.data(), raw.nSize, raw.nUsed};
      nWanted = ZSTD_decompressStream(pStream.get(), &out, &in);
      raw.nUsed = in.pos;
      if (ZSTD_isError(nWanted)) Refuse(strName, ZSTD_getErrorName(nWanted));
      bFull = out.pos == out.size;
    }
    return out.pos;
  }

 private:
  struct Free {
    void operator()(ZSTD_DStream* p) const { ZSTD_freeDStream(p); }
  };

  const std::string strName;
  RawBytes raw;
  std::unique_ptr<ZSTD_DStream, Free> pStream;
  std::size_t nWanted = 0;  // 0: between two frames
  bool bFull = false;       // the last call filled its buffer
};

class GzipWriter : public Compressor {
 public:
  explicit GzipWriter(WriteRaw writeRaw) : write(std::move(writeRaw)) {
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kGzipWindow, kMemoryLevel,
                     Z_DEFAULT_STRATEGY) != Z_OK) {
      throw std::bad_alloc();
    }
  }
  ~GzipWriter() override { deflateEnd(&stream); }

  void Write(std::string_view strText, bool bEnd) override {
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(strText.data()));
    stream.avail_in = static_cast<uInt>(strText.size());
    do {
      stream.next_out = reinterpret_cast<Bytef*>(vPiece.data());
      stream.avail_out = static_cast<uInt>(vPiece.size());
      deflate(&stream, bEnd ? Z_FINISH : Z_NO_FLUSH);
      write({vPiece.data(), vPiece.size() - stream.avail_out});
    } while (stream.avail_out == 0);
  }

 private:
  const WriteRaw write;
  z_stream stream{};
  std::vector<char> vPiece = std::vector<char>(kPiece);
};

class ZstdWriter : public Compressor {
 public:
  explicit ZstdWriter(WriteRaw writeRaw)
      : write(std::move(writeRaw)), pStream(ZSTD_createCStream()) {
    if (!pStream) throw std::bad_alloc();
    ZSTD_initCStream(pStream.get(), kZstdLevel);
  }

  void Write(std::string_view strText, bool bEnd) override {
    ZSTD_inBuffer in{strText.data(), strText.size(), 0};
    std::size_t nLeft = 0;
    do {
      ZSTD_outBuffer out{vPiece.data(), vPiece.size(), 0};
      nLeft = ZSTD_compressStream2(pStream.get(), &out, &in, bEnd ? ZSTD_e_end : ZSTD_e_continue);
      if (ZSTD_isError(nLeft)) throw std::bad_alloc();
      write({vPiece.data(), out.pos});
    } while (in.pos < in.size || (bEnd && nLeft != 0));
  }

 private:
  struct Free {
    void operator()(ZSTD_CStream* p) const { ZSTD_freeCStream(p); }
  };

  const WriteRaw write;
  std::unique_ptr<ZSTD_CStream, Free> pStream;
  std::vector<char> vPiece = std::vector<char>(kPiece);
};

}  // namespace

Compression CompressionOf(std::string_view strFirstBytes) {
  const auto Begins = [&](std::string_view strMagic) {
    return strFirstBytes.substr(0, strMagic.size()) == strMagic;
  };
  if (Begins("\x1f\x8b")) return Compression::Gzip;
  return Begins("\x28\xb5\x2f\xfd") ? Compression::Zstd : Compression::None;
}

Compression TakeCompressionSuffix(std::string& strName) {
  const auto Take = [&](std::string_view strSuffix) {
    if (strName.size() <= strSuffix.size() ||
        strName.compare(strName.size() - strSuffix.size(), strSuffix.size(), strSuffix) != 0) {
      return false;
    }
    strName.resize(strName.size() - strSuffix.size());
    return true;
  };
  if (Take(".gz")) return Compression::Gzip;
  return Take(".zst") ? Compression::Zstd : Compression::None;
}

std::unique_ptr<Decompressor> MakeDecompressor(Compression eCompression, std::string strName,
                                               Decompressor::ReadRaw read) {
  switch (eCompression) {
    case Compression::Gzip:
      return std::make_unique<GzipReader>(std::move(strName), std::move(read));
    case Compression::Zstd:
      return std::make_unique<ZstdReader>(std::move(strName), std::move(read));
    default:
      return nullptr;
  }
}

std::unique_ptr<Compressor> MakeCompressor(Compression eCompression, Compressor::WriteRaw write) {
  switch (eCompression) {
    case Compression::Gzip:
      return std::make_unique<GzipWriter>(std::move(write));
    case Compression::Zstd:
      return std::make_unique<ZstdWriter>(std::move(write));
    default:
      return nullptr;
  }
}

}  // namespace qxrs

#include "archive/Zlib.h"

#include "platform/Log.h"

#include <zlib.h>

#include <algorithm>
#include <limits>
#include <new>

namespace stowhaven {

namespace {

constexpr std::size_t kInflateStep = 256 * 1024;
// zlib counts in unsigned int; longer input is handed over in parts.
constexpr std::size_t kLargestPart = std::numeric_limits<uInt>::max();
// Window bits for inflateInit2: the zlib wrapper, or (16 more) the gzip one.
constexpr int kZlibWindow = MAX_WBITS;
constexpr int kGzipWindow = 16 + MAX_WBITS;

class InflateStream {
public:
    explicit InflateStream(int windowBits) { ok_ = inflateInit2(&stream_, windowBits) == Z_OK; }
    ~InflateStream() {
        if (ok_) inflateEnd(&stream_);
    }
    InflateStream(const InflateStream&) = delete;
    InflateStream& operator=(const InflateStream&) = delete;

    bool ok() const { return ok_; }
    z_stream& get() { return stream_; }

private:
    z_stream stream_{};
    bool ok_ = false;
};

std::optional<std::string> inflateStream(std::string_view stream, std::size_t maximumSize, int windowBits) {
    const char* kind = windowBits == kGzipWindow ? "gzip" : "zlib";
    InflateStream inflater(windowBits);
    if (!inflater.ok()) {
        SH_LOG("Couldn't start inflating");
        return std::nullopt;
    }
    z_stream& z = inflater.get();
    std::string bytes;
    std::size_t consumed = 0;
    int status = Z_OK;
    while (status != Z_STREAM_END) {
        if (z.avail_in == 0) {
            const std::size_t part = std::min(stream.size() - consumed, kLargestPart);
            z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(stream.data() + consumed));
            z.avail_in = static_cast<uInt>(part);
            consumed += part;
        }
        if (bytes.size() > maximumSize) {
            SH_LOG("Refused a {} stream that inflates beyond {} bytes", kind, maximumSize);
            return std::nullopt;
        }
        const std::size_t before = bytes.size();
        const std::size_t step = std::min(kInflateStep, maximumSize + 1 - before);
        bytes.resize(before + step);
        z.next_out = reinterpret_cast<Bytef*>(bytes.data() + before);
        z.avail_out = static_cast<uInt>(step);
        status = ::inflate(&z, Z_NO_FLUSH);
        bytes.resize(before + step - z.avail_out);
        const bool starved = status == Z_BUF_ERROR && z.avail_in == 0 && consumed == stream.size();
        if ((status != Z_OK && status != Z_STREAM_END && status != Z_BUF_ERROR) || starved) {
            SH_LOG("Refused a damaged {} stream: {}", kind, z.msg != nullptr ? z.msg : starved ? "truncated" : "error");
            return std::nullopt;
        }
    }
    if (bytes.size() > maximumSize) {
        SH_LOG("Refused a {} stream that inflates beyond {} bytes", kind, maximumSize);
        return std::nullopt;
    }
    if (z.avail_in != 0 || consumed != stream.size()) {
        SH_LOG("Refused a {} stream followed by {} more bytes", kind, stream.size() - consumed + z.avail_in);
        return std::nullopt;
    }
    return bytes;
}

}  // namespace

std::string Zlib::deflate(std::string_view bytes) {
    uLongf length = compressBound(bytes.size());
    std::string stream(length, '\0');
    const int status = compress2(reinterpret_cast<Bytef*>(stream.data()), &length,
                                 reinterpret_cast<const Bytef*>(bytes.data()), bytes.size(), Z_DEFAULT_COMPRESSION);
    // With room for compressBound() bytes only memory can be short.
    if (status != Z_OK) throw std::bad_alloc();
    stream.resize(length);
    return stream;
}

std::optional<std::string> Zlib::inflate(std::string_view stream, std::size_t maximumSize) {
    return inflateStream(stream, maximumSize, kZlibWindow);
}

std::optional<std::string> Zlib::gunzip(std::string_view stream, std::size_t maximumSize) {
    return inflateStream(stream, maximumSize, kGzipWindow);
}

}  // namespace stowhaven

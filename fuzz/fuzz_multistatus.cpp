// The WebDAV listing reader on any bytes: a share's PROPFIND reply, damaged or hostile.

#include "FuzzSupport.h"
#include "net/MultistatusReply.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

bool isCleanName(const std::string& name) {
    if (name.empty() || name == "." || name == "..") return false;
    for (const char c : name) {
        if (c == '/' || c == '\\' || static_cast<unsigned char>(c) < 0x20 || c == 0x7f) return false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace stowhaven;
    std::string problem;
    const auto reply =
        MultistatusReply::parse(fuzz::bytesOf(data, size), "/owncloud/remote.php/webdav/Stowhaven", problem);
    fuzz::expect(reply.has_value() || !problem.empty(), "a refused reply says why");
    if (!reply) return 0;
    for (const auto& entry : reply->entries) {
        fuzz::expect(isCleanName(entry.name), "every name is one clean path component");
        fuzz::expect(entry.size >= 0, "no size is negative");
    }
    return 0;
}

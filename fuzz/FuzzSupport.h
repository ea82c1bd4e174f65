#pragma once

#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "core/ModelClasses.h"
#include "net/OAuth2Grant.h"
#include "net/RestClient.h"
#include "platform/DeviceRoot.h"
#include "platform/FileNames.h"
#include "support/DetachedDevice.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

namespace stowhaven::fuzz {

// The targets work on a device of their own, made once per run.
inline void useFuzzingDevice() {
    static const test::DetachedDevice device;
}

// The system's own classes read what the fuzzer makes.
inline const ClassRegistry& classesForFuzzing() {
    useFuzzingDevice();
    return modelClasses();
}

inline std::string_view bytesOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// A broken invariant ends the run as a crash would, and says which it was.
inline void expect(bool holds, const char* invariant) {
    if (holds) return;
    std::fprintf(stderr, "==fuzz== broken invariant: %s\n", invariant);
    std::abort();
}

// BYTES as the file NAME at the top of the fuzzing device, for readers that take a path.
inline std::string writtenToDevice(std::string_view name, std::string_view bytes) {
    useFuzzingDevice();
    const std::string path = DeviceRoot::path("/" + std::string(name));
    std::ofstream(path, std::ios::binary | std::ios::trunc).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return path;
}

// Whatever the reader accepted, the writer either refuses or writes so that it reads back.
inline void checkArchivesBack(const ArchiveValue& value) {
    const auto archive = KeyedArchiver::archivedData(value);
    expect(!archive || KeyedUnarchiver::unarchiveObjectWithData(*archive, classesForFuzzing()).has_value(),
           "what the archiver writes reads back");
}

// READER, which answers a value or nothing and why, on BODY: what it refuses, it says why.
template <typename Reader>
auto readOrSay(Reader reader, std::string_view body) {
    std::string error;
    auto value = reader(body, error);
    expect(value.has_value() || !error.empty(), "a refused reply says why");
    return value;
}

// An item of a cloud listing: an id that IDISCLEAN accepts (IDRULE says how) and a name that
// is one clean path component.
template <typename Item, typename IdCheck>
void expectCleanItem(const Item& item, IdCheck idIsClean, const char* idRule) {
    expect(idIsClean(item.id), idRule);
    expect(isOneFileName(item.name), "every name is one clean path component");
}

// The OAuth 2 token reader the cloud engines share, on BODY.
inline void checkOAuth2Grant(std::string_view body) {
    if (const auto grant = readOrSay(OAuth2Grant::read, body)) {
        expect(!grant->accessToken.empty(), "a grant holds an access token");
        expect(!grant->refreshToken || !grant->refreshToken->empty(), "a refresh token given is not empty");
    }
}

// BODY as the reply of a request the service refused with STATUS, which the client names
// ERROR ("HTTP 400 Bad Request").
inline RestReply refusedReply(int status, std::string_view body, const char* error) {
    RestReply reply;
    reply.status = status;
    reply.body = std::string(body);
    reply.error = error;
    return reply;
}

}  // namespace stowhaven::fuzz

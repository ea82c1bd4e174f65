#pragma once

#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "core/ModelClasses.h"
#include "platform/DeviceRoot.h"
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

}  // namespace stowhaven::fuzz

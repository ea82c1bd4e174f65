#pragma once

#include <cstdint>

namespace stowhaven {

// The storage types. The settings keep these numbers, so they never change; a number read
// back from the settings may also be none of them.
enum class StorageType : std::int64_t {
    Addressbook = 0,
    Dropbox = 1,
    SugarSync = 2,
    SkyDrive = 3,
    Box = 4,
    Local = 5,
    FTP = 6,
    GDrive = 7,
    OwnCloud = 8,
};

}  // namespace stowhaven

#pragma once

#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "core/ModelClasses.h"
#include "support/DetachedDevice.h"

#include <cstdlib>

namespace stowhaven::fuzz {

// The system's own classes read what the fuzzer makes, on a device of their own.
inline const ClassRegistry& classesForFuzzing() {
    static const test::DetachedDevice device;
    return modelClasses();
}

// Whatever the reader accepted, the writer either refuses or writes so that it reads back.
inline void checkArchivesBack(const ArchiveValue& value) {
    const auto archive = KeyedArchiver::archivedData(value);
    if (archive && !KeyedUnarchiver::unarchiveObjectWithData(*archive, classesForFuzzing())) std::abort();
}

}  // namespace stowhaven::fuzz

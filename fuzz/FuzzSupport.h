#pragma once

#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "unit/archive/SampleRecords.h"

#include <cstdlib>

namespace stowhaven::fuzz {

inline const ClassRegistry& classesForFuzzing() {
    static const ClassRegistry classes = test::sampleClasses();
    return classes;
}

// Whatever the reader accepted, the writer either refuses or writes so that it reads back.
inline void checkArchivesBack(const ArchiveValue& value) {
    const auto archive = KeyedArchiver::archivedData(value);
    if (archive && !KeyedUnarchiver::unarchiveObjectWithData(*archive, classesForFuzzing())) std::abort();
}

}  // namespace stowhaven::fuzz

// The keyed-archive reader on any bytes: binary or XML property lists, damaged or hostile.

#include "FuzzSupport.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace stowhaven;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    if (const auto root = KeyedUnarchiver::unarchiveObjectWithData(bytes, fuzz::classesForFuzzing())) {
        fuzz::checkArchivesBack(*root);
    }
    return 0;
}

#pragma once

#include "platform/plist/PlistValue.h"

#include <nlohmann/json.hpp>

namespace stowhaven {

// The object graph of a keyed archive as JSON, keyed as the archive keys it: model objects
// as objects of their archived keys, Foundation's arrays, sets and dictionaries as arrays
// and objects, strings as strings, dates in ISO 8601 (UTC), data in Base64, numbers as
// numbers and the null object as null. A reference that leads nowhere is null.
nlohmann::json archiveAsJson(const PlistValue& archive);

}  // namespace stowhaven

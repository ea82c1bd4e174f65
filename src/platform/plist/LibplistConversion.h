#pragma once

#include "platform/plist/LibplistNode.h"
#include "platform/plist/PlistValue.h"

#include <cstddef>
#include <optional>
#include <string>

namespace stowhaven::libplist {

// The one place where values meet libplist trees.

// Nothing, with the reason, when the value can't be a property list: a null inside it, a
// string or key that isn't UTF-8 or holds a NUL (libplist keeps C strings), a UID beyond
// 32 bits, or arrays and dictionaries nested deeper than `maximumDepth`.
Node nodeFromValue(const PlistValue& value, std::size_t maximumDepth, std::string& reason);

// A dictionary whose one key is "CF$UID", the XML spelling of a UID, becomes a UID.
// Nothing, with the reason, for what nodeFromValue() would refuse to write back: a string
// or key that isn't UTF-8 or holds a NUL, a UID beyond 32 bits.
std::optional<PlistValue> valueFromNode(plist_t node, std::string& reason);

}  // namespace stowhaven::libplist

#pragma once

#include "platform/plist/LibplistNode.h"

#include <cstdint>
#include <optional>

namespace stowhaven::libplist {

// libplist 2.2 keeps two facts of a node out of its accessors: the exact seconds of a date
// (plist_get_date_val rounds to microseconds and loses the sign of a fraction before
// 2001) and whether an integer above INT64_MAX is unsigned (plist_new_uint writes it as a
// negative number). Its binary form carries both, so these nodes travel through a binary
// property list of one object.

std::optional<double> exactDateSeconds(plist_t dateNode);
// True if the integer node holds an unsigned value above INT64_MAX.
bool isLargeUnsigned(plist_t integerNode);

Node newExactDateNode(double secondsSinceReferenceDate);
Node newLargeUnsignedNode(std::uint64_t value);

}  // namespace stowhaven::libplist

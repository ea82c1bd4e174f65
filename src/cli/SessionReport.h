#pragma once

#include "core/SessionHistory.h"

#include <ostream>

namespace stowhaven {

// The sessions of a history as text for a person: each with its titles, date, device and
// version, then what it holds, list by list, and its data sets and sizes.
void printSessionReport(const SessionHistory::Sessions& sessions, std::ostream& out);

}  // namespace stowhaven

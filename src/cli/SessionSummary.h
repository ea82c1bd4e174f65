#pragma once

#include "core/BackupSession.h"

#include <nlohmann/json.hpp>

#include <string>

namespace stowhaven {

// A session in brief, as the status and the history show it: its date, titles and counts.
std::string sessionSummaryLine(const BackupSession& session);
nlohmann::json sessionSummaryJson(const BackupSession& session);

}  // namespace stowhaven

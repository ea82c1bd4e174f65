#include "cli/HistoryCommand.h"

#include "cli/CatalogueLoad.h"
#include "cli/SessionSummary.h"
#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace stowhaven {

// What goes wrong in the load reaches the user through the program's alerts.
int HistoryCommand::run(bool asJson, std::ostream& out, std::ostream& /*errors*/) {
    Supervisor& supervisor = Supervisor::shared();
    loadCatalogue();
    // The address book's note held the whole history; a file engine has one file per session.
    if (const auto engine = supervisor.currentStorageEngine(); engine && !supervisor.isStorageAddressbook()) {
        engine->retrieveRestOfBackupHistory();
    }
    CydiaFileManager::Sessions sessions = CydiaFileManager::shared().backupSessions();
    std::reverse(sessions.begin(), sessions.end());
    if (asJson) {
        nlohmann::json list = nlohmann::json::array();
        for (const auto& session : sessions) list.push_back(sessionSummaryJson(*session));
        out << list.dump(2) << "\n";
        return 0;
    }
    fmt::print(out, "{} session(s) on {}\n", sessions.size(), supervisor.storageEngineName());
    for (const auto& session : sessions) fmt::print(out, "{}\n", sessionSummaryLine(*session));
    return 0;
}

}  // namespace stowhaven

#include "cli/StatusCommand.h"

#include "cli/CatalogueLoad.h"
#include "cli/SessionSummary.h"
#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"
#include "core/Text.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <nlohmann/json.hpp>

namespace stowhaven {

namespace {

nlohmann::json statusJson(CydiaFileManager& catalogue) {
    const Supervisor& supervisor = Supervisor::shared();
    nlohmann::json lines = nlohmann::json::array();
    const auto status = catalogue.getBriefSystemStatus();
    for (std::size_t index = 1; index < status.runs().size(); ++index) {
        lines.push_back(textutil::trimmed(status.runs()[index].text));
    }
    const auto session = catalogue.currentBackupSession();
    const auto message = catalogue.errorMsg();
    return {{"status", lines},
            {"storage",
             {{"name", supervisor.storageEngineName()},
              {"type", static_cast<std::int64_t>(supervisor.currentStorageType())}}},
            {"session", session ? sessionSummaryJson(*session) : nlohmann::json(nullptr)},
            {"message", message ? nlohmann::json(*message) : nlohmann::json(nullptr)}};
}

void printStatus(CydiaFileManager& catalogue, std::ostream& out) {
    const Supervisor& supervisor = Supervisor::shared();
    out << catalogue.getBriefSystemStatus().plainText();
    fmt::print(out, "Storage: {} (type {})\n", supervisor.storageEngineName(),
               static_cast<std::int64_t>(supervisor.currentStorageType()));
    if (const auto session = catalogue.currentBackupSession()) {
        fmt::print(out, "Current session: {}\n", sessionSummaryLine(*session));
    } else {
        fmt::print(out, "Current session: none\n");
    }
    if (const auto message = catalogue.errorMsg(); message && !message->empty()) fmt::print(out, "{}\n", *message);
}

}  // namespace

// What goes wrong in the load reaches the user through the program's alerts.
int StatusCommand::run(bool asJson, std::ostream& out, std::ostream& /*errors*/) {
    loadCatalogue();
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    if (asJson) {
        out << statusJson(catalogue).dump(2) << "\n";
    } else {
        printStatus(catalogue, out);
    }
    return 0;
}

}  // namespace stowhaven

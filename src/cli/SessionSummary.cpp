#include "cli/SessionSummary.h"

#include "core/Text.h"

#include <fmt/format.h>

namespace stowhaven {

namespace {

template <typename List>
std::size_t countOf(const std::optional<List>& list) {
    return list ? list->size() : 0;
}

nlohmann::json orNullJson(const std::optional<std::string>& text) { return text ? nlohmann::json(*text) : nullptr; }

}  // namespace

std::string sessionSummaryLine(const BackupSession& session) {
    return fmt::format("{}  \"{}\"  {}  ({} packages, {} applications, {} preference files)",
                       session.sessionDate() ? session.sessionDate()->iso8601() : "(no date)",
                       textutil::orNull(session.title()), textutil::orNull(session.quickDescription()),
                       session.nbPackages(), countOf(session.applications()), countOf(session.preferencesData()));
}

nlohmann::json sessionSummaryJson(const BackupSession& session) {
    return {{"date", session.sessionDate() ? nlohmann::json(session.sessionDate()->iso8601()) : nullptr},
            {"title", orNullJson(session.title())},
            {"description", orNullJson(session.quickDescription())},
            {"encrypted", session.isEncrypted()},
            {"packages", session.nbPackages()},
            {"applications", countOf(session.applications())},
            {"preferenceFiles", countOf(session.preferencesData())}};
}

}  // namespace stowhaven

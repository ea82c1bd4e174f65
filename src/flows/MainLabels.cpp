#include "flows/MainLabels.h"

#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/Strings.h"

#include <fmt/format.h>

namespace stowhaven {

const DateFormatter gDisplayDateFormatter("yyyy-MM-dd HH:mm:ss");

namespace {

struct Shown {
    std::optional<std::string> title;
    std::optional<std::string> description;
    std::optional<Date> date;
};

Shown lastBackup() {
    const auto session = CydiaFileManager::shared().currentBackupSession();
    if (!session) return {};
    return {session->title(), session->quickDescription(), session->sessionDate()};
}

Shown lastRestore() {
    const Supervisor& supervisor = Supervisor::shared();
    return {supervisor.lowLevelGetStringPreferencesDataForKey("LAST_RESTORE_TITLE"),
            supervisor.lowLevelGetStringPreferencesDataForKey("LAST_RESTORE_DESCRIPTION"),
            supervisor.lowLevelGetDatePreferencesDataForKey("LAST_RESTORE_DATE")};
}

// An untitled backup is named after its date.
std::string titleText(const Shown& shown) {
    if (!shown.title) return "-";
    const std::string untitled = Strings::localized("UNTITLED_BACKUP");
    if (!shown.title->empty() && *shown.title != untitled) return *shown.title;
    return shown.date ? fmt::format("Backup {}", gDisplayDateFormatter.stringFromDate(*shown.date)) : untitled;
}

std::string sizeText(bool backupMode) {
    double size = 0;
    if (backupMode) {
        size = CydiaFileManager::shared().backupTotalSize();
    } else if (const auto session = CydiaFileManager::shared().currentBackupSession()) {
        size = session->backupTotalSize();
    }
    const std::string text = textutil::decimalText(size) + "Mb";
    return backupMode ? Strings::localized("ESTIMATED_SIZE") + " " + text : text;
}

}  // namespace

MainScreen::Labels composeMainLabels(bool backupMode) {
    const Shown shown = backupMode ? lastBackup() : lastRestore();
    const std::string never = Strings::localized(backupMode ? "NEVER_BACKUP_LABEL" : "NEVER_RESTORE_LABEL");
    return {
        .title = titleText(shown),
        .description =
            shown.description ? *shown.description : fmt::format("({})", Strings::localized("NO_DESCRIPTION_LABEL")),
        .date = shown.date ? gDisplayDateFormatter.stringFromDate(*shown.date) : never,
        .size = sizeText(backupMode),
    };
}

}  // namespace stowhaven

#include "restore/AppStoreAppsRestoreOperation.h"

#include "backup/ApplicationsDataOperation.h"
#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"
#include "items/Application.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "restore/RestoreReport.h"
#include "restore/StorageFetch.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

namespace stowhaven {

namespace {

// The data container: the folder that holds the application's Documents.
std::optional<std::string> containerOf(const Application& application) {
    const auto& documents = application.documentPath() ? application.documentPath() : application.homePath();
    if (!documents) return std::nullopt;
    return std::filesystem::path(*documents).parent_path().lexically_normal().string();
}

int componentCount(const std::string& devicePath) {
    int count = 0;
    for (const auto& part : std::filesystem::path(devicePath).relative_path()) count += part.empty() ? 0 : 1;
    return count;
}

// This device's own container for the application's bundle, when it has the application.
std::optional<std::string> deviceContainerFor(const Application& application) {
    const auto applications = CydiaFileManager::shared().currentApplications();
    const auto found = std::find_if(applications.begin(), applications.end(), [&](const auto& installed) {
        return installed->bundleIdentifier() && installed->bundleIdentifier() == application.bundleIdentifier();
    });
    return found != applications.end() ? containerOf(**found) : std::nullopt;
}

}  // namespace

void AppStoreAppsRestoreOperation::main() {
    setName("AppStoreAppsRestoreOperation");
    setOperationResult(0);
    if (Supervisor::shared().isCanceled() || !backupSession() || !engine() || !sessionDate()) return;
    setActiveDirectory(std::nullopt);
    const auto& applications = backupSession()->applications();
    if (!applications || std::none_of(applications->begin(), applications->end(),
                                      [](const auto& application) { return application->isSelected(); })) {
        SH_LOG("No selected application to restore!");
        return;
    }
    for (const auto& application : *applications) {
        if (Supervisor::shared().isCanceled()) return;
        restoreApplication(*application);
    }
}

void AppStoreAppsRestoreOperation::restoreApplication(const Application& application) {
    Supervisor& supervisor = Supervisor::shared();
    if (!application.isSelected()) {
        supervisor.notifyProgress(std::nullopt, fmt::format("{}: {}...", application.displayName(),
                                                            Strings::localized("SKIPPING_APP_DATA_MESSAGE")));
        return;
    }
    supervisor.notifyProgress(std::nullopt, Strings::format("RESTORING_MESSAGE", application.displayName()));
    const auto path = fetchSessionFile(
        *engine(), std::string(ApplicationsDataOperation::kDirectory) + "/" + application.archiveName(), *sessionDate(),
        std::nullopt);
    const auto recorded = containerOf(application);
    if (!path || !recorded) return;
    SH_LOG("application: {}", application.displayName());
    // The members carry the container's path on the device that made the backup; they go
    // below the container this device has for the bundle, and nowhere else.
    if (const auto container = deviceContainerFor(application)) {
        if (!unzipApplication(*path, *recorded, *container)) {
            RestoreReport::shared().add(application.displayName() + " data", RestoreReport::kUntrustedArchive);
        }
    } else {
        SH_LOG("<{}> is not installed on this device: its data stays in the session", application.displayName());
        FileManager::removeItem(*path);
    }
}

bool AppStoreAppsRestoreOperation::unzipApplication(const std::string& archive, const std::string& recorded,
                                                    const std::string& target) {
    if (backupSession()->encryptionKey()) CydiaFileManager::decryptFileAtPath(archive);
    const bool unpacked = extractMembers(archive, {{target}, target, componentCount(recorded)}).has_value();
    if (!FileManager::removeItem(archive)) SH_LOG("Couldn't remove <{}>!", archive);
    return unpacked;
}

}  // namespace stowhaven

#include "cli/PresetAnswers.h"

#include "flows/MainAlerts.h"

namespace stowhaven {

namespace {

constexpr std::size_t kYes = 1;
constexpr std::size_t kNo = 2;  // of the firmware question: only the compatible packages

}  // namespace

std::optional<AlertAnswer> PresetAnswers::answerFor(const Alert& alert) const {
    switch (alert.tag) {
        case MainAlerts::kConfirmBackup:
        case MainAlerts::kConfirmRestore:
        case MainAlerts::kIgnoreAlbums:
        case MainAlerts::kUseImportedData:
            if (confirmed) return AlertAnswer{kYes, std::nullopt};
            break;
        // An empty text takes the default: "Backup", and the date for a description.
        case MainAlerts::kBackupTitle:
            if (title || confirmed) return AlertAnswer{kYes, title.value_or("")};
            break;
        case MainAlerts::kBackupDescription:
            if (description || confirmed) return AlertAnswer{kYes, description.value_or("")};
            break;
        // A new key is asked twice; the same answer confirms it.
        case MainAlerts::kEncryptionKey:
            if (key) return AlertAnswer{kYes, key};
            break;
        case MainAlerts::kFirmwareCompatibility:
            if (firmwareCompatibleOnly) return AlertAnswer{kNo, std::nullopt};
            if (confirmed) return AlertAnswer{kYes, std::nullopt};
            break;
        default:
            break;
    }
    return std::nullopt;
}

std::string PresetAnswers::optionsAnswering(const Alert& alert) {
    switch (alert.tag) {
        case MainAlerts::kBackupTitle:
            return "--title or --yes";
        case MainAlerts::kBackupDescription:
            return "--description or --yes";
        case MainAlerts::kEncryptionKey:
            return "--key-file FILE, or the key in STOWHAVEN_KEY";
        case MainAlerts::kFirmwareCompatibility:
            return "--yes or --fw-compatible-only";
        default:
            return "--yes";
    }
}

}  // namespace stowhaven

#include "restore/IndexedDataRestoreOperation.h"

#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "items/PreferenceFile.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/ShellQuote.h"
#include "platform/Strings.h"
#include "restore/DataCategories.h"
#include "storage/StorageHelperProtocol.h"

#include <fmt/format.h>

#include <algorithm>

namespace stowhaven {

namespace {

template <typename Items>
std::size_t countSelected(const Items& items) {
    return static_cast<std::size_t>(
        std::count_if(items.begin(), items.end(), [](const auto& item) { return item->isSelected(); }));
}

}  // namespace

void IndexedDataRestoreOperation::main() {
    DataRestoreOperation::main();
    setName("IndexedDataRestoreOperation");
    if (!engine() || !sessionDate()) return;
    engine()->setSuccessSelector(nullptr, nullptr);
    restoreDataIndex();
}

void IndexedDataRestoreOperation::restoreDataIndex() {
    Supervisor& supervisor = Supervisor::shared();
    const std::size_t preferences = countSelected(backupSession()->preferencesFileObjects());
    const std::size_t springboard = countSelected(backupSession()->springboardDataObjects());
    for (const DataCategory& category : dataCategories()) {
        if (supervisor.isCanceled()) return;
        const std::string name = category.name;
        setActiveDirectory(name);
        // The log line is all a skip does: the index is asked for in any case, and a kind
        // that wasn't backed up ends with no index found.
        if (!category.isHeldBy(*backupSession()) || (name == "PREFERENCES" && preferences == 1) ||
            (name == "SPRINGBOARD" && springboard == 0)) {
            SH_LOG("\tSkipping <{}> data...", name);
        }
        SH_LOG("Fetching <{}> data...", name);
        supervisor.notifyProgress(std::nullopt,
                                  Strings::format("RESTORING_MESSAGE", textutil::firstLetterUppered(name) + " index"));
        engine()->loadFile(name + ".idx", *sessionDate(), std::nullopt);
        processDataIndexFile();
    }
}

void IndexedDataRestoreOperation::processDataIndexFile() {
    Supervisor& supervisor = Supervisor::shared();
    const std::string name = *activeDirectory();
    std::vector<std::string> parts =
        textutil::split(FileManager::contentsOfFile(temporaryPath(name + ".idx")).value_or(""), '\n');
    std::erase(parts, "");
    SH_LOG("filesInIndex: {}", textutil::joined(parts, ", "));
    if (parts.empty()) {
        SH_LOG("No <{}> INDEX FILE found!", name);
        return;
    }
    // Every part the index names must be there, whole, before anything is joined: an
    // archive with a part missing would unpack what precedes the gap.
    std::uint64_t archiveSize = 0;
    std::size_t position = 0;
    for (const std::string& part : parts) {
        if (supervisor.isCanceled()) return;
        // A part's name comes from storage: only the kind's own part names are fetched.
        if (!part.starts_with(name + "-") || !ShellQuote::plainPath(part)) {
            failActiveKind(fmt::format("its index names <{}>, which is no part of it", part));
            return;
        }
        ++position;
        supervisor.notifyProgress(
            std::nullopt, fmt::format("{}: {}\n{} x {}Mb [{}/{}]...", Strings::localized("GETTING_DATA_MESSAGE"),
                                      textutil::firstLetterUppered(name), parts.size(),
                                      CydiaFileManager::shared().splitSizeInMegaBytes(), position, parts.size()));
        engine()->loadFile(part, *sessionDate(), name);
        const std::uint64_t size = FileManager::sizeOfItem(temporaryPath(part));
        if (!FileManager::isRegularFile(temporaryPath(part)) || size == 0) {
            failActiveKind(fmt::format("its part <{}> couldn't be fetched", part));
            return;
        }
        archiveSize += size;
    }
    SH_LOG("\tProcessing <{}> data...", name);
    mergeAndUnzipData(archiveSize);
    supervisor.removeTemporaryFiles();
    supervisor.removeTemporaryFolders();
}

}  // namespace stowhaven

#include "flows/SelectionContent.h"

#include "core/CydiaFileManager.h"
#include "core/PackageSection.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "items/ArchivableFolders.h"
#include "items/SelectionDefaults.h"

#include <unordered_set>

namespace stowhaven {

namespace {

// The data sets of the stock applications that a default keeps; the albums have lists of
// their own.
constexpr StockDataSet kStockApps[] = {StockDataSet::Calendar, StockDataSet::Chat,  StockDataSet::Contacts,
                                       StockDataSet::Health,   StockDataSet::Maps,  StockDataSet::Notes,
                                       StockDataSet::Phone,    StockDataSet::Safari};

SelectionRows packageRows(bool backup) {
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    // Equal packages are one record: the device's list holds the session's installed ones.
    std::unordered_set<const CydiaFile*> installed;
    for (const auto& package : catalogue.currentPackages()) installed.insert(package.get());
    SelectionRows rows;
    for (const auto& section : backup ? catalogue.currentPackageSections() : catalogue.oldPackageSections()) {
        for (const auto& package : section->packages()) {
            if (!package->packageName()) continue;
            rows.push_back(std::make_shared<PackageRow>(package, backup, installed.contains(package.get())));
        }
    }
    return rows;
}

template <typename Files>
SelectionRows fileRows(const Files& files) {
    SelectionRows rows;
    for (const auto& file : files) rows.push_back(std::make_shared<ItemRow>(file, file->name(), file->displayName()));
    return rows;
}

SelectionRows sourceRows(const std::vector<std::shared_ptr<RepositorySource>>& sources) {
    SelectionRows rows;
    for (const auto& source : sources) {
        rows.push_back(std::make_shared<SourceRow>(source, source->link().value_or(source->name()), source->name()));
    }
    return rows;
}

SelectionRows applicationRows(const std::vector<std::shared_ptr<Application>>& applications) {
    SelectionRows rows;
    for (const auto& application : applications) rows.push_back(std::make_shared<ApplicationRow>(application));
    return rows;
}

SelectionRows folderRows(const std::vector<std::shared_ptr<ArchivableFolder>>& folders, bool backup) {
    SelectionRows rows;
    for (const auto& folder : folders) {
        if (!backup || folder->exists()) rows.push_back(std::make_shared<FolderRow>(folder));
    }
    return rows;
}

template <typename Owner>
SelectionRows stockRows(std::shared_ptr<Owner> owner) {
    SelectionRows rows;
    for (const StockDataSet set : kStockApps) {
        rows.push_back(std::make_shared<StockDataRow>(
            set, owner, [owner](StockDataSet changed, bool selected) { owner->setHasData(changed, selected); }));
    }
    return rows;
}

SelectionRows backupRows(SelectionKind kind) {
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    switch (kind) {
        case SelectionKind::Packages:
            return packageRows(true);
        case SelectionKind::Sources:
            return sourceRows(catalogue.currentUserRepoSources());
        case SelectionKind::Applications:
            return applicationRows(catalogue.currentApplications());
        case SelectionKind::StockApps:
            // The catalogue lives as long as the process: the pointer owns nothing.
            return stockRows(std::shared_ptr<CydiaFileManager>(std::shared_ptr<void>(), &catalogue));
        case SelectionKind::Preferences:
            return fileRows(catalogue.currentPreferencesFiles());
        case SelectionKind::Springboard:
            return fileRows(catalogue.currentSpringBoardData());
        case SelectionKind::Folders:
            return folderRows(ArchivableFolders::folders(), true);
    }
    return {};
}

SelectionRows restoreRows(SelectionKind kind) {
    const auto current = CydiaFileManager::shared().currentBackupSession();
    const auto session = current ? current : std::make_shared<BackupSession>();
    switch (kind) {
        case SelectionKind::Packages:
            return packageRows(false);
        case SelectionKind::Sources:
            return sourceRows(session->repositorySources().value_or(BackupSession::SourceList{}));
        case SelectionKind::Applications:
            return applicationRows(session->applications().value_or(BackupSession::ApplicationList{}));
        case SelectionKind::StockApps:
            return stockRows(session);
        case SelectionKind::Preferences:
            return fileRows(session->preferencesFileObjects());
        case SelectionKind::Springboard:
            return fileRows(session->springboardDataObjects());
        case SelectionKind::Folders:
            return folderRows(session->archivableFolders().value_or(BackupSession::FolderList{}), false);
    }
    return {};
}

// The entries of the selected lines; none when every line is selected and has one.
std::optional<std::vector<std::string>> selectedEntries(const SelectionRows& rows) {
    std::vector<std::string> entries;
    bool everyLine = true;
    for (const auto& row : rows) {
        const auto entry = row->defaultEntry();
        everyLine = everyLine && entry && row->isKeptInDefault();
        if (entry && row->isKeptInDefault()) entries.push_back(*entry);
    }
    if (everyLine) return std::nullopt;
    return entries;
}

// The folders' lists are named with the direction in front.
void saveFolderTypes(const std::optional<std::vector<std::string>>& types, bool backup) {
    PlistValue value;
    if (types) value = PlistValue::Array(types->begin(), types->end());
    Supervisor::shared().lowLevelStorePreferencesData(
        std::move(value), backup ? "Backup_ArchivableFolders" : "Restore_ArchivableFolders");
    DefaultList::reloadAllOnNextUse();
}

}  // namespace

SelectionRows selectionRows(SelectionKind kind, bool backup) { return backup ? backupRows(kind) : restoreRows(kind); }

void saveSelectionAsDefault(SelectionKind kind, const SelectionRows& rows) {
    const auto entries = selectedEntries(rows);
    switch (kind) {
        case SelectionKind::Packages:
            CydiaFileManager::saveDefaultList(entries, "DefaultPackages");
            break;
        case SelectionKind::Sources:
            CydiaFileManager::saveDefaultSources(entries);
            break;
        case SelectionKind::Applications:
            CydiaFileManager::saveDefaultApplications(entries);
            break;
        case SelectionKind::StockApps:
            CydiaFileManager::shared().saveDefaultAppleAppsOptions();
            break;
        case SelectionKind::Preferences:
            CydiaFileManager::saveDefaultPreferencesFiles(entries);
            break;
        case SelectionKind::Springboard:
            CydiaFileManager::saveDefaultSpringboardFiles(entries);
            break;
        case SelectionKind::Folders:
            saveFolderTypes(entries, gIsBackupMode);
            break;
    }
}

}  // namespace stowhaven

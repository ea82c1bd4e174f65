// The user's choices kept as the defaults of the next time, per direction.

#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "items/PhotoVideoManager.h"
#include "items/SelectionDefaults.h"

namespace stowhaven {

namespace {

std::string directionSuffix() { return gIsBackupMode ? "_Backup" : "_Restore"; }

}  // namespace

void CydiaFileManager::saveDefaultAppleAppsOptions() {
    const bool backup = gIsBackupMode;
    const auto session = currentBackupSession();
    if (!backup && !session) return;
    const DataSetSizes& source = backup ? static_cast<const DataSetSizes&>(*this) : *session;
    Supervisor& supervisor = Supervisor::shared();
    for (StockDataSet set : {StockDataSet::Calendar, StockDataSet::Chat, StockDataSet::Contacts, StockDataSet::Health,
                             StockDataSet::Maps, StockDataSet::Notes, StockDataSet::Phone, StockDataSet::Safari}) {
        supervisor.lowLevelStorePreferencesData(source.hasData(set),
                                                std::string(stockDataSetName(set)) + directionSuffix());
    }
    const PhotoVideoManager& library = PhotoVideoManager::shared();
    // A session's albums were accounted for when it was made.
    if (backup && !library.isAllAcccounted()) return;
    const AlbumTotals::Albums albums =
        backup ? library.photoVideoAlbums() : session->photoVideoAlbums().value_or(AlbumTotals::Albums{});
    saveDefaultList(AlbumTotals::chosenNames(albums, true), "Photos");
    saveDefaultList(AlbumTotals::chosenNames(albums, false), "Videos");
}

void CydiaFileManager::saveDefaultList(const std::optional<std::vector<std::string>>& names, const std::string& key) {
    PlistValue value;
    if (names) value = PlistValue::Array(names->begin(), names->end());
    Supervisor::shared().lowLevelStorePreferencesData(std::move(value), key + directionSuffix());
    DefaultList::reloadAllOnNextUse();
}

void CydiaFileManager::saveDefaultApplications(const std::optional<std::vector<std::string>>& names) {
    saveDefaultList(names, "DefaultApps");
}

void CydiaFileManager::saveDefaultPreferencesFiles(const std::optional<std::vector<std::string>>& names) {
    saveDefaultList(names, "DefaultPreferencesFiles");
}

void CydiaFileManager::saveDefaultSpringboardFiles(const std::optional<std::vector<std::string>>& names) {
    saveDefaultList(names, "DefaultSpringboardFiles");
}

void CydiaFileManager::saveDefaultSources(const std::optional<std::vector<std::string>>& names) {
    saveDefaultList(names, "DefaultSources");
}

}  // namespace stowhaven

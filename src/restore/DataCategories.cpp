#include "restore/DataCategories.h"

#include "core/BackupSession.h"

namespace stowhaven {

const std::vector<DataCategory>& dataCategories() {
    static const std::vector<DataCategory> categories = {
        {"PREFERENCES",
         [](const BackupSession& s) { return s.hasPrefsFilesData(); },
         {"/var/mobile/Library/Preferences", "/var/preferences"}},
        {"SPRINGBOARD",
         [](const BackupSession& s) { return s.hasSpringboardFilesData(); },
         {"/var/mobile/Library/SpringBoard"}},
        {"CALENDAR", [](const BackupSession& s) { return s.hasCalendarData(); }, {"/var/mobile/Library/Calendar"}},
        {"CHAT", [](const BackupSession& s) { return s.hasChatData(); }, {"/var/mobile/Library/SMS"}},
        {"CONTACTS", [](const BackupSession& s) { return s.hasContactsData(); }, {"/var/mobile/Library/AddressBook"}},
        {"HEALTH", [](const BackupSession& s) { return s.hasHealthData(); }, {"/var/mobile/Library/Health"}},
        {"MAPS", [](const BackupSession& s) { return s.hasMapsData(); }, {"/var/mobile/Library/Maps"}},
        {"NOTES", [](const BackupSession& s) { return s.hasNotesData(); }, {"/var/mobile/Library/Notes"}},
        {"PHONE", [](const BackupSession& s) { return s.hasPhoneData(); }, {"/var/wireless/Library/CallHistory"}},
        {"PHOTOS",
         [](const BackupSession& s) { return s.hasPhotosData(); },
         {"/var/mobile/Media/DCIM", "/var/mobile/Media/PhotoData"}},
        {"VIDEOS",
         [](const BackupSession& s) { return s.hasVideosData(); },
         {"/var/mobile/Media/DCIM", "/var/mobile/Media/PhotoData"}},
        {"SAFARI", [](const BackupSession& s) { return s.hasSafariData(); }, {"/var/mobile/Library/Safari"}},
    };
    return categories;
}

const DataCategory* dataCategoryNamed(const std::string& name) {
    for (const DataCategory& category : dataCategories()) {
        if (name == category.name) return &category;
    }
    return nullptr;
}

}  // namespace stowhaven

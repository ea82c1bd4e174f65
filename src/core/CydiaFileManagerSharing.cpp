// The catalogue as text: the lists for mail, social posts and the printer, the device's
// status, and the vCard that carries a session to another device.

#include "core/AddressBookNote.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "platform/TemporaryDirectory.h"

#include <fmt/format.h>

namespace stowhaven {

namespace {

constexpr const char* kVCardFileName = "Stow Haven.vcf";

// What the text forms list, by the direction the user works in: the device's, or the
// current session's.
struct SharedLists {
    CydiaFileManager::Sources sources;
    CydiaFileManager::Packages packages;
    CydiaFileManager::Applications applications;

    bool empty() const { return sources.empty() && packages.empty() && applications.empty(); }
    std::size_t count() const { return sources.size() + packages.size() + applications.size(); }
};

SharedLists sharedLists(CydiaFileManager& manager) {
    if (gIsBackupMode)
        return {manager.currentUserRepoSources(), manager.currentPackages(), manager.currentApplications()};
    const auto session = manager.currentBackupSession();
    if (!session) return {};
    return {session->repositorySources().value_or(CydiaFileManager::Sources{}), manager.oldPackages(),
            session->applications().value_or(CydiaFileManager::Applications{})};
}

// The lists with their headings; the printer's form names the sources without their links.
StyledText listsText(const SharedLists& lists, bool forPrint) {
    using Style = StyledText::Style;
    Supervisor& supervisor = Supervisor::shared();
    const double total = static_cast<double>(lists.count());
    std::size_t done = 0;
    const auto advance = [&] { supervisor.notifyProgress(static_cast<double>(++done) / total, std::nullopt); };

    StyledText text;
    const std::string sourcesHeading = Strings::localized("CYDIA_USER_SOURCES");
    if (forPrint) {
        text.append(sourcesHeading + "\n", Style::Heading);
    } else {
        text.append("\n\n" + sourcesHeading + ":\n");
    }
    int number = 0;
    for (const auto& source : lists.sources) {
        text.append(forPrint ? fmt::format("{}. {}\n", ++number, source->name())
                             : fmt::format("{}. {} @ {}\n", ++number, source->name(), source->link().value_or("")));
        advance();
    }
    text.append("\n" + Strings::localized("LIST_OF_PACKAGES") + "\n", forPrint ? Style::Heading : Style::Body);
    number = 0;
    for (const auto& package : lists.packages) {
        text.append(fmt::format("{}. {}\n", ++number, package->name().value_or(package->packageName().value_or(""))));
        advance();
    }
    if (!lists.applications.empty()) {
        text.append("\n" + Strings::localized("LIST_OF_APPLICATIONS") + "\n", forPrint ? Style::Heading : Style::Body);
        number = 0;
        for (const auto& application : lists.applications) {
            text.append(fmt::format("{}. {}\n", ++number, application->displayName()));
            advance();
        }
    }
    supervisor.notifyProgress(1.0, "Done!");
    return text;
}

}  // namespace

std::string CydiaFileManager::getPackagesAsText() {
    const SharedLists lists = sharedLists(*this);
    if (lists.empty()) {
        displayNothingToShareAlert();
        return "";
    }
    return listsText(lists, false).plainText();
}

StyledText CydiaFileManager::getPackagesForPrint() {
    const SharedLists lists = sharedLists(*this);
    if (lists.empty()) {
        displayNothingToShareAlert();
        return {};
    }
    return listsText(lists, true);
}

// The stock data sets are counted out of nine, although ten exist.
StyledText CydiaFileManager::getBriefSystemStatus() {
    const bool backup = gIsBackupMode;
    const auto session = currentBackupSession();
    StyledText status;
    status.append(Strings::localized("DEVICE_STATUS") + "\n", StyledText::Style::Heading);
    if (!backup && !session) return status;

    status.append(stringCountFrom(backup ? currentUserRepoSources() : session->repositorySources().value_or(Sources{}),
                                  Strings::localized("CYDIA_USER_SOURCES")));
    const std::size_t selected = backup ? countCurrentPackages() : countRestorePackages();
    const std::size_t total = backup ? currentPackages().size() : oldPackages().size();
    status.append("- " + Strings::format("SELECTED_PACKAGES_LABEL", selected, total));
    const int stockCount = backup ? countAppleStockApps() : session->countAppleStockApps();
    const bool noStockScan = !gAutoScanStockAppsEnabled && !gAutoScanPhotosEnabled && !gAutoScanVideosEnabled;
    if (noStockScan || (!backup && stockCount < 1)) {
        status.append(fmt::format("- 0 Apple™ {}\n", Strings::localized("STOCK_APPS_LABEL")));
    } else {
        status.append(fmt::format("- {}/9 {}\n", stockCount, Strings::localized("STOCK_APPS_LABEL")));
    }
    status.append(stringCountFrom(backup ? currentApplications() : session->applications().value_or(Applications{}),
                                  Strings::localized("APPSTORE_APPS_LABEL")));
    status.append(stringCountFrom(backup ? currentPreferencesFiles() : session->preferencesFileObjects(),
                                  Strings::localized("PREFS_FILES")));
    status.append(stringCountFrom(backup ? currentSpringBoardData() : session->springboardDataObjects(),
                                  Strings::localized("SPRINGBOARD_FILES")));
    return status;
}

void CydiaFileManager::emailABRecordData() {
    const auto text = getABVCardCurrentBackupSessionDataFormat();
    if (!text || text->empty()) {
        displayNothingToShareAlert();
        return;
    }
    emailABData(*text);
}

void CydiaFileManager::emailABData(const std::string& historyText) {
    const std::string path = TemporaryDirectory::path() + "/" + kVCardFileName;
    std::string error;
    if (!FileManager::writeFile(path, AddressBookNote::vCardOf(historyText), &error)) {
        SH_LOG("Couldn't write the share data. Error <{}>", error);
        Supervisor::showAlert(Strings::localized("WARNING"),
                              fmt::format("{}: {}", Strings::localized("ERROR_CREATING_VCARD"), error));
        return;
    }
    Supervisor::shared().sendEmail(Email{
        .emailBody = Strings::localized("INSTRUCTIONS_TITLE") + "\n" + Strings::localized("INSTRUCTIONS_DETAIL"),
        .subject = Strings::localized("SHARING_DATA_WITH_YOU"),
        .toRecipients = {},
        .fileAttachments = {MailAttachment{path, "text/x-vcard", kVCardFileName}},
    });
}

void CydiaFileManager::emailPackagesAsText() {
    const std::string text = getPackagesAsText();
    if (text.empty()) return;
    Supervisor::shared().sendEmail(Email{.emailBody = text,
                                         .subject = Strings::localized("SHARING_DATA_WITH_YOU"),
                                         .toRecipients = {},
                                         .fileAttachments = {}});
}

std::string CydiaFileManager::twitterFeedData() {
    const bool backup = gIsBackupMode;
    const Supervisor& supervisor = Supervisor::shared();
    return fmt::format("#Stowhaven™({})'s just {} {} packages with GREAT ease in {}!", supervisor.version(),
                       backup ? "backup" : "restore", backup ? countCurrentPackages() : countRestorePackages(),
                       supervisor.storageEngineName());
}

JobSummary CydiaFileManager::jobSummary() {
    const auto sessions = backupSessions();
    const auto last = sessions.empty() ? nullptr : sessions.back();
    return {.packagesText = getPackagesAsText(),
            .twitterFeedData = twitterFeedData(),
            .lastSessionTitle = last ? last->title().value_or("") : "",
            .lastSessionDescription = last ? last->quickDescription().value_or("") : ""};
}

void CydiaFileManager::displayNothingToShareAlert() {
    Supervisor::showAlert(Strings::localized("WARNING"), Strings::localized("NOTHING_TO_SHARE"));
}

}  // namespace stowhaven

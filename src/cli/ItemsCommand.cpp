#include "cli/ItemsCommand.h"

#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "items/ApplicationScan.h"
#include "items/ArchivableFolders.h"
#include "items/DeviceItems.h"
#include "items/PhotoVideoAlbum.h"
#include "items/PhotoVideoManager.h"
#include "items/SHSHBlob.h"
#include "items/WebClip.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <nlohmann/json.hpp>

namespace stowhaven {

namespace {

using textutil::orNull;

struct Items {
    ApplicationScan::Applications applications;
    DeviceItems::PreferenceFiles preferenceFiles;
    DeviceItems::PreferenceFiles springboardFiles;
    DeviceItems::Sources sources;
    ArchivableFolders::Folders folders;
    PhotoVideoManager::Albums albums;
};

// Every kind is looked at, as with every scan setting on, for this run only.
Items scannedItems() {
    gAutoScanOtherOptionsEnabled = true;
    gAutoScanAppStoreAppsEnabled = true;
    gAutoScanPhotosEnabled = true;
    gAutoScanVideosEnabled = true;
    ArchivableFolders::resetFolder();
    Items items{ApplicationScan::buildListOfApplications({}),
                DeviceItems::preferenceFiles(),
                DeviceItems::springboardFiles(),
                DeviceItems::repositorySources(),
                {},
                {}};
    for (const auto& folder : ArchivableFolders::folders()) {
        if (folder->exists()) items.folders.push_back(folder);
    }
    PhotoVideoManager& library = PhotoVideoManager::shared();
    library.reset();
    items.albums = library.photoVideoAlbums();
    return items;
}

nlohmann::json nullable(const std::optional<std::string>& value) { return value ? nlohmann::json(*value) : nullptr; }

nlohmann::json itemJson(const SelectableItem& item) {
    nlohmann::json json = {{"name", item.name()}, {"size", item.size()}, {"selected", item.isSelected()}};
    if (const auto* clip = dynamic_cast<const WebClip*>(&item)) json["title"] = clip->displayName();
    if (const auto* blob = dynamic_cast<const SHSHBlob*>(&item)) {
        json["chipId"] = nullable(blob->chipId());
        json["deviceType"] = nullable(blob->deviceType());
    }
    return json;
}

nlohmann::json applicationJson(Application& application) {
    return {{"name", application.name()},
            {"displayName", application.displayName()},
            {"bundleIdentifier", nullable(application.bundleIdentifier())},
            {"homePath", nullable(application.homePath())},
            {"documentPath", nullable(application.documentPath())},
            {"libraryPath", nullable(application.libraryPath())},
            {"iconPath", nullable(application.iconPath())},
            {"documentsDirSize", application.documentsDirSize()},
            {"documentsDirSizeUnit", Application::unitToString(application.documentsDirSizeUnit())},
            {"libraryDirSize", application.libraryDirSize()},
            {"libraryDirSizeUnit", Application::unitToString(application.libraryDirSizeUnit())},
            {"totalSize", application.totalSize()},
            {"selected", application.isSelected()},
            {"installed", application.isInstalled()}};
}

nlohmann::json folderJson(const ArchivableFolder& folder) {
    nlohmann::json contents = nlohmann::json::array();
    for (const auto& item : folder.contentItems()) contents.push_back(itemJson(*item));
    for (const auto& path : folder.contentPaths()) contents.push_back(path);
    return {{"name", folder.name()},
            {"folderType", folder.folderType()},
            {"packageName", nullable(folder.packageName())},
            {"dataFolderPath", folder.dataFolderPath()},
            {"isFile", folder.isFile()},
            {"selectableContent", folder.canSelectContent()},
            {"archiveName", folder.archiveName()},
            {"size", folder.totalSize()},
            {"selected", folder.isSelected()},
            {"contents", contents}};
}

nlohmann::json albumJson(const PhotoVideoAlbum& album) {
    return {{"name", album.name()},
            {"editable", album.isEditable()},
            {"photos", album.photos()},
            {"photoSize", album.photoSize()},
            {"photoSelected", album.isPhotoSelected()},
            {"videos", album.videos()},
            {"videoSize", album.videoSize()},
            {"videoSelected", album.isVideoSelected()}};
}

void printJson(Items& items, std::ostream& out) {
    nlohmann::json json = {{"applications", nlohmann::json::array()},
                           {"preferenceFiles", nlohmann::json::array()},
                           {"springboardFiles", nlohmann::json::array()},
                           {"sources", nlohmann::json::array()},
                           {"archivableFolders", nlohmann::json::array()},
                           {"albums", nlohmann::json::array()}};
    for (const auto& application : items.applications) json["applications"].push_back(applicationJson(*application));
    for (const auto& file : items.preferenceFiles) json["preferenceFiles"].push_back(itemJson(*file));
    for (const auto& file : items.springboardFiles) json["springboardFiles"].push_back(itemJson(*file));
    for (const auto& source : items.sources) {
        json["sources"].push_back({{"name", source->name()},
                                   {"link", nullable(source->link())},
                                   {"line", source->debSourceAsString()},
                                   {"selected", source->isSelected()}});
    }
    for (const auto& folder : items.folders) json["archivableFolders"].push_back(folderJson(*folder));
    for (const auto& album : items.albums) json["albums"].push_back(albumJson(*album));
    out << json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

std::string mark(bool selected) { return selected ? "[x]" : "[ ]"; }

void printText(Items& items, std::ostream& out) {
    fmt::print(out, "Applications ({})\n", items.applications.size());
    for (const auto& application : items.applications) {
        fmt::print(out, "  {} {} ({})  {}\n", mark(application->isSelected()), application->displayName(),
                   orNull(application->bundleIdentifier()), application->detailString());
    }
    const auto printFiles = [&](std::string_view title, const DeviceItems::PreferenceFiles& files) {
        fmt::print(out, "{} ({})\n", title, files.size());
        for (const auto& file : files)
            fmt::print(out, "  {} {}  {:.3f} Mb\n", mark(file->isSelected()), file->name(), file->size());
    };
    printFiles("Preference files", items.preferenceFiles);
    printFiles("SpringBoard files", items.springboardFiles);
    fmt::print(out, "Sources ({})\n", items.sources.size());
    for (const auto& source : items.sources) {
        fmt::print(out, "  {} {}  ({})\n", mark(source->isSelected()), source->debSourceAsString(), source->name());
    }
    fmt::print(out, "Archivable folders ({})\n", items.folders.size());
    for (const auto& folder : items.folders) {
        fmt::print(out, "  {} {}  {}  {:.3f} Mb\n", mark(folder->isSelected()), folder->name(),
                   folder->dataFolderPath(), folder->totalSize());
        for (const auto& item : folder->contentItems()) {
            fmt::print(out, "      {} {}  {:.3f} Mb\n", mark(item->isSelected()), item->displayName(), item->size());
        }
    }
    fmt::print(out, "Albums ({})\n", items.albums.size());
    for (const auto& album : items.albums) {
        fmt::print(out, "  {} {}  {} {} photos {:.3f} Mb  {} {} videos {:.3f} Mb\n", mark(album->isSelected()),
                   album->name(), mark(album->isPhotoSelected()), album->photos().size(), album->photoSize(),
                   mark(album->isVideoSelected()), album->videos().size(), album->videoSize());
    }
}

}  // namespace

int ItemsCommand::run(bool asJson, std::ostream& out, std::ostream& errors) {
    if (Supervisor::shared().isStorageAddressbook()) {
        fmt::print(errors,
                   "stowhaven: the address book holds package lists only; applications and folders are "
                   "listed as a file storage would take them\n");
        Supervisor::shared().setCurrentStorageType(StorageType::Local);
    }
    Items items = scannedItems();
    if (const auto problem = PhotoVideoManager::shared().libraryErrorMessage()) {
        fmt::print(errors, "stowhaven: Photo Library Access Error: {}\n", *problem);
    }
    if (asJson) {
        printJson(items, out);
    } else {
        printText(items, out);
    }
    return 0;
}

}  // namespace stowhaven

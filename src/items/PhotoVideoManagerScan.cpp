#include "items/PhotoVideoManager.h"

#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "items/PhotoVideoAlbum.h"
#include "items/SelectionDefaults.h"
#include "platform/AsciiCase.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/dispatch/Semaphore.h"

#include <algorithm>

namespace stowhaven {

namespace {

void setMediaFlags(bool photos, bool videos) {
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    catalogue.setHasData(StockDataSet::Photos, photos);
    catalogue.setHasData(StockDataSet::Videos, videos);
}

// The file names of the group's assets of one kind whose files the library can read.
std::vector<std::string> mediaNames(PhotoLibrary& library, const AssetsGroup& group, PhotoLibrary::Filter filter) {
    std::vector<std::string> names;
    for (const Asset& asset : library.assets(group, filter)) {
        if (const auto representation = library.defaultRepresentation(asset)) names.push_back(representation->filename);
    }
    return names;
}

bool chosenBy(const std::optional<std::vector<std::string>>& list, const std::string& name) {
    return !list || std::find(list->begin(), list->end(), name) != list->end();
}

}  // namespace

std::optional<std::string> PhotoVideoManager::libraryErrorMessage() const {
    std::lock_guard lock(state_);
    return libraryErrorMessage_;
}

void PhotoVideoManager::sortAlbums(Albums& albums) {
    std::stable_sort(albums.begin(), albums.end(), [](const auto& left, const auto& right) {
        const bool leftFirst = equalsIgnoringAsciiCase(left->name(), PhotoLibrary::kCameraRoll);
        const bool rightFirst = equalsIgnoringAsciiCase(right->name(), PhotoLibrary::kCameraRoll);
        if (leftFirst != rightFirst) return leftFirst;
        return std::is_lt(textutil::caseInsensitiveOrder(left->name(), right->name()));
    });
}

// The catalogue's flags are set outside the reading, so that whoever holds the catalogue
// while waiting for the list never blocks the reading.
void PhotoVideoManager::reset() {
    setMediaFlags(false, false);
    {
        std::lock_guard lock(state_);
        ++scansUnderWay_;
    }
    const bool read = readLibrary();
    {
        std::lock_guard lock(state_);
        --scansUnderWay_;
    }
    scanEnded_.notify_all();
    if (read) setMediaFlags(gAutoScanPhotosEnabled, gAutoScanVideosEnabled);
}

bool PhotoVideoManager::readLibrary() {
    setPhotoVideoAlbums({}, false);
    {
        std::lock_guard lock(state_);
        libraryErrorMessage_.reset();
    }
    if (!gAutoScanPhotosEnabled && !gAutoScanVideosEnabled) return false;

    for (const bool photos : {true, false}) {
        DefaultList& list = PhotoVideoAlbum::defaultAlbums(photos, true);
        list.reset();
        defaultAssetsGroup_[photos ? "PHOTOS" : "VIDEOS"] = list.names();
    }
    createSymlink();
    PhotoLibrary& library = Platform::current().photoLibrary();
    PhotoLibraryError error;
    const auto groups = library.groups(PhotoLibrary::kGroupAll, error);
    if (!groups) {
        const bool denied = error.code == PhotoLibrary::kAccessUserDeniedError ||
                            error.code == PhotoLibrary::kAccessGloballyDeniedError;
        const std::string message =
            denied ? "The user has denied access to it. Try enabling it from Settings>Privacy>Photos>Stowhaven"
                   : "Reason unknown.";
        SH_LOG("errorCode: {} | errorMessage: {}", error.code, message);
        {
            std::lock_guard lock(state_);
            libraryErrorMessage_ = message;
        }
        removeSymlink();
        Supervisor::showAlert("Photo Library Access Error", message);
        return false;
    }
    {
        std::lock_guard lock(state_);
        if (!accountedObserver_ && !groups->empty()) {
            accountedObserver_ = NotificationCenter::defaultCenter().addObserver(
                "ALBUM_ACCOUNTED", &MainQueue::shared(), [this](const Notification&) { handleAlbumAccounted(); });
        }
    }
    std::vector<std::function<void()>> sizing;
    for (const AssetsGroup& group : *groups) buildPhotoVideoAlbumUsing(group, library, sizing);
    albums_.with([](Albums& albums) { sortAlbums(albums); });
    SH_LOG("# albums: {}", albums_.with([](const Albums& albums) { return albums.size(); }));
    // Every album is listed before any is measured, so that the last one measured finds the
    // whole list when it tells whether all are.
    Semaphore measured;
    for (auto& measure : sizing) {
        // Signalled once the block is done with: run, or dropped by the queue at exit.
        const std::shared_ptr<void> done(nullptr, [&measured](void*) { measured.signal(); });
        GlobalQueue::get(GlobalQueue::Priority::High).async([&measure, done] { measure(); });
    }
    for (std::size_t count = 0; count < sizing.size(); ++count) measured.wait();
    removeSymlink();
    return !groups->empty();
}

void PhotoVideoManager::buildPhotoVideoAlbumUsing(const AssetsGroup& group, PhotoLibrary& library,
                                                  std::vector<std::function<void()>>& sizing) {
    const bool photos = gAutoScanPhotosEnabled;
    const bool videos = gAutoScanVideosEnabled;
    auto album = std::make_shared<PhotoVideoAlbum>(group.name);
    album->setEditable(group.editable);
    if (const auto poster = library.posterAsset(group)) {
        if (const auto representation = library.defaultRepresentation(*poster))
            album->setPosterName(representation->filename);
    }
    album->setAssetsGroup(group);
    if (photos) album->setPhotos(mediaNames(library, group, PhotoLibrary::Filter::AllPhotos));
    if (videos) album->setVideos(mediaNames(library, group, PhotoLibrary::Filter::AllVideos));
    // The sides are chosen before the album is measured, so that a side without bytes ends
    // up not chosen whatever the lists say.
    album->setPhotoSelected(photos && chosenBy(defaultAssetsGroup_["PHOTOS"], album->name()));
    album->setVideoSelected(videos && chosenBy(defaultAssetsGroup_["VIDEOS"], album->name()));
    sizing.push_back([album, &library] {
        album->calculateSize(library);
        NotificationCenter::defaultCenter().post("ALBUM_ACCOUNTED", album);
    });
    if (!album->photos().empty() || !album->videos().empty()) {
        albums_.with([&](Albums& albums) { albums.push_back(album); });
    }
}

void PhotoVideoManager::handleAlbumAccounted() {
    removeSymlink();
    // The list is looked at under its lock, the catalogue told after: the catalogue's lock
    // comes before a list's.
    enum class Accounting { NoAlbum, UnderWay, Done };
    const Accounting accounting = albums_.with([this](const Albums& albums) {
        if (albums.empty()) return Accounting::NoAlbum;
        if (std::any_of(albums.begin(), albums.end(), [](const auto& album) { return !album->isAllAcccounted(); })) {
            return Accounting::UnderWay;
        }
        fAllAccounted_ = AlbumTotals::photoSize(albums, false) + AlbumTotals::videoSize(albums, false) > 0;
        return Accounting::Done;
    });
    if (accounting == Accounting::NoAlbum) fAllAccounted_ = true;
    const bool done = accounting == Accounting::Done;
    setMediaFlags(done && gAutoScanPhotosEnabled, done && gAutoScanVideosEnabled);
    if (accounting == Accounting::UnderWay) return;
    {
        std::lock_guard lock(state_);
        if (accountedObserver_) NotificationCenter::defaultCenter().removeObserver(*accountedObserver_);
        accountedObserver_.reset();
    }
    NotificationCenter::defaultCenter().post("ALL_ALBUMS_ACCOUNTED");
}

}  // namespace stowhaven

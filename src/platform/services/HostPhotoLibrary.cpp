#include "platform/services/HostPhotoLibrary.h"

#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/FileNames.h"
#include "platform/Log.h"
#include "platform/SqliteDatabase.h"
#include "platform/services/PrivacyRecord.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace stowhaven {

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

// Where new assets go, below the media folder.
constexpr const char* kCameraRollFolder = "DCIM/100APPLE";

constexpr const char* kTables =
    "CREATE TABLE IF NOT EXISTS ZGENERICASSET (Z_PK INTEGER PRIMARY KEY, ZFILENAME VARCHAR, ZDIRECTORY VARCHAR,"
    " ZKIND INTEGER, ZDATECREATED TIMESTAMP);"
    "CREATE TABLE IF NOT EXISTS ZGENERICALBUM (Z_PK INTEGER PRIMARY KEY, ZTITLE VARCHAR, ZKIND INTEGER,"
    " ZEDITABLE INTEGER, ZKEYASSET INTEGER);"
    "CREATE TABLE IF NOT EXISTS Z_ALBUMASSETS (ZALBUM INTEGER, ZASSET INTEGER, ZORDER INTEGER,"
    " PRIMARY KEY (ZALBUM, ZASSET));";

std::string databasePath() { return DeviceRoot::var() + "/mobile/Media/PhotoData/Photos.sqlite"; }

// A folder of the database below the media folder: names of single folders only.
bool isRelativeFolder(const std::string& folder) {
    std::size_t start = 0;
    while (true) {
        const std::size_t slash = folder.find('/', start);
        if (!isOneFileName(std::string_view(folder).substr(start, slash - start))) return false;
        if (slash == std::string::npos) return true;
        start = slash + 1;
    }
}

bool isWithin(const fs::path& path, const fs::path& folder) {
    const auto [end, _] = std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
    return end == folder.end();
}

// What the library writes belongs to the owner of the mobile user's home, readable by all,
// as the files the device's own library writes.
void giveToMobile(const std::vector<fs::path>& paths) {
    const auto home = FileManager::attributesOfItem(DeviceRoot::var() + "/mobile");
    for (const fs::path& path : paths) {
        std::error_code code;
        const bool folder = fs::is_directory(fs::symlink_status(path, code));
        FileManager::setPermissions(path.string(), folder ? 0755 : 0644);
        if (home) FileManager::setOwner(path.string(), home->ownerId, home->groupId);
    }
}

AssetsGroup groupFrom(SqliteDatabase::Statement& row) {
    return AssetsGroup{row.columnInt(0), row.columnText(1).value_or(""), static_cast<unsigned>(row.columnInt(2)),
                       row.columnInt(3) != 0};
}

}  // namespace

std::string HostPhotoLibrary::mediaFolder() { return DeviceRoot::var() + "/mobile/Media"; }

bool HostPhotoLibrary::accessRefused(PhotoLibraryError& error) {
    if (PrivacyRecord::decisionFor(kService) != PrivacyRecord::Decision::Refused) return false;
    error = {kAccessUserDeniedError, "The owner has not allowed the program the photo library"};
    return true;
}

std::unique_ptr<SqliteDatabase> HostPhotoLibrary::openForReading() {
    auto database = SqliteDatabase::open(databasePath(), SQLITE_OPEN_READONLY);
    if (database != nullptr) database->setBusyTimeout(2s);
    return database;
}

std::unique_ptr<SqliteDatabase> HostPhotoLibrary::openForWriting(PhotoLibraryError& error) {
    if (accessRefused(error)) return nullptr;
    std::error_code code;
    fs::create_directories(fs::path(databasePath()).parent_path(), code);
    std::string reason;
    auto database = SqliteDatabase::open(databasePath(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, &reason);
    if (database != nullptr) {
        database->setBusyTimeout(2s);
        giveToMobile({mediaFolder(), fs::path(databasePath()).parent_path(), databasePath()});
        if (database->exec(kTables, &reason)) return database;
    }
    error = {-1, reason};
    return nullptr;
}

std::optional<std::vector<AssetsGroup>> HostPhotoLibrary::groups(unsigned types, PhotoLibraryError& error) {
    if (accessRefused(error)) return std::nullopt;
    std::vector<AssetsGroup> found;
    if (types & kGroupSavedPhotos) found.push_back({0, kCameraRoll, kGroupSavedPhotos, false});
    auto database = openForReading();
    if (database == nullptr) return found;
    auto rows = database->prepare("SELECT Z_PK, ZTITLE, ZKIND, ZEDITABLE FROM ZGENERICALBUM ORDER BY Z_PK");
    while (rows.step() == SqliteDatabase::Statement::Step::Row) {
        const auto group = groupFrom(rows);
        if (group.type != kGroupSavedPhotos && (group.type & types) != 0) found.push_back(group);
    }
    return found;
}

std::vector<Asset> HostPhotoLibrary::assets(const AssetsGroup& group, Filter filter) {
    std::vector<Asset> found;
    auto database = openForReading();
    if (database == nullptr) return found;
    const int kind = static_cast<int>(filter == Filter::AllPhotos ? Kind::Photo : Kind::Video);
    auto rows = group.type == kGroupSavedPhotos
                    ? database->prepare("SELECT Z_PK FROM ZGENERICASSET WHERE ZKIND = ?1 ORDER BY Z_PK")
                    : database->prepare(
                          "SELECT a.Z_PK FROM Z_ALBUMASSETS m JOIN ZGENERICASSET a ON a.Z_PK = m.ZASSET"
                          " WHERE a.ZKIND = ?1 AND m.ZALBUM = ?2 ORDER BY m.ZORDER, a.Z_PK");
    rows.bindInt(1, kind);
    if (group.type != kGroupSavedPhotos) rows.bindInt(2, group.id);
    while (rows.step() == SqliteDatabase::Statement::Step::Row) found.push_back({rows.columnInt(0)});
    return found;
}

std::optional<Asset> HostPhotoLibrary::posterAsset(const AssetsGroup& group) {
    auto database = openForReading();
    if (database == nullptr) return std::nullopt;
    auto row = group.type == kGroupSavedPhotos
                   ? database->prepare("SELECT MAX(Z_PK) FROM ZGENERICASSET")
                   : database->prepare("SELECT ZKEYASSET FROM ZGENERICALBUM WHERE Z_PK = ?");
    if (group.type != kGroupSavedPhotos) row.bindInt(1, group.id);
    if (row.step() != SqliteDatabase::Statement::Step::Row || row.isNull(0)) return std::nullopt;
    return Asset{row.columnInt(0)};
}

std::optional<std::string> HostPhotoLibrary::fileOf(const Asset& asset) {
    auto database = openForReading();
    if (database == nullptr) return std::nullopt;
    auto row = database->prepare("SELECT ZFILENAME, ZDIRECTORY FROM ZGENERICASSET WHERE Z_PK = ?");
    row.bindInt(1, asset.id);
    if (row.step() != SqliteDatabase::Statement::Step::Row) return std::nullopt;
    const std::string name = row.columnText(0).value_or("");
    const std::string folder = row.columnText(1).value_or("");
    if (!isOneFileName(name) || !isRelativeFolder(folder)) {
        SH_LOG("Asset {}: <{}> in <{}> is not a file of the media folder", asset.id, name, folder);
        return std::nullopt;
    }
    const std::string path = mediaFolder() + "/" + folder + "/" + name;
    std::error_code code;
    const fs::path real = fs::canonical(path, code);
    if (code || !fs::is_regular_file(fs::symlink_status(path, code)) ||
        !isWithin(real, fs::canonical(mediaFolder(), code))) {
        SH_LOG("Asset {}: <{}> is missing or is no plain file of the media folder", asset.id, path);
        return std::nullopt;
    }
    return path;
}

std::optional<AssetRepresentation> HostPhotoLibrary::defaultRepresentation(const Asset& asset) {
    const auto path = fileOf(asset);
    if (!path) return std::nullopt;
    std::error_code code;
    const auto size = fs::file_size(*path, code);
    if (code) return std::nullopt;
    return AssetRepresentation{fs::path(*path).filename().string(), size};
}

std::optional<std::size_t> HostPhotoLibrary::getBytes(const Asset& asset, char* buffer, std::uint64_t offset,
                                                      std::size_t length, std::string& error) {
    const auto path = fileOf(asset);
    if (!path) {
        error = fmt::format("asset {} has no file", asset.id);
        return std::nullopt;
    }
    std::ifstream file(*path, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(offset));
    file.read(buffer, static_cast<std::streamsize>(length));
    if (file.bad() || (!file && !file.eof())) {
        error = fmt::format("can't read {} bytes at {} of <{}>", length, offset, *path);
        return std::nullopt;
    }
    return static_cast<std::size_t>(file.gcount());
}

std::optional<Asset> HostPhotoLibrary::writeImage(const std::string& path, PhotoLibraryError& error) {
    return writeAsset(path, Kind::Photo, error);
}

std::optional<Asset> HostPhotoLibrary::writeVideoAtPath(const std::string& path, PhotoLibraryError& error) {
    return writeAsset(path, Kind::Video, error);
}

// The library keeps one asset for one file: the same bytes under the same name, as a second
// restore brings them, are the asset that is there.
std::optional<Asset> HostPhotoLibrary::assetWithSameFile(SqliteDatabase& database, const std::string& path,
                                                         const std::string& existing, const std::string& name) {
    std::error_code code;
    if (!fs::is_regular_file(fs::symlink_status(existing, code)) ||
        fs::file_size(existing, code) != fs::file_size(path, code)) {
        return std::nullopt;
    }
    std::ifstream left(path, std::ios::binary);
    std::ifstream right(existing, std::ios::binary);
    if (!std::equal(std::istreambuf_iterator<char>(left), {}, std::istreambuf_iterator<char>(right), {})) {
        return std::nullopt;
    }
    auto row = database.prepare("SELECT Z_PK FROM ZGENERICASSET WHERE ZFILENAME = ? AND ZDIRECTORY = ?");
    row.bindText(1, name).bindText(2, kCameraRollFolder);
    if (row.step() != SqliteDatabase::Statement::Step::Row) return std::nullopt;
    return Asset{row.columnInt(0)};
}

std::optional<Asset> HostPhotoLibrary::writeAsset(const std::string& path, Kind kind, PhotoLibraryError& error) {
    std::error_code code;
    if (!fs::is_regular_file(fs::symlink_status(path, code))) {
        error = {-1, fmt::format("<{}> is no plain file", path)};
        return std::nullopt;
    }
    std::lock_guard lock(writing_);
    auto database = openForWriting(error);
    if (database == nullptr) return std::nullopt;
    const fs::path folder = fs::path(mediaFolder()) / kCameraRollFolder;
    fs::create_directories(folder, code);
    std::string name = fs::path(path).filename().string();
    if (const auto same = assetWithSameFile(*database, path, (folder / name).string(), name)) return same;
    // The file keeps its name unless an asset has it already; then it takes the next free number.
    for (int number = 1; fs::exists(fs::symlink_status(folder / name, code)); ++number) {
        name = fmt::format("IMG_{:04d}{}", number, fs::path(path).extension().string());
    }
    if (!fs::copy_file(path, folder / name, code)) {
        error = {-1, code.message()};
        return std::nullopt;
    }
    giveToMobile({folder.parent_path(), folder, folder / name});
    auto insert = database->prepare(
        "INSERT INTO ZGENERICASSET (ZFILENAME, ZDIRECTORY, ZKIND, ZDATECREATED)"
        " VALUES (?, ?, ?, strftime('%s', 'now') - 978307200)");
    insert.bindText(1, name).bindText(2, kCameraRollFolder).bindInt(3, static_cast<int>(kind));
    std::string reason;
    if (!insert.run(&reason)) {
        fs::remove(folder / name, code);
        error = {-1, reason};
        return std::nullopt;
    }
    return Asset{database->lastInsertRowID()};
}

bool HostPhotoLibrary::addAsset(const Asset& asset, const AssetsGroup& album, PhotoLibraryError& error) {
    if (!album.editable) return true;
    std::lock_guard lock(writing_);
    auto database = openForWriting(error);
    if (database == nullptr) return false;
    auto insert = database->prepare(
        "INSERT OR IGNORE INTO Z_ALBUMASSETS (ZALBUM, ZASSET, ZORDER)"
        " VALUES (?1, ?2, (SELECT COALESCE(MAX(ZORDER), 0) + 1 FROM Z_ALBUMASSETS WHERE ZALBUM = ?1))");
    insert.bindInt(1, album.id).bindInt(2, asset.id);
    std::string reason;
    if (!insert.run(&reason)) error = {-1, reason};
    if (!reason.empty()) return false;
    auto poster = database->prepare("UPDATE ZGENERICALBUM SET ZKEYASSET = ? WHERE Z_PK = ? AND ZKEYASSET IS NULL");
    poster.bindInt(1, asset.id).bindInt(2, album.id).run();
    return true;
}

std::optional<AssetsGroup> HostPhotoLibrary::createAlbum(const std::string& name, PhotoLibraryError& error) {
    std::lock_guard lock(writing_);
    auto database = openForWriting(error);
    if (database == nullptr) return std::nullopt;
    auto insert = database->prepare("INSERT INTO ZGENERICALBUM (ZTITLE, ZKIND, ZEDITABLE) VALUES (?, ?, 1)");
    insert.bindText(1, name).bindInt(2, kGroupAlbum);
    std::string reason;
    if (!insert.run(&reason)) {
        error = {-1, reason};
        return std::nullopt;
    }
    return AssetsGroup{database->lastInsertRowID(), name, kGroupAlbum, true};
}

}  // namespace stowhaven

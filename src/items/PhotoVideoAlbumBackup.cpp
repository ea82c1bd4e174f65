#include "items/PhotoVideoAlbum.h"

#include "core/Supervisor.h"
#include "platform/FileManager.h"
#include "platform/FileNames.h"
#include "platform/Log.h"
#include "platform/OutputFile.h"
#include "platform/Platform.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <memory>

namespace stowhaven {

namespace {

// How much of an asset is read at a time.
constexpr std::size_t kChunkSize = 10485760;

// Copies the asset's file into FOLDER under its own name, a chunk at a time.
void copyAsset(PhotoLibrary& library, const Asset& asset, const std::string& folder) {
    const auto representation = library.defaultRepresentation(asset);
    if (!representation || !isOneFileName(representation->filename)) return;
    const std::string path = folder + "/" + representation->filename;
    std::string error;
    auto file = OutputFile::create(path, error);
    if (!file) {
        SH_LOG("Error while creating <{}>: {}", path, error);
        return;
    }
    for (std::uint64_t offset = 0; offset < representation->size; offset += kChunkSize) {
        const std::size_t length =
            static_cast<std::size_t>(std::min<std::uint64_t>(kChunkSize, representation->size - offset));
        const auto buffer = std::make_unique<char[]>(length);
        const auto read = library.getBytes(asset, buffer.get(), offset, length, error);
        if (!read || !file->write(buffer.get(), *read, error)) {
            SH_LOG("Error while copying <{}>: {}", path, error);
            return;
        }
        if (*read < length) return;
    }
}

}  // namespace

void PhotoVideoAlbum::prepareBackupInDirectory(const std::string& directory, bool photoOnly,
                                               PhotoLibrary& library) const {
    const Clock& clock = Platform::current().clock();
    const auto started = clock.now();
    if (!isOneFileName(name())) {
        SH_LOG("Skipping album <{}>: its name is not one folder name", name());
        return;
    }
    const std::string folder = directory + "/" + name();
    std::string error;
    if (!FileManager::createDirectory(folder, true, &error)) {
        SH_LOG("Can't create <{}>! Error: {}", folder, error);
        return;
    }
    if (!assetsGroup_) return;
    const auto assets =
        library.assets(*assetsGroup_, photoOnly ? PhotoLibrary::Filter::AllPhotos : PhotoLibrary::Filter::AllVideos);
    if (assets.empty()) return;
    Supervisor& supervisor = Supervisor::shared();
    supervisor.notifyProgress(std::nullopt, fmt::format("{}: {}", supervisor.progressMessage().value_or(""), name()));
    for (std::size_t index = 0; index < assets.size(); ++index) {
        supervisor.notifyProgress(
            index + 1 < assets.size() ? static_cast<double>(index) / static_cast<double>(assets.size()) : 0.99,
            std::nullopt);
        copyAsset(library, assets[index], folder);
    }
    SH_LOG("Took: {:f}s", std::chrono::duration<double>(clock.now() - started).count());
}

}  // namespace stowhaven

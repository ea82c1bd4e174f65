#include "core/FileSizes.h"

#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/Log.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace stowhaven {

namespace {

std::string lowercaseExtension(const std::string& entry) {
    std::string extension = std::filesystem::path(entry).extension().string();
    if (!extension.empty()) extension.erase(0, 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

bool counts(const std::string& entry, const std::optional<std::string>& originalPath) {
    if (entry.starts_with("Caches/") || entry.starts_with("Cookies/") || entry.ends_with(".DS_Store")) return false;
    if (!originalPath) return true;
    const std::string extension = lowercaseExtension(entry);
    if (*originalPath == FileSizes::photoLibraryOriginalPath()) return extension != "mov";
    if (*originalPath == FileSizes::cameraRollOriginalPath()) {
        return extension != "jpg" && extension != "jpeg" && extension != "png";
    }
    return false;
}

void logFailure(const std::string& path, const std::string& error, const std::string& detail) {
    SH_LOG("Couldn't get size of <{}>. Error: {}. {}", path, error, detail);
}

}  // namespace

double FileSizes::sizeOrNothing(const std::string& path) {
    return std::max(0.0, getFileSizeAtPath(path, std::nullopt));
}

std::string FileSizes::photoLibraryOriginalPath() {
    const std::string var = DeviceRoot::var();
    return var + "/mobile/Media/DCIM " + var + "/mobile/Media/PhotoData";
}

std::string FileSizes::cameraRollOriginalPath() { return DeviceRoot::var() + "/mobile/Media/DCIM"; }

// Only files count below a folder: the sizes of folder entries themselves differ from one
// file system to another.
double FileSizes::getFileSizeAtPath(const std::string& path, const std::optional<std::string>& originalPath) {
    std::string error;
    const auto attributes = FileManager::attributesOfItem(path, &error);
    if (attributes && attributes->type == FileType::Regular) {
        return static_cast<double>(attributes->size) / kBytesPerMegabyte;
    }
    bool isDirectory = false;
    if (!FileManager::fileExists(path, isDirectory) || !isDirectory) {
        logFailure(path, error.empty() ? "not a file or a folder" : error, "");
        return kUnmeasurable;
    }
    std::error_code code;
    std::filesystem::recursive_directory_iterator walk(path, code);
    if (code) {
        logFailure(path, code.message(), "");
        return kUnmeasurable;
    }
    // Entries are named relative to the folder, as "Caches/x" or "Library/Caches/x".
    const std::size_t prefix = path.size() + (path.ends_with('/') ? 0 : 1);
    double bytes = 0;
    for (const auto end = std::filesystem::recursive_directory_iterator(); walk != end;) {
        const std::string entry = walk->path().string().substr(prefix);
        if (walk->is_regular_file(code) && !walk->is_symlink(code) && counts(entry, originalPath)) {
            const auto size = walk->file_size(code);
            if (code) {
                logFailure(walk->path().string(), code.message(), "");
            } else {
                bytes += static_cast<double>(size);
            }
        }
        walk.increment(code);
        if (code) {
            logFailure(path, code.message(), "The walk stopped");
            break;
        }
    }
    return bytes / kBytesPerMegabyte;
}

}  // namespace stowhaven

#include "platform/FileManager.h"

#include "platform/FileDescriptor.h"
#include "platform/Log.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace stowhaven {

namespace {

bool fail(std::string* error, const std::string& what, const std::string& path, const std::string& reason) {
    if (error) *error = what + " <" + path + ">: " + reason;
    return false;
}

bool fail(std::string* error, const std::string& what, const std::string& path, const std::error_code& code) {
    return fail(error, what, path, code.message());
}

FileType typeOf(mode_t mode) {
    if (S_ISREG(mode)) return FileType::Regular;
    if (S_ISDIR(mode)) return FileType::Directory;
    if (S_ISLNK(mode)) return FileType::SymbolicLink;
    return FileType::Other;
}

constexpr std::string_view kUnfinishedWriteMark = ".partial-";
// The six letters or digits that mkstemp puts in place of "XXXXXX".
constexpr std::size_t kUniqueLength = 6;

bool isUniquePart(std::string_view text) {
    return text.size() == kUniqueLength &&
           std::all_of(text.begin(), text.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)); });
}

// The target of a temporary file named ".<target>.partial-XXXXXX"; nothing for any other name.
std::optional<std::string> targetOfUnfinishedWrite(std::string_view name) {
    const std::size_t mark = name.rfind(kUnfinishedWriteMark);
    if (!name.starts_with('.') || mark == std::string_view::npos || mark < 2) return std::nullopt;
    if (!isUniquePart(name.substr(mark + kUnfinishedWriteMark.size()))) return std::nullopt;
    return std::string(name.substr(1, mark - 1));
}

bool writeAll(int descriptor, const std::string& bytes) {
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(descriptor, bytes.data() + written, bytes.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        if (count == 0) {
            errno = ENOSPC;
            return false;
        }
        written += static_cast<std::size_t>(count);
    }
    return true;
}

bool syncFolder(const std::string& folder) {
    const FileDescriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return descriptor.isOpen() && fsync(descriptor.get()) == 0;
}

}  // namespace

bool FileManager::fileExists(const std::string& path) {
    bool isDirectory = false;
    return fileExists(path, isDirectory);
}

bool FileManager::fileExists(const std::string& path, bool& isDirectory) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) return false;
    isDirectory = S_ISDIR(info.st_mode);
    return true;
}

bool FileManager::isRegularFile(const std::string& path) {
    bool isDirectory = false;
    return fileExists(path, isDirectory) && !isDirectory;
}

std::optional<std::vector<std::string>> FileManager::contentsOfDirectory(const std::string& path, std::string* error) {
    std::error_code code;
    fs::directory_iterator entries(path, code);
    if (code) {
        fail(error, "Couldn't list", path, code);
        return std::nullopt;
    }
    std::vector<std::string> names;
    for (const auto& entry : entries) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::optional<FileAttributes> FileManager::attributesOfItem(const std::string& path, std::string* error) {
    struct stat info {};
    if (lstat(path.c_str(), &info) != 0) {
        fail(error, "Couldn't read the attributes of", path, std::strerror(errno));
        return std::nullopt;
    }
    return FileAttributes{typeOf(info.st_mode),  static_cast<std::uint64_t>(info.st_size),
                          info.st_mode & 07777U, info.st_uid,
                          info.st_gid,           info.st_mtime};
}

std::optional<std::string> FileManager::destinationOfSymbolicLink(const std::string& path) {
    std::error_code code;
    const fs::path destination = fs::read_symlink(path, code);
    if (code) return std::nullopt;
    return destination.string();
}

bool FileManager::setOwner(const std::string& path, unsigned ownerId, unsigned groupId, std::string* error) {
    if (lchown(path.c_str(), ownerId, groupId) == 0) return true;
    fail(error, "Couldn't change the owner of", path, std::strerror(errno));
    return false;
}

bool FileManager::setPermissions(const std::string& path, unsigned mode, std::string* error) {
    // Through a descriptor opened without following a link, so that a link put in the
    // item's place can't turn the change onto another file.
    const int descriptor = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return fail(error, "Couldn't open", path, std::strerror(errno));
    const bool changed = fchmod(descriptor, static_cast<mode_t>(mode)) == 0;
    const int reason = errno;
    close(descriptor);
    if (!changed) return fail(error, "Couldn't change the mode of", path, std::strerror(reason));
    return true;
}

std::optional<FileSystemAttributes> FileManager::attributesOfFileSystem(const std::string& path, std::string* error) {
    struct statvfs info {};
    if (statvfs(path.c_str(), &info) != 0) {
        fail(error, "Couldn't read the file system of", path, std::strerror(errno));
        return std::nullopt;
    }
    return FileSystemAttributes{static_cast<std::uint64_t>(info.f_blocks) * info.f_frsize,
                                static_cast<std::uint64_t>(info.f_bavail) * info.f_frsize};
}

std::uint64_t FileManager::sizeOfItem(const std::string& path) {
    std::error_code code;
    const auto status = fs::symlink_status(path, code);
    if (code) return 0;
    if (fs::is_regular_file(status)) return fs::file_size(path, code);
    if (!fs::is_directory(status)) return 0;
    std::uint64_t total = 0;
    for (fs::recursive_directory_iterator it(path, fs::directory_options::skip_permission_denied, code), end;
         !code && it != end; it.increment(code)) {
        std::error_code entryCode;
        if (it->is_regular_file(entryCode) && !it->is_symlink(entryCode)) total += it->file_size(entryCode);
    }
    return total;
}

bool FileManager::createDirectory(const std::string& path, bool withIntermediates, std::string* error) {
    std::error_code code;
    if (withIntermediates) {
        fs::create_directories(path, code);
        if (!code && fs::is_directory(path, code)) return true;
        return fail(error, "Couldn't create", path, code ? code.message() : "a file stands in its place");
    }
    if (mkdir(path.c_str(), 0755) != 0) return fail(error, "Couldn't create", path, std::strerror(errno));
    return true;
}

bool FileManager::copyItem(const std::string& from, const std::string& to, std::string* error) {
    std::error_code code;
    if (fs::exists(fs::symlink_status(to, code))) return fail(error, "Couldn't copy onto", to, "it exists");
    fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::copy_symlinks, code);
    return code ? fail(error, "Couldn't copy", from, code) : true;
}

bool FileManager::moveItem(const std::string& from, const std::string& to, std::string* error) {
    std::error_code code;
    if (fs::exists(fs::symlink_status(to, code))) return fail(error, "Couldn't move onto", to, "it exists");
    fs::rename(from, to, code);
    if (code == std::errc::cross_device_link) {
        // Another file system: copy, then remove the original only once the copy is whole.
        if (!copyItem(from, to, error)) return false;
        return removeItem(from, error);
    }
    return code ? fail(error, "Couldn't move", from, code) : true;
}

bool FileManager::removeItem(const std::string& path, std::string* error) {
    std::error_code code;
    if (!fs::exists(fs::symlink_status(path, code))) return fail(error, "Couldn't remove", path, "no such file");
    fs::remove_all(path, code);
    return code ? fail(error, "Couldn't remove", path, code) : true;
}

bool FileManager::createSymbolicLink(const std::string& path, const std::string& destination, std::string* error) {
    std::error_code code;
    fs::create_symlink(destination, path, code);
    return code ? fail(error, "Couldn't create the link", path, code) : true;
}

std::optional<std::string> FileManager::contentsOfFile(const std::string& path, std::string* error) {
    bool isDirectory = false;
    if (!fileExists(path, isDirectory) || isDirectory) {
        fail(error, "Couldn't read", path, isDirectory ? "it is a folder" : "no such file");
        return std::nullopt;
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        fail(error, "Couldn't read", path, std::strerror(errno));
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

std::optional<std::string> FileManager::headOfFile(const std::string& path, std::size_t count) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    std::string head(count, '\0');
    file.read(head.data(), static_cast<std::streamsize>(count));
    head.resize(static_cast<std::size_t>(file.gcount()));
    return head;
}

bool FileManager::writeFile(const std::string& path, const std::string& bytes, std::string* error, unsigned mode) {
    const fs::path target(path);
    const std::string folder = target.has_parent_path() ? target.parent_path().string() : ".";
    // Another program's sweep may take the temporary file in the instant between its making
    // and its lock; the rename then finds nothing, and the write is made once more.
    for (int attempt = 1;; ++attempt) {
        std::string temporary =
            folder + "/." + target.filename().string() + std::string(kUnfinishedWriteMark) + "XXXXXX";
        const FileDescriptor file(mkostemp(temporary.data(), O_CLOEXEC));
        if (!file.isOpen()) return fail(error, "Couldn't write", path, std::strerror(errno));
        flock(file.get(), LOCK_EX);
        if (fchmod(file.get(), static_cast<mode_t>(mode)) != 0 || !writeAll(file.get(), bytes) ||
            fsync(file.get()) != 0) {
            const int reason = errno;
            unlink(temporary.c_str());
            return fail(error, "Couldn't write", path, std::strerror(reason));
        }
        if (rename(temporary.c_str(), path.c_str()) == 0) break;
        const int reason = errno;
        unlink(temporary.c_str());
        if (reason != ENOENT || attempt == 2) return fail(error, "Couldn't write", path, std::strerror(reason));
    }
    // The new name lasts through a power loss only once the folder is on disk too.
    if (!syncFolder(folder)) return fail(error, "Couldn't flush the folder of", path, std::strerror(errno));
    return true;
}

void FileManager::removeUnfinishedWrites(const std::string& folder,
                                         const std::function<bool(const std::string& target)>& of) {
    for (const std::string& name : contentsOfDirectory(folder).value_or(std::vector<std::string>{})) {
        const auto target = targetOfUnfinishedWrite(name);
        if (!target || !of(*target)) continue;
        const std::string path = folder + "/" + name;
        // Opened without following a link, and removed only while its lock is ours: a writer
        // that still runs holds that lock until its rename.
        const FileDescriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        struct stat info {};
        if (!file.isOpen() || fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode)) continue;
        if (flock(file.get(), LOCK_EX | LOCK_NB) != 0) continue;
        if (unlink(path.c_str()) == 0) SH_LOG("Removed <{}>, left by a write that didn't end", path);
    }
}

}  // namespace stowhaven

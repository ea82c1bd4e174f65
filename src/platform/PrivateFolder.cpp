#include "platform/PrivateFolder.h"

#include "platform/FileDescriptor.h"
#include "platform/Log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace stowhaven {

namespace {

constexpr mode_t kPrivateMode = 0700;
// A folder found wrong is moved aside and made again; one that is still wrong after that is
// being fought over, and is given up.
constexpr int kAttempts = 3;
constexpr int kAsideNames = 100;

bool isOwn(const struct stat& status) {
    return S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() && (status.st_mode & 07777) == kPrivateMode;
}

// What stands at NAME, for the log line, without following it.
std::string found(int parent, const std::string& name) {
    struct stat status {};
    if (::fstatat(parent, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return std::strerror(errno);
    if (S_ISLNK(status.st_mode)) {
        char target[4096] = {};
        const ssize_t length = ::readlinkat(parent, name.c_str(), target, sizeof target - 1);
        return "a symbolic link to <" + std::string(target, length > 0 ? static_cast<std::size_t>(length) : 0) + ">";
    }
    return fmt::format("{} owned by uid {} with mode {:04o}", S_ISDIR(status.st_mode) ? "a folder" : "not a folder",
                       status.st_uid, status.st_mode & 07777);
}

// Renames without replacing anything that stands at the new name.
bool renameAside(int parent, const std::string& from, const std::string& to) {
#if defined(RENAME_NOREPLACE)
    return ::renameat2(parent, from.c_str(), parent, to.c_str(), RENAME_NOREPLACE) == 0;
#elif defined(RENAME_EXCL)
    return ::renameatx_np(parent, from.c_str(), parent, to.c_str(), RENAME_EXCL) == 0;
#else
    struct stat status {};
    if (::fstatat(parent, to.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
        errno = EEXIST;
        return false;
    }
    return ::renameat(parent, from.c_str(), parent, to.c_str()) == 0;
#endif
}

// Moves what stands at NAME to a new name beside it: a link moves as a link, and the
// files of whoever made it stay theirs.
bool moveAside(int parent, const std::string& name, const std::string& path) {
    const std::string what = found(parent, name);
    for (int index = 1; index <= kAsideNames; ++index) {
        const std::string aside = fmt::format("{}.moved-{}-{}", name, ::getpid(), index);
        if (renameAside(parent, name, aside)) {
            SH_LOG("<{}> was {}, not the program's own folder: moved aside to <{}>", path, what, aside);
            return true;
        }
        if (errno != EEXIST) break;
    }
    SH_LOG("<{}> is {}, not the program's own folder, and can't be moved aside: {}", path, what, std::strerror(errno));
    return false;
}

// The folder NAME in PARENT, the program's own, opened; -1 with a log line when it can't be.
FileDescriptor openOwnFolder(int parent, const std::string& name, const std::string& path) {
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (::mkdirat(parent, name.c_str(), kPrivateMode) != 0 && errno != EEXIST) {
            SH_LOG("Couldn't create <{}>: {}", path, std::strerror(errno));
            return FileDescriptor();
        }
        FileDescriptor folder(::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        struct stat status {};
        if (folder.get() >= 0 && ::fstat(folder.get(), &status) == 0 && isOwn(status)) return folder;
        if (!moveAside(parent, name, path)) return FileDescriptor();
    }
    SH_LOG("Couldn't make <{}> the program's own folder", path);
    return FileDescriptor();
}

}  // namespace

bool PrivateFolder::make(const std::string& base, const std::vector<std::string>& names) {
    std::error_code error;
    std::filesystem::create_directories(base, error);
    FileDescriptor folder(::open(base.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.get() < 0) {
        SH_LOG("Couldn't open <{}>: {}", base, std::strerror(errno));
        return false;
    }
    std::string path = base;
    for (const std::string& name : names) {
        path += "/" + name;
        folder = openOwnFolder(folder.get(), name, path);
        if (folder.get() < 0) return false;
    }
    return true;
}

bool PrivateFolder::isPrivate(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && isOwn(status);
}

}  // namespace stowhaven

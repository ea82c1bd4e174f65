#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

enum class FileType { Regular, Directory, SymbolicLink, Other };

struct FileAttributes {
    FileType type = FileType::Other;
    std::uint64_t size = 0;  // bytes of the item itself; see sizeOfItem for a folder's
    unsigned permissions = 0;
    unsigned ownerId = 0;
    unsigned groupId = 0;
    std::time_t modificationTime = 0;
};

struct FileSystemAttributes {
    std::uint64_t size = 0;
    std::uint64_t freeSize = 0;
};

// The device's file operations. Failures answer false or nothing and, when asked, leave a
// readable description in `error`; nothing throws.
class FileManager {
public:
    static bool fileExists(const std::string& path);
    static bool fileExists(const std::string& path, bool& isDirectory);
    static bool isRegularFile(const std::string& path);

    // Names of the entries, sorted; "." and ".." left out.
    static std::optional<std::vector<std::string>> contentsOfDirectory(const std::string& path,
                                                                       std::string* error = nullptr);
    // Does not follow a final symbolic link.
    static std::optional<FileAttributes> attributesOfItem(const std::string& path, std::string* error = nullptr);
    static std::optional<FileSystemAttributes> attributesOfFileSystem(const std::string& path,
                                                                      std::string* error = nullptr);
    // Bytes of a file, or of all the files below a folder; links are not followed.
    static std::uint64_t sizeOfItem(const std::string& path);

    static bool createDirectory(const std::string& path, bool withIntermediates, std::string* error = nullptr);
    // Copies a file or a whole folder; the destination must not exist yet.
    static bool copyItem(const std::string& from, const std::string& to, std::string* error = nullptr);
    // Moves a file or a folder, across file systems too; the destination must not exist yet.
    static bool moveItem(const std::string& from, const std::string& to, std::string* error = nullptr);
    // Removes a file, a link or a whole folder.
    static bool removeItem(const std::string& path, std::string* error = nullptr);
    static bool createSymbolicLink(const std::string& path, const std::string& destination,
                                   std::string* error = nullptr);
    // What the link at PATH holds, as it stands; nothing when PATH is no symbolic link.
    static std::optional<std::string> destinationOfSymbolicLink(const std::string& path);
    // Gives the item to the owner and group, a final symbolic link itself rather than what
    // it leads to.
    static bool setOwner(const std::string& path, unsigned ownerId, unsigned groupId, std::string* error = nullptr);
    // Gives the file or folder at PATH the permission bits MODE, whatever the process umask;
    // a symbolic link in its last place is refused, not followed.
    static bool setPermissions(const std::string& path, unsigned mode, std::string* error = nullptr);

    static std::optional<std::string> contentsOfFile(const std::string& path, std::string* error = nullptr);
    // At most the first COUNT bytes of a file; nothing when it can't be read.
    static std::optional<std::string> headOfFile(const std::string& path, std::size_t count);
    // Replaces the file at PATH so that a crash or a kill at any moment leaves either the old
    // file or the new one whole: the bytes go into a temporary file beside the target, named
    // ".<name>.partial-XXXXXX", which is given MODE, flushed to disk and renamed over the
    // target; then the folder is flushed. The temporary file is locked (flock) while the
    // write is under way, so that removeUnfinishedWrites of another process leaves it alone.
    static bool writeFile(const std::string& path, const std::string& bytes, std::string* error = nullptr,
                          unsigned mode = 0644);
    // Removes from FOLDER, with a log line each, the temporary files of writes whose process
    // died before the rename, for the target names that OF accepts. Only plain files named
    // exactly as writeFile names them go; a write still under way is left alone.
    static void removeUnfinishedWrites(const std::string& folder,
                                       const std::function<bool(const std::string& target)>& of);
};

}  // namespace stowhaven

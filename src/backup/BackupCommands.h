#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace stowhaven {

// The command lines of the backup pipeline, each filled into its one template here.
//
// Device paths reach tar through files(): on the device itself as the absolute paths, which
// tar stores without their leading "/"; on another device root as `-C "<root>"` and the
// paths relative to it, so that the archive holds the names the device itself would store
// and restores onto any root. Every value stands between double quotes, escaped.
class BackupCommands {
public:
    // ` "<path>"` for each device path, after `-C "<root>"` away from the device.
    static std::string files(const std::vector<std::string>& devicePaths);

    // tar -c[j]f "ARCHIVE" "PATH"
    static std::string createArchive(const std::string& archive, bool compressed, const std::string& devicePath);
    // tar -c[j] -f "ARCHIVE" "PATH": how the preference archive starts.
    static std::string createArchiveStartingWith(const std::string& archive, bool compressed,
                                                 const std::string& devicePath);
    // tar -c[j] "PATH": no archive file at all; the first update makes it.
    static std::string createWithoutArchiveFile(bool compressed, const std::string& devicePath);
    // tar -uf "ARCHIVE" "PATH"...
    static std::string updateArchive(const std::string& archive, const std::vector<std::string>& devicePaths);
    // The photo (or video) archive of the two media folders, without caches and the other
    // kind of file.
    static std::string mediaArchive(const std::string& archive, bool compressed, bool photoOnly);
    // The mark left beside an archive that tar read to its end; the hyphen puts it among
    // the names the start-up sweep deletes.
    static constexpr const char* kWholeArchiveSuffix = "-whole";
    // Reads the archive (plain or bzip2) to its end and, only if tar could, leaves the
    // empty file MARK, which needs no free space but an entry.
    static std::string markWholeArchive(const std::string& archive, const std::string& mark);

    // Cuts the archive into NAME-000, NAME-001... of SIZE megabytes in FOLDER, lists the parts
    // into NAME.idx and deletes the archive.
    static std::string split(const std::string& folder, std::uint64_t sizeInMegaBytes, const std::string& archive,
                             const std::string& name);

    // The bzip2 tar of an application's two data folders, without caches and cookies.
    static std::string applicationArchive(const std::string& archive, const std::string& documentPath,
                                          const std::string& libraryPath);
    // The bzip2 tar of a folder, with a file of its tweak beside it (or "").
    static std::string folderArchive(const std::string& archive, const std::string& folderPath,
                                     const std::string& extraFile);
    // The bzip2 stream of a tar that holds the inner tar file (a path in the program's
    // temporary folder); deletes the inner one.
    static std::string nestedArchive(const std::string& innerArchive, const std::string& archive);

    // apt-get's package lists, into a cache of the program's own.
    static std::string aptGetUpdate(const std::string& cache, const std::string& log);
    // Downloads a package's .deb into that cache; the identifier stands unquoted.
    static std::string aptGetDownload(const std::string& packageIdentifier, const std::string& cache,
                                      const std::string& log);
};

}  // namespace stowhaven

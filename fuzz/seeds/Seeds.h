#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace stowhaven::fuzz {

// The seed corpus of one target: FOLDER/<corpus name>, where each seed is a file.
class SeedCorpus {
public:
    SeedCorpus(const std::filesystem::path& folder, std::string_view name);
    void add(const std::string& name, std::string_view bytes) const;

private:
    std::filesystem::path folder_;
};

// What a command of the host prints, for seeds made by the real tools (tar, dpkg-query,
// uuencode) in a folder of their own. A command that fails stops the seeding.
std::string hostOutput(const std::string& command);

// A fresh folder for such commands, removed with the object.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    const std::string& path() const { return path_; }
    void write(const std::string& name, std::string_view bytes) const;

private:
    std::string path_;
};

// One function per target, each writing its corpus into FOLDER.
void writeArchiveSeeds(const std::filesystem::path& folder);
void writeTarSeeds(const std::filesystem::path& folder);
void writePlistSeeds(const std::filesystem::path& folder);
void writeNoteSeeds(const std::filesystem::path& folder);
void writePackageSeeds(const std::filesystem::path& folder);
void writeRestoreLogSeeds(const std::filesystem::path& folder);
void writeMultistatusSeeds(const std::filesystem::path& folder);
void writeDropboxSeeds(const std::filesystem::path& folder);
void writeBoxSeeds(const std::filesystem::path& folder);
void writeGDriveSeeds(const std::filesystem::path& folder);
void writeOneDriveSeeds(const std::filesystem::path& folder);
void writeSugarSyncSeeds(const std::filesystem::path& folder);
void writeFtpListSeeds(const std::filesystem::path& folder);

}  // namespace stowhaven::fuzz

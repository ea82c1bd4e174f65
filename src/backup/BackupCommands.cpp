#include "backup/BackupCommands.h"

#include "platform/DeviceRoot.h"
#include "platform/ShellQuote.h"

#include <fmt/format.h>

namespace stowhaven {

namespace {

const char* compression(bool compressed) { return compressed ? "j" : ""; }

// The two folders of the photo library, archived whole for photos and for videos alike.
const std::vector<std::string> kMediaFolders = {"/var/mobile/Media/DCIM", "/var/mobile/Media/PhotoData"};

}  // namespace

std::string BackupCommands::files(const std::vector<std::string>& devicePaths) {
    std::string text;
    const bool onDevice = DeviceRoot::isDeviceItself();
    if (!onDevice && !devicePaths.empty()) text += " -C " + ShellQuote::quoted(DeviceRoot::get());
    for (const std::string& path : devicePaths) {
        // An empty path stays as it is: tar reports it and goes on.
        const bool relative = !onDevice && path.starts_with('/');
        text += " " + ShellQuote::quoted(relative ? path.substr(1) : path);
    }
    return text;
}

std::string BackupCommands::createArchive(const std::string& archive, bool compressed, const std::string& devicePath) {
    return fmt::format("tar -c{}f {}{}", compression(compressed), ShellQuote::quoted(archive), files({devicePath}));
}

std::string BackupCommands::createArchiveStartingWith(const std::string& archive, bool compressed,
                                                      const std::string& devicePath) {
    return fmt::format("tar -c{} -f {}{}", compression(compressed), ShellQuote::quoted(archive), files({devicePath}));
}

std::string BackupCommands::createWithoutArchiveFile(bool compressed, const std::string& devicePath) {
    return fmt::format("tar -c{}{}", compression(compressed), files({devicePath}));
}

std::string BackupCommands::updateArchive(const std::string& archive, const std::vector<std::string>& devicePaths) {
    return fmt::format("tar -uf {}{}", ShellQuote::quoted(archive), files(devicePaths));
}

std::string BackupCommands::mediaArchive(const std::string& archive, bool compressed, bool photoOnly) {
    // Two blanks stand before the first exclude.
    return fmt::format(R"(tar -c{}  "--exclude=Cache*" "--exclude=*.{}" -f {}{})", compression(compressed),
                       photoOnly ? "MOV" : "JPG", ShellQuote::quoted(archive), files(kMediaFolders));
}

std::string BackupCommands::markWholeArchive(const std::string& archive, const std::string& mark) {
    return fmt::format("tar -tf {} > /dev/null && : > {}", ShellQuote::quoted(archive), ShellQuote::quoted(mark));
}

std::string BackupCommands::split(const std::string& folder, std::uint64_t sizeInMegaBytes, const std::string& archive,
                                  const std::string& name) {
    // The backslash keeps an alias of ls out of the listing.
    return fmt::format(R"(cd {0} ; "split" -b {1}M -d -a 3 {2} {3}-;\ls -1a {3}-* > {3}.idx; rm -f {2})",
                       ShellQuote::quoted(folder), sizeInMegaBytes, ShellQuote::quoted(archive),
                       ShellQuote::quoted(name));
}

std::string BackupCommands::applicationArchive(const std::string& archive, const std::string& documentPath,
                                               const std::string& libraryPath) {
    constexpr const char* kExcludes = R"("--exclude=Caches" "--exclude=Cookies")";
    const std::string paths = files({documentPath, libraryPath});
    // The device's tar reads an exclude wherever it stands; a host's GNU tar (1.29 and later)
    // only for the names after it, so away from the device the excludes go first.
    if (!DeviceRoot::isDeviceItself())
        return fmt::format("tar -cjf {} {}{}", ShellQuote::quoted(archive), kExcludes, paths);
    return fmt::format("tar -cjf {}{} {}", ShellQuote::quoted(archive), paths, kExcludes);
}

std::string BackupCommands::folderArchive(const std::string& archive, const std::string& folderPath,
                                          const std::string& extraFile) {
    return fmt::format("tar -cjf {}{}", ShellQuote::quoted(archive), files({folderPath, extraFile}));
}

std::string BackupCommands::nestedArchive(const std::string& innerArchive, const std::string& archive) {
    // The outer tar names the inner one by its place on the device, where a restore puts it back.
    return fmt::format("tar -cf -{} | bzip2 -c --best > {}; rm -f {}", files({DeviceRoot::devicePathOf(innerArchive)}),
                       ShellQuote::quoted(archive), ShellQuote::quoted(innerArchive));
}

std::string BackupCommands::aptGetUpdate(const std::string& cache, const std::string& log) {
    return fmt::format("apt-get update -o dir::cache={} 1> {}", ShellQuote::path(cache), ShellQuote::path(log));
}

std::string BackupCommands::aptGetDownload(const std::string& packageIdentifier, const std::string& cache,
                                           const std::string& log) {
    return fmt::format("apt-get install -dy --force-yes --reinstall {} -o dir::cache={} 1> {}", packageIdentifier,
                       ShellQuote::path(cache), ShellQuote::path(log));
}

}  // namespace stowhaven

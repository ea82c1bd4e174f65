#include "backup/PackageRepackTree.h"

#include "platform/ContainedPath.h"
#include "platform/FileManager.h"
#include "platform/Log.h"

#include <algorithm>
#include <set>
#include <utility>

namespace stowhaven {

namespace {

// What dpkg-deb asks of the control area and of the maintainer scripts in it.
constexpr unsigned kControlFolderMode = 0755;
constexpr unsigned kControlFileMode = 0644;

struct Copy {
    std::string folder;
    std::set<std::string> listed;
    PackageRepackTree::Outcome outcome;
    // Folders get their owner and mode once their contents are in.
    std::vector<std::pair<std::string, FileAttributes>> folders;

    void keepOwnerAndMode(const std::string& path, const FileAttributes& attributes, bool isLink) {
        std::string error;
        if (!FileManager::setOwner(path, attributes.ownerId, attributes.groupId, &error)) SH_LOG("{}", error);
        // The mode after the owner, which clears the set-id bits; a link has none of its own.
        if (!isLink && !FileManager::setPermissions(path, attributes.permissions, &error)) SH_LOG("{}", error);
    }

    // Copies one listed path; false when the package must be refused.
    bool copy(const std::string& devicePath) {
        std::string reason;
        const auto source = ContainedPath::hostPath(devicePath, &reason);
        if (!source) {
            outcome.refusal = devicePath + ": " + reason;
            return false;
        }
        auto attributes = FileManager::attributesOfItem(*source);
        // A link to a folder that holds files of the package (/etc -> private/etc) goes in as
        // the folder, as dpkg unpacked it: a link there would lead the files astray.
        if (attributes && attributes->type == FileType::SymbolicLink && holdsListedPaths(devicePath)) {
            const auto folderPath = ContainedPath::followedPath(devicePath, &reason);
            if (!folderPath) {
                outcome.refusal = devicePath + ": " + reason;
                return false;
            }
            attributes = FileManager::attributesOfItem(*folderPath);
        }
        if (!attributes) {
            outcome.missing.push_back(devicePath);
            return true;
        }
        const std::string target = folder + devicePath;
        std::string error;
        FileManager::createDirectory(target.substr(0, target.rfind('/')), true);
        bool copied = false;
        switch (attributes->type) {
            case FileType::Directory:
                copied = FileManager::createDirectory(target, true, &error);
                if (copied) folders.emplace_back(target, *attributes);
                return copied || fail(devicePath, error);
            case FileType::SymbolicLink:
                if (const auto destination = FileManager::destinationOfSymbolicLink(*source)) {
                    copied = FileManager::createSymbolicLink(target, *destination, &error);
                }
                break;
            case FileType::Regular:
                copied = FileManager::copyItem(*source, target, &error);
                break;
            case FileType::Other:
                error = "neither a file, a folder nor a link";
                break;
        }
        if (!copied) return fail(devicePath, error);
        keepOwnerAndMode(target, *attributes, attributes->type == FileType::SymbolicLink);
        return true;
    }

    bool holdsListedPaths(const std::string& devicePath) const {
        const auto next = listed.upper_bound(devicePath + "/");
        return next != listed.end() && next->starts_with(devicePath + "/");
    }

    // A listed path that is there but can't be copied leaves the package incomplete.
    bool fail(const std::string& devicePath, const std::string& error) {
        SH_LOG("Couldn't copy <{}>: {}", devicePath, error);
        outcome.missing.push_back(devicePath);
        return true;
    }

    bool wasCopied(const std::string& devicePath) const {
        return FileManager::attributesOfItem(folder + devicePath).has_value();
    }
};

bool writeControlFile(const std::string& path, const std::string& bytes, unsigned mode) {
    std::string error;
    if (FileManager::writeFile(path, bytes, &error, mode)) return true;
    SH_LOG("{}", error);
    return false;
}

}  // namespace

PackageRepackTree::Outcome PackageRepackTree::build(const PackageRepackRecord& record, const std::string& folder) {
    Copy copy{folder, {record.files.begin(), record.files.end()}, {}, {}};
    const std::string control = folder + "/DEBIAN";
    std::string error;
    if (!FileManager::createDirectory(control, true, &error) ||
        !FileManager::setPermissions(folder, kControlFolderMode, &error) ||
        !FileManager::setPermissions(control, kControlFolderMode, &error)) {
        return {error, {}};
    }
    for (const std::string& path : record.files) {
        if (!copy.copy(path)) return copy.outcome;
    }
    // The folders' modes last, the deepest first, so that none shuts out what goes below it.
    for (auto folderAt = copy.folders.rbegin(); folderAt != copy.folders.rend(); ++folderAt) {
        copy.keepOwnerAndMode(folderAt->first, folderAt->second, false);
    }

    // A conffile that isn't in the tree would stop dpkg-deb: it is left out of the list.
    std::string conffiles;
    for (const std::string& path : record.conffiles) {
        if (copy.wasCopied(path)) {
            conffiles += path + "\n";
        } else if (std::ranges::find(copy.outcome.missing, path) == copy.outcome.missing.end()) {
            copy.outcome.missing.push_back(path);
        }
    }
    bool written = writeControlFile(control + "/control", record.control, kControlFileMode);
    if (!conffiles.empty()) written = written && writeControlFile(control + "/conffiles", conffiles, kControlFileMode);
    for (const auto& script : record.scripts) {
        const auto attributes = FileManager::attributesOfItem(script.hostPath);
        const auto bytes = FileManager::contentsOfFile(script.hostPath);
        written = written && attributes && bytes &&
                  writeControlFile(control + "/" + script.name, *bytes, attributes->permissions & 0777);
    }
    if (!written) copy.outcome.refusal = "its control area can't be written in " + control;
    return copy.outcome;
}

}  // namespace stowhaven

#include "restore/ArchiveMembers.h"

#include "archive/TarListing.h"
#include "core/Supervisor.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/ShellQuote.h"

#include <fmt/format.h>

#include <algorithm>

namespace stowhaven {

namespace {

// "/a/b/../c" -> "/a/c"; nothing when ".." would climb above the root.
std::optional<std::string> normalDevicePath(const std::string& path) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (start <= path.size()) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        const std::string part = path.substr(start, end - start);
        if (part == "..") {
            if (parts.empty()) return std::nullopt;
            parts.pop_back();
        } else if (!part.empty() && part != ".") {
            parts.push_back(part);
        }
        start = end + 1;
    }
    std::string normal;
    for (const std::string& part : parts) normal += "/" + part;
    return normal.empty() ? "/" : normal;
}

bool isWithin(const std::string& devicePath, const std::vector<std::string>& owned) {
    return std::any_of(owned.begin(), owned.end(), [&](const std::string& place) {
        const auto normalPlace = normalDevicePath(place);
        if (!normalPlace) return false;
        return devicePath == *normalPlace || devicePath.starts_with(*normalPlace == "/" ? "/" : *normalPlace + "/");
    });
}

bool hasClimb(const std::string& name) {
    std::size_t start = 0;
    while (start <= name.size()) {
        const std::size_t end = std::min(name.find('/', start), name.size());
        if (name.compare(start, end - start, "..") == 0 && end - start == 2) return true;
        start = end + 1;
    }
    return false;
}

// Whether the member itself, by its name and kind, may be written.
bool isAcceptable(const TarListing::Member& member, const std::vector<std::string>& owned) {
    if (!ArchiveMembers::landsWithin(member.name, owned) || member.name.find('\n') != std::string::npos) return false;
    switch (member.type) {
        case TarListing::Type::File:
        case TarListing::Type::Directory:
            return true;
        case TarListing::Type::HardLink:
            return ArchiveMembers::landsWithin(member.linkTarget, owned);
        case TarListing::Type::SymbolicLink: {
            // A relative target is read from the link's own folder.
            const std::string folder = "/" + member.name.substr(0, member.name.find_last_of('/') + 1);
            const auto target =
                normalDevicePath(member.linkTarget.starts_with('/') ? member.linkTarget : folder + member.linkTarget);
            return target && isWithin(*target, owned);
        }
        case TarListing::Type::Other:
            return false;
    }
    return false;
}

// A bzip2 archive is listed from a plain copy of the program's own.
std::optional<std::vector<TarListing::Member>> listMembers(const std::string& archive, std::string& error) {
    const auto head = FileManager::headOfFile(archive, 3);
    if (!head || *head != "BZh") return TarListing::read(archive, &error);
    Supervisor& supervisor = Supervisor::shared();
    const std::string plain = supervisor.getTemporaryFileName(true) + ".tar";
    supervisor.systemExecute(fmt::format("bzip2 -dc {} > {}", ShellQuote::quoted(archive), ShellQuote::quoted(plain)));
    auto members = TarListing::read(plain, &error);
    FileManager::removeItem(plain);
    return members;
}

}  // namespace

bool ArchiveMembers::landsWithin(const std::string& name, const std::vector<std::string>& owned) {
    if (name.empty() || name.starts_with('/') || hasClimb(name)) return false;
    const auto devicePath = normalDevicePath("/" + name);
    return devicePath && isWithin(*devicePath, owned);
}

std::optional<ArchiveMembers> ArchiveMembers::of(const std::string& archive, const std::vector<std::string>& owned) {
    std::string error;
    const auto members = listMembers(archive, error);
    if (!members) {
        SH_LOG("Couldn't read <{}>: {}. Nothing is restored from it", archive, error);
        return std::nullopt;
    }
    ArchiveMembers sorted;
    for (const auto& member : *members) {
        if (isAcceptable(member, owned)) {
            sorted.allowed_.push_back(member.name);
        } else {
            SH_LOG("Refusing <{}> of <{}>: it would land outside the places it belongs to", member.name, archive);
            sorted.refused_.push_back(member.name);
        }
    }
    return sorted;
}

bool ArchiveMembers::isAllowed(const std::string& name) const {
    return std::find(allowed_.begin(), allowed_.end(), name) != allowed_.end();
}

}  // namespace stowhaven

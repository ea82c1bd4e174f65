#include "restore/ExtractionPlan.h"

#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"

#include <deque>

namespace stowhaven {

namespace {

// As many links as the system follows in one path before it gives up.
constexpr int kMostLinks = 40;

using Type = TarListing::Type;

// The parts of a path between its slashes; "." parts are kept, as tar counts them.
std::deque<std::string> partsOf(const std::string& path) {
    std::deque<std::string> parts;
    std::size_t start = 0;
    while (start <= path.size()) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        if (end > start) parts.push_back(path.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

std::string parentOf(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos || slash == 0 ? "/" : path.substr(0, slash);
}

bool isAtOrBelow(const std::string& path, const std::string& place) {
    return path == place || (path.starts_with(place) && (place == "/" || path[place.size()] == '/'));
}

bool isClimbOrAbsolute(const std::string& name) {
    if (name.starts_with('/')) return true;
    for (const std::string& part : partsOf(name)) {
        if (part == "..") return true;
    }
    return false;
}

}  // namespace

ExtractionPlan::ExtractionPlan(const std::vector<std::string>& owned, const std::string& target, int strip)
    : target_(DeviceRoot::path(target)), strip_(strip) {
    for (const std::string& devicePath : owned) {
        // The place itself is taken as named: a link standing there leads elsewhere.
        const auto parts = partsOf(devicePath);
        if (parts.empty()) continue;
        std::string parent;
        for (std::size_t index = 0; index + 1 < parts.size(); ++index) parent += "/" + parts[index];
        const auto folder = resolve(DeviceRoot::path(parent.empty() ? "/" : parent), true);
        if (!folder) continue;
        Place place{(*folder == "/" ? "" : *folder) + "/" + parts.back()};
        for (std::string existing = place.path;; existing = parentOf(existing)) {
            if (const auto attributes = FileManager::attributesOfItem(existing)) {
                place.ownerId = attributes->ownerId;
                place.groupId = attributes->groupId;
                break;
            }
            if (existing == "/") break;
        }
        places_.push_back(std::move(place));
    }
}

ExtractionPlan::Entry ExtractionPlan::entryAt(const std::string& path) const {
    if (const auto made = made_.find(path); made != made_.end()) return made->second;
    const auto attributes = FileManager::attributesOfItem(path);
    if (!attributes) return {};
    switch (attributes->type) {
        case FileType::Directory:
            return {Kind::Directory, {}};
        case FileType::SymbolicLink:
            return {Kind::Link, FileManager::destinationOfSymbolicLink(path).value_or("")};
        default:
            return {Kind::File, {}};
    }
}

std::optional<std::string> ExtractionPlan::resolve(const std::string& path, bool followLast) const {
    std::deque<std::string> pending = partsOf(path);
    std::string current;  // "" stands for "/"
    int links = 0;
    while (!pending.empty()) {
        const std::string part = std::move(pending.front());
        pending.pop_front();
        if (part == ".") continue;
        if (part == "..") {
            current = current.empty() ? "" : parentOf(current);
            if (current == "/") current.clear();
            continue;
        }
        const std::string next = current + "/" + part;
        const bool last = pending.empty();
        const Entry entry = last && !followLast ? Entry{} : entryAt(next);
        if (entry.kind == Kind::Link) {
            if (++links > kMostLinks || entry.linkTarget.empty()) return std::nullopt;
            const auto target = partsOf(entry.linkTarget);
            pending.insert(pending.begin(), target.begin(), target.end());
            if (entry.linkTarget.starts_with('/')) current.clear();
            continue;
        }
        if (entry.kind == Kind::File && !last) return std::nullopt;
        current = next;
    }
    return current.empty() ? "/" : current;
}

std::optional<std::string> ExtractionPlan::stripped(const std::string& name) const {
    if (strip_ == 0) return name;
    auto parts = partsOf(name);
    if (parts.size() <= static_cast<std::size_t>(strip_)) return std::nullopt;
    std::string rest;
    for (std::size_t index = static_cast<std::size_t>(strip_); index < parts.size(); ++index) {
        rest += (rest.empty() ? "" : "/") + parts[index];
    }
    return rest;
}

std::optional<std::string> ExtractionPlan::landingOf(const std::string& name) const {
    auto parts = partsOf(name);
    std::erase(parts, ".");
    std::string folder = target_;
    for (std::size_t index = 0; index + 1 < parts.size(); ++index) folder += "/" + parts[index];
    const auto resolved = resolve(folder, true);
    if (!resolved || parts.empty()) return resolved;
    return (*resolved == "/" ? "" : *resolved) + "/" + parts.back();
}

const ExtractionPlan::Place* ExtractionPlan::placeHolding(const std::string& path) const {
    const Place* holding = nullptr;
    for (const Place& place : places_) {
        if (isAtOrBelow(path, place.path) && (!holding || place.path.size() > holding->path.size())) holding = &place;
    }
    return holding;
}

std::optional<ExtractionPlan::Landing> ExtractionPlan::place(const TarListing::Member& member, std::string& reason) {
    if (isClimbOrAbsolute(member.name) || member.name.find('\n') != std::string::npos) {
        reason = "its name leads out of the device folder";
        return std::nullopt;
    }
    const auto name = stripped(member.name);
    if (!name) return Landing{};
    const auto landing = landingOf(*name);
    const Place* place = landing ? placeHolding(*landing) : nullptr;
    if (!place) {
        reason = "it would land outside the places it belongs to";
        return std::nullopt;
    }
    const Entry there = entryAt(*landing);
    if (there.kind == Kind::Link) {
        const auto through = resolve(*landing, true);
        if (!through || !placeHolding(*through)) {
            reason = "it would write through a link that leads elsewhere";
            return std::nullopt;
        }
    }
    switch (member.type) {
        case Type::Directory:
            if (there.kind != Kind::Link) made_[*landing] = {Kind::Directory, {}};
            break;
        case Type::File:
            made_[*landing] = {Kind::File, {}};
            break;
        case Type::HardLink: {
            const auto source = isClimbOrAbsolute(member.linkTarget) ? std::nullopt : stripped(member.linkTarget);
            const auto sourceLanding = source ? landingOf(*source) : std::nullopt;
            const auto made = sourceLanding ? made_.find(*sourceLanding) : made_.end();
            if (made == made_.end() || made->second.kind != Kind::File) {
                reason = "it is a hard link to <" + member.linkTarget + ">, which is no file of this archive";
                return std::nullopt;
            }
            made_[*landing] = {Kind::File, {}};
            break;
        }
        case Type::SymbolicLink: {
            const Entry before = there;
            made_[*landing] = {Kind::Link, member.linkTarget};
            const auto leadsTo = resolve(*landing, true);
            if (!leadsTo || !placeHolding(*leadsTo)) {
                if (before.kind == Kind::Missing) made_.erase(*landing);
                else made_[*landing] = before;
                reason = "its link to <" + member.linkTarget + "> leads outside the places it belongs to";
                return std::nullopt;
            }
            links_.push_back(*landing);
            break;
        }
        case Type::Other:
            reason = "it is no file, folder or link";
            return std::nullopt;
    }
    return Landing{*landing, place->ownerId, place->groupId};
}

bool ExtractionPlan::linksStayWithin(std::string& reason) const {
    for (const std::string& link : links_) {
        const auto made = made_.find(link);
        if (made == made_.end() || made->second.kind != Kind::Link) continue;
        const auto leadsTo = resolve(link, true);
        if (!leadsTo || !placeHolding(*leadsTo)) {
            reason = "the link <" + DeviceRoot::devicePathOf(link) + "> leads outside once the whole archive stands";
            return false;
        }
    }
    return true;
}

}  // namespace stowhaven

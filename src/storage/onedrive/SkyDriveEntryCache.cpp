#include "storage/onedrive/SkyDriveEntryCache.h"

#include "platform/AsciiCase.h"

#include <algorithm>

namespace stowhaven {

namespace {

constexpr std::string_view kStoredSuffix = ".pdf";

}  // namespace

void SkyDriveEntryCache::replaceChildren(const std::string& folderId, std::vector<SkyDriveEntry> entries) {
    std::lock_guard lock(mutex_);
    std::erase_if(entries_, [&](const SkyDriveEntry& entry) { return entry.parentId == folderId; });
    for (SkyDriveEntry& entry : entries) {
        entry.parentId = folderId;
        entries_.push_back(std::move(entry));
    }
}

void SkyDriveEntryCache::add(SkyDriveEntry entry) {
    std::lock_guard lock(mutex_);
    std::erase_if(entries_, [&](const SkyDriveEntry& known) { return known.id == entry.id; });
    entries_.push_back(std::move(entry));
}

void SkyDriveEntryCache::remove(const std::string& id) {
    std::lock_guard lock(mutex_);
    std::erase_if(entries_, [&](const SkyDriveEntry& entry) { return entry.id == id || entry.parentId == id; });
}

void SkyDriveEntryCache::clear() {
    std::lock_guard lock(mutex_);
    entries_.clear();
}

std::optional<SkyDriveEntry> SkyDriveEntryCache::folder(const std::string& name, const std::string& parentId) const {
    std::lock_guard lock(mutex_);
    const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const SkyDriveEntry& entry) {
        return entry.isFolder && entry.parentId == parentId && entry.name == name;
    });
    if (found == entries_.end()) return std::nullopt;
    return *found;
}

std::optional<SkyDriveEntry> SkyDriveEntryCache::file(const std::string& name, const std::string& parentId) const {
    std::lock_guard lock(mutex_);
    const std::string stored = name + std::string(kStoredSuffix);
    const auto found = std::find_if(entries_.rbegin(), entries_.rend(), [&](const SkyDriveEntry& entry) {
        return !entry.isFolder && entry.parentId == parentId &&
               (equalsIgnoringAsciiCase(entry.name, name) || equalsIgnoringAsciiCase(entry.name, stored));
    });
    if (found == entries_.rend()) return std::nullopt;
    return *found;
}

std::optional<SkyDriveEntry> SkyDriveEntryCache::named(const std::string& name, const std::string& parentId) const {
    std::lock_guard lock(mutex_);
    const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const SkyDriveEntry& entry) {
        return entry.parentId == parentId && equalsIgnoringAsciiCase(entry.name, name);
    });
    if (found == entries_.end()) return std::nullopt;
    return *found;
}

}  // namespace stowhaven

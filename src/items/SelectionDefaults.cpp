#include "items/SelectionDefaults.h"

#include "core/Supervisor.h"

#include <algorithm>
#include <atomic>

namespace stowhaven {

namespace {

// The strings of the list; other elements name nothing.
std::optional<std::vector<std::string>> readList(const std::string& key) {
    const auto array = Supervisor::shared().lowLevelGetArrayPreferencesDataForKey(key);
    if (!array) return std::nullopt;
    std::vector<std::string> names;
    for (const PlistValue& element : *array) {
        if (const std::string* name = element.asString()) names.push_back(*name);
    }
    return names;
}

std::atomic<unsigned> gReloadRound{0};

}  // namespace

DefaultList::DefaultList(std::string key) : key_(std::move(key)) {}

void DefaultList::reset() {
    const unsigned round = gReloadRound;
    auto names = readList(key_);
    std::lock_guard lock(mutex_);
    names_ = std::move(names);
    loadedRound_ = round;
}

void DefaultList::reloadAllOnNextUse() { ++gReloadRound; }

std::optional<std::vector<std::string>> DefaultList::names() {
    {
        std::lock_guard lock(mutex_);
        if (loadedRound_ == gReloadRound) return names_;
    }
    reset();
    std::lock_guard lock(mutex_);
    return names_;
}

bool DefaultList::contains(const std::string& name) {
    const auto list = names();
    return list && std::find(list->begin(), list->end(), name) != list->end();
}

SelectionDefaults::SelectionDefaults(std::string backupKey, std::string restoreKey)
    : backup_(std::move(backupKey)), restore_(std::move(restoreKey)) {}

void SelectionDefaults::reset() {
    backup_.reset();
    restore_.reset();
}

}  // namespace stowhaven

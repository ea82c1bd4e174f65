#include "items/DeviceItems.h"

#include "core/FileSizes.h"
#include "core/Text.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/plist/PlistCodec.h"

#include <algorithm>
#include <array>
#include <filesystem>

namespace stowhaven {

namespace {

constexpr std::array<const char*, 3> kPreferenceFolders = {"/var/mobile/Library/Preferences", "/var/preferences",
                                                           "/var/preferences/SystemConfiguration"};
constexpr const char* kSpringboardFolder = "/var/mobile/Library/SpringBoard";

std::optional<std::vector<std::string>> listed(const std::string& folder) {
    std::string error;
    auto names = FileManager::contentsOfDirectory(DeviceRoot::path(folder), &error);
    if (!names) SH_LOG("Couldn't get the contents of directory <{}>! Error: {}", folder, error);
    return names;
}

// A value of the package manager's settings; none when they or it can't be read.
std::optional<PlistValue> cydiaSetting(std::string_view key) {
    const auto settings = PlistCodec::readFile(DeviceRoot::path(DeviceItems::kCydiaPreferencesPath));
    const auto* entries = settings ? settings->asDictionary() : nullptr;
    const PlistValue* value = entries ? valueForKey(*entries, key) : nullptr;
    return value ? std::optional(*value) : std::nullopt;
}

bool isRegularFile(const std::string& devicePath) {
    const auto attributes = FileManager::attributesOfItem(DeviceRoot::path(devicePath));
    return attributes && attributes->type == FileType::Regular;
}

}  // namespace

DeviceItems::PreferenceFiles DeviceItems::preferenceFiles() {
    PreferenceFiles files;
    for (const char* folder : kPreferenceFolders) {
        const auto names = listed(folder);
        if (!names) return {};
        for (const std::string& name : *names) {
            const std::string path = std::string(folder) + "/" + name;
            if (std::filesystem::path(name).extension() != ".plist" || !isRegularFile(path)) continue;
            auto file = std::make_shared<PreferenceFile>(path, ArchiveValue());
            if (path == kCydiaPreferencesPath) {
                file->setSelected(true);
                file->selectStateForOperation(true);
            }
            files.push_back(std::move(file));
        }
    }
    sortByCompare(files);
    return files;
}

DeviceItems::PreferenceFiles DeviceItems::springboardFiles() {
    PreferenceFiles files;
    const auto names = listed(kSpringboardFolder);
    if (!names) return {};
    for (const std::string& name : *names) {
        if (!name.ends_with(".plist") || !(name.starts_with("applicationstate") || name.starts_with("Icon"))) continue;
        const std::string path = std::string(kSpringboardFolder) + "/" + name;
        auto file = std::make_shared<PreferenceFile>(path, ArchiveValue());
        file->setSize(FileSizes::sizeOrNothing(DeviceRoot::path(path)));
        file->selectStateForOperation(true);
        files.push_back(std::move(file));
    }
    return files;
}

DeviceItems::Sources DeviceItems::repositorySources() {
    const auto sources = cydiaSetting("CydiaSources");
    if (!sources || !sources->isDictionary()) {
        SH_LOG("Couldn't read current user repos @ <{}>!", kCydiaPreferencesPath);
        return {};
    }
    return sourcesIn(*sources->asDictionary());
}

DeviceItems::Sources DeviceItems::sourcesIn(const PlistValue::Dictionary& cydiaSources) {
    Sources found;
    for (const auto& [key, value] : cydiaSources) {
        const auto* source = value.asDictionary();
        if (source == nullptr) continue;
        const std::string* distribution = stringForKey(*source, "Distribution");
        const bool stable = distribution && textutil::caseInsensitiveOrder(*distribution, "stable") == 0;
        if (!stable) found.push_back(std::make_shared<RepositorySource>(*source));
    }
    return found;
}

PlistValue DeviceItems::cydiaSections() { return cydiaSetting("Sections").value_or(PlistValue()); }

}  // namespace stowhaven

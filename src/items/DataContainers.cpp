#include "items/DataContainers.h"

#include "items/Application.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/Log.h"

#include <algorithm>

namespace stowhaven {

namespace {

constexpr const char* kDataContainersFolder = "/var/mobile/Containers/Data/Application";

void indexEntries(const std::string& folder, std::size_t container,
                  std::unordered_map<std::string, std::size_t>& firstWith) {
    for (const std::string& name : FileManager::contentsOfDirectory(folder).value_or(std::vector<std::string>{})) {
        firstWith.try_emplace(name, container);
    }
}

}  // namespace

DataContainers::DataContainers(std::vector<std::string> paths) : paths_(std::move(paths)) {
    for (std::size_t index = 0; index < paths_.size(); ++index) {
        const std::string container = DeviceRoot::path(paths_[index]);
        indexEntries(container, index, firstWithBundle_);
        indexEntries(container + "/Library/Preferences", index, firstWithPreferences_);
    }
}

DataContainers DataContainers::read() {
    if (!Application::hasDataContainers()) return {};
    std::string error;
    const auto names = FileManager::contentsOfDirectory(DeviceRoot::path(kDataContainersFolder), &error);
    if (!names) {
        SH_LOG("Could NOT get the content of <{}>. Error: {}", kDataContainersFolder, error);
        return {};
    }
    std::vector<std::string> paths;
    for (const std::string& name : *names) paths.push_back(std::string(kDataContainersFolder) + "/" + name);
    return DataContainers(std::move(paths));
}

std::optional<std::string> DataContainers::containerOf(const std::string& bundleName,
                                                       const std::string& bundleIdentifier) const {
    if (paths_.empty()) return std::nullopt;
    std::size_t first = paths_.size() - 1;
    if (const auto bundle = firstWithBundle_.find(bundleName + ".app"); bundle != firstWithBundle_.end()) {
        first = std::min(first, bundle->second);
    }
    if (const auto preferences = firstWithPreferences_.find(bundleIdentifier + ".plist");
        preferences != firstWithPreferences_.end()) {
        first = std::min(first, preferences->second);
    }
    return paths_[first];
}

}  // namespace stowhaven

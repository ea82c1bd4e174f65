#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace stowhaven {

// The data containers of a device that keeps application data apart from the bundles,
// indexed once by what tells an application's own container apart: its bundle's folder, or
// its preferences file. Finding the container of every application then costs one listing
// per container rather than a look into every container for each application.
class DataContainers {
public:
    // None: the device keeps data beside the bundles.
    DataContainers() = default;
    // The containers at those device paths, in that order.
    explicit DataContainers(std::vector<std::string> paths);
    // The device's containers, read anew; none on a system that keeps data beside the
    // bundles.
    static DataContainers read();

    bool empty() const { return paths_.empty(); }
    // The first container that holds "<bundle name>.app" or the application's preferences;
    // failing that the last container; nothing without containers.
    std::optional<std::string> containerOf(const std::string& bundleName, const std::string& bundleIdentifier) const;

private:
    std::vector<std::string> paths_;
    // Entry name to the index of the first container that has it.
    std::unordered_map<std::string, std::size_t> firstWithBundle_;
    std::unordered_map<std::string, std::size_t> firstWithPreferences_;
};

}  // namespace stowhaven

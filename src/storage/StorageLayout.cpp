#include "storage/StorageLayout.h"

#include "core/Supervisor.h"
#include "core/Text.h"

#include <algorithm>

namespace stowhaven {

namespace {

std::string joined(std::string_view folder, std::string_view name) {
    std::string path(folder);
    if (!path.ends_with('/')) path += '/';
    return path + std::string(name);
}

}  // namespace

std::string StorageLayout::stamp(Date date) { return gDateFormatter.stringFromDate(date); }

std::optional<Date> StorageLayout::dateOfStamp(std::string_view stamp) { return gDateFormatter.dateFromString(stamp); }

std::string StorageLayout::historyFileName(Date date) { return stamp(date) + std::string(kHistoryFileSuffix); }

std::optional<Date> StorageLayout::dateOfHistoryFile(std::string_view name) {
    return dateOfStamp(textutil::replacingAll(std::string(name), kHistoryFileSuffix, ""));
}

std::string StorageLayout::deviceDirectory(std::string_view base, std::string_view deviceName) {
    return joined(base, deviceName);
}

std::string StorageLayout::sessionDirectory(std::string_view deviceDirectory, Date date) {
    return joined(deviceDirectory, stamp(date));
}

std::string StorageLayout::dataDirectory(std::string_view sessionDirectory, std::string_view kind) {
    return joined(sessionDirectory, kind);
}

std::vector<std::string> StorageLayout::existingFiles(const std::vector<std::string>& listing) {
    std::vector<std::string> names;
    std::copy_if(listing.begin(), listing.end(), std::back_inserter(names),
                 [](const std::string& name) { return name.ends_with(kHistoryFileSuffix); });
    return names;
}

std::optional<std::string> StorageLayout::mostRecent(const std::vector<std::string>& existingFiles) {
    if (existingFiles.empty()) return std::nullopt;
    return existingFiles.back();
}

}  // namespace stowhaven

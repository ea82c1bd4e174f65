#include "platform/ContainedPath.h"

#include "platform/DeviceRoot.h"

#include <algorithm>
#include <filesystem>

namespace stowhaven {

namespace fs = std::filesystem;

namespace {

std::nullopt_t refuse(std::string* reason, std::string text) {
    if (reason) *reason = std::move(text);
    return std::nullopt;
}

// No empty, "." or ".." step, no byte the file list can't hold.
bool isPlainAbsolute(std::string_view path) {
    if (!path.starts_with('/') || path.ends_with('/') || path.find('\0') != std::string_view::npos) return false;
    return std::ranges::none_of(fs::path(path).relative_path(),
                                [](const fs::path& step) { return step == "." || step == ".." || step.empty(); });
}

bool isWithin(const fs::path& path, const fs::path& folder) {
    return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first == folder.end();
}

// HOSTPATH with its links followed as far as it exists, what doesn't exist taken as named,
// when that stays inside the device root.
std::optional<fs::path> followedInsideRoot(const fs::path& hostPath, std::string* reason) {
    std::error_code code;
    const fs::path root = fs::canonical(DeviceRoot::get(), code);
    if (code) return refuse(reason, "the device root can't be read: " + code.message());
    const fs::path followed = fs::weakly_canonical(hostPath, code);
    if (code) return refuse(reason, "it can't be read: " + code.message());
    if (!isWithin(followed, root)) return refuse(reason, "it leads out of the device root");
    return followed;
}

}  // namespace

std::optional<std::string> ContainedPath::hostPath(std::string_view devicePath, std::string* reason) {
    if (!isPlainAbsolute(devicePath)) return refuse(reason, "not a plain absolute path");
    const fs::path onHost = DeviceRoot::path(devicePath);
    const auto folder = followedInsideRoot(onHost.parent_path(), reason);
    if (!folder) return std::nullopt;
    return (*folder / onHost.filename()).string();
}

std::optional<std::string> ContainedPath::followedPath(std::string_view devicePath, std::string* reason) {
    if (!isPlainAbsolute(devicePath)) return refuse(reason, "not a plain absolute path");
    const auto followed = followedInsideRoot(DeviceRoot::path(devicePath), reason);
    if (!followed) return std::nullopt;
    return followed->string();
}

}  // namespace stowhaven

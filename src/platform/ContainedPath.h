#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace stowhaven {

// Where a device path named by the device's own records (a package's file list) lies on
// this machine, when reading it can't lead out of the device root: the path must be
// absolute, without "." or ".." steps, and where its links lead must lie inside the root.
class ContainedPath {
public:
    // The host path of DEVICEPATH with the links of its folders followed, but not a link in
    // its last step, which stays a link; nothing, with the reason, when it is refused.
    static std::optional<std::string> hostPath(std::string_view devicePath, std::string* reason = nullptr);
    // The same with every link followed, the last one too.
    static std::optional<std::string> followedPath(std::string_view devicePath, std::string* reason = nullptr);
};

}  // namespace stowhaven

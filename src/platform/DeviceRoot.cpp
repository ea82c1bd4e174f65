#include "platform/DeviceRoot.h"

#include "platform/Log.h"

#include <filesystem>
#include <mutex>
#include <shared_mutex>

namespace stowhaven {

namespace {

std::shared_mutex gRootMutex;
std::string gRoot = "/";

}  // namespace

bool DeviceRoot::set(std::string_view root) {
    std::error_code error;
    std::string normal = std::filesystem::absolute(std::filesystem::path(root), error).lexically_normal().string();
    while (normal.size() > 1 && normal.back() == '/') normal.pop_back();
    if (error || root.empty()) {
        SH_LOG("Refusing device root <{}>: {}", root, error ? error.message() : "no folder named");
        return false;
    }
    std::unique_lock lock(gRootMutex);
    gRoot = std::move(normal);
    return true;
}

std::string DeviceRoot::get() {
    std::shared_lock lock(gRootMutex);
    return gRoot;
}

bool DeviceRoot::isDeviceItself() { return get() == "/"; }

std::string DeviceRoot::path(std::string_view devicePath) {
    const std::string root = get();
    if (root == "/") return std::string(devicePath);
    std::string result = root;
    if (!devicePath.starts_with('/')) result += '/';
    result += devicePath;
    return result;
}

std::string DeviceRoot::devicePathOf(std::string_view hostPath) {
    const std::string root = get();
    if (root == "/" || !hostPath.starts_with(root)) return std::string(hostPath);
    const std::string_view rest = hostPath.substr(root.size());
    if (rest.empty()) return "/";
    return rest.starts_with('/') ? std::string(rest) : std::string(hostPath);
}

std::string DeviceRoot::var() { return path((std::filesystem::path("/") / "var").string()); }

}  // namespace stowhaven

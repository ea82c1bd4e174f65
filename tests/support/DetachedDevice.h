#pragma once

#include "platform/DeviceFacts.h"
#include "platform/DeviceRoot.h"
#include "platform/Platform.h"
#include "platform/Shell.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

namespace stowhaven::test {

// For programs that work with sessions but must never touch the host as a device: the
// benchmarks and the fuzz targets. The device root is a fresh folder of their own, no
// command line runs, and the device's facts are fixed. Header-only, so that such programs
// need nothing of the test suite's build.
class DetachedDevice {
public:
    DetachedDevice() {
        std::string pattern = (std::filesystem::temp_directory_path() / "stowhaven-detached-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr || !DeviceRoot::set(pattern)) {
            throw std::runtime_error("no detached device root at " + pattern);
        }
        root_ = pattern;
        Platform::current().setShell(std::make_unique<SilentShell>());
        DeviceFactsReader::pin(
            DeviceFacts{"0123456789abcdef0123456789abcdef01234567", "Bench iPhone", "iPhone7,2", "8.1.2"});
    }
    ~DetachedDevice() {
        DeviceRoot::set("/");
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    DetachedDevice(const DetachedDevice&) = delete;
    DetachedDevice& operator=(const DetachedDevice&) = delete;

private:
    class SilentShell final : public Shell {
    public:
        void systemExecute(const std::string&) override {}
    };

    std::string root_;
};

}  // namespace stowhaven::test

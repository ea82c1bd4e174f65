#include "core/Supervisor.h"

#include "core/NetworkMtu.h"
#include "platform/ApplicationNotifications.h"
#include "platform/DeviceFacts.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/MemoryStatistics.h"
#include "platform/Platform.h"
#include "platform/ProcessControl.h"
#include "platform/ShellQuote.h"
#include "platform/Strings.h"

#include <fmt/format.h>

namespace stowhaven {

const DateFormatter gDateFormatter("yyyy-MM-dd_HH~mm~ss");

namespace {

constexpr const char* kBundleIdentifier = "com.larkmoor.stowhaven";
constexpr const char* kDisplayName = "Stowhaven";

// The tools that the rest of the system shells out to, each with the package that brings it.
struct RequiredTool {
    const char* package;
    const char* devicePath;
};
constexpr std::array<RequiredTool, 5> kRequiredTools = {{{"network-cmds", "/sbin/ifconfig"},
                                                         {"gawk", "/usr/bin/gawk"},
                                                         {"coreutils-bin", "/bin/mv"},
                                                         {"openssl", "/usr/bin/openssl"},
                                                         {"findutils", "/usr/bin/find"}}};

// The instance is never destroyed at exit, so that blocks still running then can reach it.
std::mutex gSharedMutex;
std::atomic<Supervisor*> gShared{nullptr};

bool isFileOnDevice(const std::string& devicePath) { return FileManager::isRegularFile(DeviceRoot::path(devicePath)); }

long long megabytesOf(std::uint64_t bytes) { return static_cast<long long>(bytes / 1048576); }

}  // namespace

Supervisor& Supervisor::shared() {
    if (Supervisor* instance = gShared.load(std::memory_order_acquire)) return *instance;
    std::lock_guard lock(gSharedMutex);
    if (gShared.load(std::memory_order_relaxed) == nullptr) gShared.store(new Supervisor, std::memory_order_release);
    return *gShared.load(std::memory_order_relaxed);
}

void Supervisor::resetForTesting() {
    std::lock_guard lock(gSharedMutex);
    delete gShared.exchange(nullptr);
}

Supervisor::Supervisor() : version_(STOWHAVEN_VERSION), exitHandler_(ProcessControl::exit) {
    SH_LOG("{} ({}) {}", kBundleIdentifier, kDisplayName, version_);
    logMemoryUsage();
    NotificationCenter& center = NotificationCenter::defaultCenter();
    foregroundObserver_ = center.addObserver(kApplicationWillEnterForegroundNotification, nullptr,
                                             [this](const Notification&) { refreshFreeSpace(); });

    const DeviceFacts facts = DeviceFactsReader::read();
    devicePlatform_ = facts.platform;
    deviceUID_ = facts.uniqueIdentifier;
    SH_LOG("UDID: {}", deviceUID_);
    deviceSystemVersion_ = facts.systemVersion;
    deviceName_ = facts.name;
    deviceInfos_ = fmt::format("\n\n\n-- {}-{}: {}", devicePlatform_, deviceSystemVersion_, deviceUID_);

    progressCanceledObserver_ =
        center.addObserver("PROGRESS_CANCELED", nullptr, [this](const Notification&) { handleProgressCanceled(); });

    refreshFreeSpace();
    linkAccessibilitySettings();
    installMissingTools();
    limitNetworkMtu();
    removeTemporaryFiles();
    currentStorageType_ = persistedStorageType();
    loadMaximumBackups();
}

Supervisor::~Supervisor() {
    NotificationCenter& center = NotificationCenter::defaultCenter();
    center.removeObserver(foregroundObserver_);
    center.removeObserver(progressCanceledObserver_);
}

// The link stands under the device root at both ends, so that a device image never links
// into the host's own folders; on the device itself the line is the usual one.
void Supervisor::linkAccessibilitySettings() {
    const std::string var = DeviceRoot::var();
    if (FileManager::isRegularFile(var + "/root/Library/Preferences/com.apple.Accessibility.plist")) return;
    systemExecute(fmt::format("ln -sf {} {}",
                              ShellQuote::path(var + "/mobile/Library/Preferences/com.apple.Accessibility.plist"),
                              ShellQuote::path(var + "/root/Library/Preferences/com.apple.Accessibility.plist")));
}

void Supervisor::installMissingTools() {
    for (const RequiredTool& tool : kRequiredTools) {
        if (isFileOnDevice(tool.devicePath)) continue;
        systemExecute(std::string("apt-get install ") + tool.package);
        SH_LOG("Installed missing <{}>!", tool.package);
    }
}

void Supervisor::systemExecute(const std::string& command) {
    if (fCanceled_) {
        SH_LOG("Not run, as the job was canceled: {}", command);
        return;
    }
    Platform::current().shell().systemExecute(command);
}

void Supervisor::reboot() { Platform::current().shell().executeOnRunningSystem("reboot"); }

void Supervisor::respring() {
    Shell& shell = Platform::current().shell();
    if (isFileOnDevice("/usr/bin/respring")) {
        shell.executeOnRunningSystem("respring");
    } else if (isFileOnDevice("/bin/launchctl")) {
        shell.executeOnRunningSystem("launchctl stop com.apple.SpringBoard");
    } else if (isFileOnDevice("/usr/bin/killall")) {
        Platform::current().systemNotifications().post("com.apple.language.changed");
    } else {
        showAlert(Strings::localized("WARNING"), Strings::localized("RESPRING_MANUALLY"));
    }
}

std::string Supervisor::memoryUsageString() const {
    const auto statistics = MemoryStatistics::read();
    if (!statistics) {
        SH_LOG("Failed to fetch vm statistics");
        return {};
    }
    return fmt::format("Memory stats: {}M Total\t{}M Used\t{}M Free", megabytesOf(statistics->totalBytes),
                       megabytesOf(statistics->usedBytes), megabytesOf(statistics->freeBytes));
}

void Supervisor::logMemoryUsage() const {
    if (const std::string usage = memoryUsageString(); !usage.empty()) SH_LOG("{}", usage);
}

void Supervisor::setExitHandler(ExitHandler handler) {
    std::lock_guard lock(mutex_);
    exitHandler_ = std::move(handler);
}

}  // namespace stowhaven

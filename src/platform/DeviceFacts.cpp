#include "platform/DeviceFacts.h"

#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/plist/PlistCodec.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <mutex>

namespace stowhaven {

namespace {

std::mutex gPinMutex;
std::optional<DeviceFacts> gPinned;

std::string trimmed(const std::string& text) {
    constexpr const char* kWhiteSpace = " \t\n\r\v\f";
    const auto first = text.find_first_not_of(kWhiteSpace);
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

std::string stringIn(const std::optional<PlistValue>& plist, const char* key) {
    const PlistValue::Dictionary* dictionary = plist ? plist->asDictionary() : nullptr;
    if (dictionary == nullptr) return {};
    const auto entry = dictionary->find(key);
    const std::string* text = entry == dictionary->end() ? nullptr : entry->second.asString();
    return text ? *text : std::string();
}

std::string hostMachineId() { return trimmed(FileManager::contentsOfFile("/etc/machine-id").value_or("")); }

std::string hostName() {
    char name[256] = {};
    return gethostname(name, sizeof name - 1) == 0 ? name : "";
}

std::string hostMachine() {
    utsname system{};
    return uname(&system) == 0 ? system.machine : "";
}

std::string orElse(std::string fact, std::string (*hostFact)()) { return fact.empty() ? hostFact() : fact; }

}  // namespace

DeviceFacts DeviceFactsReader::read() {
    {
        std::lock_guard lock(gPinMutex);
        if (gPinned) return *gPinned;
    }
    const auto systemVersion = PlistCodec::readFile(DeviceRoot::path("/System/Library/CoreServices/SystemVersion.plist"));
    const auto lockdown = PlistCodec::readFile(DeviceRoot::var() + "/root/Library/Lockdown/data_ark.plist");
    DeviceFacts facts{orElse(stringIn(lockdown, "-UniqueDeviceID"), hostMachineId),
                      trimmed(orElse(stringIn(lockdown, "-DeviceName"), hostName)),
                      orElse(stringIn(lockdown, "-ProductType"), hostMachine),
                      stringIn(systemVersion, "ProductVersion")};
    if (facts.systemVersion.empty()) SH_LOG("No system version on the device");
    return facts;
}

void DeviceFactsReader::pin(std::optional<DeviceFacts> facts) {
    std::lock_guard lock(gPinMutex);
    gPinned = std::move(facts);
}

}  // namespace stowhaven

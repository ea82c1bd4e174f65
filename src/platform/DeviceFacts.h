#pragma once

#include <optional>
#include <string>

namespace stowhaven {

struct DeviceFacts {
    std::string uniqueIdentifier;  // "UniqueDeviceID"
    std::string name;              // trimmed of white space and newlines at both ends
    std::string platform;          // "hw.machine", such as "iPhone7,2"
    std::string systemVersion;     // such as "8.1.2"

    bool operator==(const DeviceFacts&) const = default;
};

// The facts of the device under the current root. A device image keeps them where the
// device does: the system version in /System/Library/CoreServices/SystemVersion.plist,
// the others in the lockdown record <var>/root/Library/Lockdown/data_ark.plist
// ("-UniqueDeviceID", "-DeviceName", "-ProductType"). What an image lacks comes from the
// host: its machine id, host name and machine type. Tests may pin the facts.
class DeviceFactsReader {
public:
    static DeviceFacts read();
    // Pinned facts are answered whatever the root holds, until unpinned with nothing.
    static void pin(std::optional<DeviceFacts> facts);
};

}  // namespace stowhaven

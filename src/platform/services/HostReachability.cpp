#include "platform/services/HostReachability.h"

#include <ifaddrs.h>
#include <net/if.h>
#include <sys/stat.h>

#include <string>

namespace stowhaven {

namespace {

bool isWireless(const std::string& interface) {
    struct stat info {};
    return stat(("/sys/class/net/" + interface + "/wireless").c_str(), &info) == 0;
}

// Calls `accept` for each interface that is up, not a loopback and has an address; answers
// whether any was accepted.
template <typename Accept>
bool anyActiveInterface(Accept accept) {
    ifaddrs* interfaces = nullptr;
    if (getifaddrs(&interfaces) != 0) return false;
    bool found = false;
    for (const ifaddrs* entry = interfaces; entry != nullptr && !found; entry = entry->ifa_next) {
        const bool active = entry->ifa_addr != nullptr && (entry->ifa_flags & IFF_UP) != 0 &&
                            (entry->ifa_flags & IFF_LOOPBACK) == 0;
        found = active && accept(std::string(entry->ifa_name));
    }
    freeifaddrs(interfaces);
    return found;
}

}  // namespace

bool HostReachability::isConnectedToNetwork() const {
    return anyActiveInterface([](const std::string&) { return true; });
}

bool HostReachability::usingWiFi() const { return anyActiveInterface(isWireless); }

}  // namespace stowhaven

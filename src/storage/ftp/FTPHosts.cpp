#include "storage/ftp/FTPHosts.h"

#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/AsciiCase.h"

#include <algorithm>

namespace stowhaven {

namespace {

constexpr const char* kHostsKey = "FTPHosts";

bool sameHost(const std::string& a, const std::string& b) { return equalsIgnoringAsciiCase(a, b); }

void store(std::vector<FTPCredentials> hosts) {
    std::stable_sort(hosts.begin(), hosts.end(), [](const FTPCredentials& a, const FTPCredentials& b) {
        return textutil::caseInsensitiveOrder(a.host, b.host) < 0;
    });
    PlistValue::Array entries;
    for (const FTPCredentials& host : hosts) entries.emplace_back(host.savedHostEntry());
    Supervisor::shared().lowLevelStorePreferencesData(std::move(entries), kHostsKey);
}

}  // namespace

std::vector<FTPCredentials> FTPHosts::load() {
    std::vector<FTPCredentials> hosts;
    const auto entries = Supervisor::shared().lowLevelGetArrayPreferencesDataForKey(kHostsKey);
    for (const PlistValue& entry : entries.value_or(PlistValue::Array{})) {
        if (auto host = FTPCredentials::fromSavedHostEntry(entry)) hosts.push_back(std::move(*host));
    }
    return hosts;
}

void FTPHosts::save(const FTPCredentials& host) {
    std::vector<FTPCredentials> hosts = load();
    std::erase_if(hosts, [&host](const FTPCredentials& saved) { return sameHost(saved.host, host.host); });
    hosts.push_back(host);
    store(std::move(hosts));
}

bool FTPHosts::forget(const std::string& host) {
    std::vector<FTPCredentials> hosts = load();
    const auto found = std::find_if(hosts.begin(), hosts.end(),
                                    [&host](const FTPCredentials& saved) { return sameHost(saved.host, host); });
    if (found == hosts.end()) return false;
    hosts.erase(found);
    store(std::move(hosts));
    return true;
}

}  // namespace stowhaven

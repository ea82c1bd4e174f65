#include "storage/ServerHosts.h"

#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/AsciiCase.h"

#include <algorithm>

namespace stowhaven {

namespace {

bool sameHost(const std::string& a, const std::string& b) { return equalsIgnoringAsciiCase(a, b); }

void store(const ServerSettings& settings, std::vector<ServerCredentials> hosts) {
    std::stable_sort(hosts.begin(), hosts.end(), [](const ServerCredentials& a, const ServerCredentials& b) {
        return textutil::caseInsensitiveOrder(a.host, b.host) < 0;
    });
    PlistValue::Array entries;
    for (const ServerCredentials& host : hosts) entries.emplace_back(host.savedHostEntry(settings));
    Supervisor::shared().lowLevelStorePreferencesData(std::move(entries), settings.savedHostsKey);
}

}  // namespace

std::vector<ServerCredentials> ServerHosts::load(const ServerSettings& settings) {
    std::vector<ServerCredentials> hosts;
    const auto entries = Supervisor::shared().lowLevelGetArrayPreferencesDataForKey(settings.savedHostsKey);
    for (const PlistValue& entry : entries.value_or(PlistValue::Array{})) {
        if (auto host = ServerCredentials::fromSavedHostEntry(entry)) hosts.push_back(std::move(*host));
    }
    return hosts;
}

void ServerHosts::save(const ServerSettings& settings, const ServerCredentials& host) {
    std::vector<ServerCredentials> hosts = load(settings);
    std::erase_if(hosts, [&host](const ServerCredentials& saved) { return sameHost(saved.host, host.host); });
    hosts.push_back(host);
    store(settings, std::move(hosts));
}

bool ServerHosts::forget(const ServerSettings& settings, const std::string& host) {
    std::vector<ServerCredentials> hosts = load(settings);
    const auto found = std::find_if(hosts.begin(), hosts.end(),
                                    [&host](const ServerCredentials& saved) { return sameHost(saved.host, host); });
    if (found == hosts.end()) return false;
    hosts.erase(found);
    store(settings, std::move(hosts));
    return true;
}

}  // namespace stowhaven

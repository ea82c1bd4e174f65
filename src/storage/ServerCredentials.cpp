#include "storage/ServerCredentials.h"

#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/Strings.h"
#include "storage/StorageLayout.h"

#include <filesystem>

namespace stowhaven {

namespace {

std::string stringSetting(const char* key) {
    return key ? Supervisor::shared().lowLevelGetStringPreferencesDataForKey(key).value_or("") : "";
}

}  // namespace

ServerCredentials ServerCredentials::current(const ServerSettings& settings) {
    const Supervisor& supervisor = Supervisor::shared();
    ServerCredentials credentials;
    credentials.host = stringSetting(settings.hostKey);
    credentials.port = stringSetting(settings.portKey);
    credentials.login = stringSetting(settings.loginKey);
    credentials.password = stringSetting(settings.passwordKey);
    credentials.rootDirectory = stringSetting(settings.rootDirectoryKey);
    credentials.passive = settings.passiveKey == nullptr || !supervisor.lowLevelKeyExists(settings.passiveKey) ||
                          supervisor.lowLevelGetBooleanPreferencesDataForKey(settings.passiveKey);
    return credentials;
}

void ServerCredentials::storeAsCurrent(const ServerSettings& settings) const {
    Supervisor& supervisor = Supervisor::shared();
    supervisor.lowLevelStorePreferencesData(host, settings.hostKey);
    if (settings.portKey) supervisor.lowLevelStorePreferencesData(port, settings.portKey);
    if (settings.passiveKey) supervisor.lowLevelStorePreferencesData(passive, settings.passiveKey);
    supervisor.lowLevelStorePreferencesData(login, settings.loginKey);
    supervisor.lowLevelStorePreferencesData(password, settings.passwordKey);
    supervisor.lowLevelStorePreferencesData(rootDirectory, settings.rootDirectoryKey);
}

std::string ServerCredentials::normalizedRootDirectory(const std::string& typed, const std::string& defaultRoot) {
    std::string root = textutil::trimmed(typed);
    const std::string base(StorageLayout::kBaseDirectoryName);
    if (root.empty()) return defaultRoot;
    while (root.size() > 1 && root.ends_with('/')) root.pop_back();
    if (std::filesystem::path(root).filename() != base) root += (root.ends_with('/') ? "" : "/") + base;
    return root.starts_with('/') ? root : "/" + root;
}

ServerCredentials ServerCredentials::normalized(const ServerSettings& settings) const {
    ServerCredentials credentials = *this;
    credentials.host = textutil::trimmed(host);
    credentials.port = textutil::trimmed(port);
    credentials.rootDirectory = normalizedRootDirectory(rootDirectory, settings.defaultRootDirectory);
    return credentials;
}

std::optional<std::string> ServerCredentials::missingPart(const ServerSettings& settings) const {
    if (host.empty()) return Strings::localized(settings.missingHostText);
    if (login.empty()) return Strings::localized(settings.missingLoginText);
    if (password.empty()) return Strings::localized(settings.missingPasswordText);
    return std::nullopt;
}

PlistValue::Dictionary ServerCredentials::savedHostEntry(const ServerSettings& settings) const {
    PlistValue::Dictionary entry{{"host", host}, {"login", login}, {"password", password}, {"rootDir", rootDirectory}};
    if (settings.portKey) entry.emplace("port", port);
    if (settings.passiveKey) entry.emplace("passive", passive);
    return entry;
}

std::optional<ServerCredentials> ServerCredentials::fromSavedHostEntry(const PlistValue& entry) {
    const PlistValue::Dictionary* dictionary = entry.asDictionary();
    if (dictionary == nullptr) return std::nullopt;
    const auto text = [dictionary](std::string_view key) {
        const std::string* value = stringForKey(*dictionary, key);
        return value ? *value : std::string();
    };
    ServerCredentials credentials{text("host"), text("port"), text("login"), text("password"), text("rootDir")};
    if (credentials.host.empty()) return std::nullopt;
    const PlistValue* passive = valueForKey(*dictionary, "passive");
    credentials.passive = passive == nullptr || passive->asBoolean().value_or(true);
    return credentials;
}

}  // namespace stowhaven

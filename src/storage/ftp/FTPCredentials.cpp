#include "storage/ftp/FTPCredentials.h"

#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/Strings.h"
#include "storage/StorageLayout.h"

#include <fmt/format.h>

#include <charconv>
#include <filesystem>

namespace stowhaven {

namespace {

constexpr const char* kHostKey = "FTPHost";
constexpr const char* kPortKey = "FTPPort";
constexpr const char* kPassiveKey = "FTPPassive";
constexpr const char* kLoginKey = "FTPLogin";
constexpr const char* kPasswordKey = "FTPPassword";
constexpr const char* kRootDirectoryKey = "FTPRootDirectory";

std::string stringSetting(const Supervisor& supervisor, const char* key) {
    return supervisor.lowLevelGetStringPreferencesDataForKey(key).value_or("");
}

}  // namespace

FTPCredentials FTPCredentials::current() {
    const Supervisor& supervisor = Supervisor::shared();
    FTPCredentials credentials;
    credentials.host = stringSetting(supervisor, kHostKey);
    credentials.port = stringSetting(supervisor, kPortKey);
    credentials.login = stringSetting(supervisor, kLoginKey);
    credentials.password = stringSetting(supervisor, kPasswordKey);
    credentials.rootDirectory = stringSetting(supervisor, kRootDirectoryKey);
    credentials.passive =
        !supervisor.lowLevelKeyExists(kPassiveKey) || supervisor.lowLevelGetBooleanPreferencesDataForKey(kPassiveKey);
    return credentials;
}

void FTPCredentials::storeAsCurrent() const {
    Supervisor& supervisor = Supervisor::shared();
    supervisor.lowLevelStorePreferencesData(host, kHostKey);
    supervisor.lowLevelStorePreferencesData(port, kPortKey);
    supervisor.lowLevelStorePreferencesData(passive, kPassiveKey);
    supervisor.lowLevelStorePreferencesData(login, kLoginKey);
    supervisor.lowLevelStorePreferencesData(password, kPasswordKey);
    supervisor.lowLevelStorePreferencesData(rootDirectory, kRootDirectoryKey);
}

void FTPCredentials::clearCurrent() { FTPCredentials{}.storeAsCurrent(); }

std::string FTPCredentials::normalizedRootDirectory(const std::string& typed) {
    std::string root = textutil::trimmed(typed);
    const std::string base(StorageLayout::kBaseDirectoryName);
    if (root.empty()) return "/" + base;
    while (root.size() > 1 && root.ends_with('/')) root.pop_back();
    if (std::filesystem::path(root).filename() != base) root += (root.ends_with('/') ? "" : "/") + base;
    return root.starts_with('/') ? root : "/" + root;
}

FTPCredentials FTPCredentials::normalized() const {
    FTPCredentials credentials = *this;
    credentials.host = textutil::trimmed(host);
    credentials.port = textutil::trimmed(port);
    if (credentials.port.empty()) credentials.port = kDefaultPort;
    credentials.rootDirectory = normalizedRootDirectory(rootDirectory);
    return credentials;
}

std::optional<std::string> FTPCredentials::missingPart() const {
    if (host.empty()) return Strings::localized("FTP_INVALID_HOST");
    if (login.empty()) return Strings::localized("FTP_INVALID_LOGIN");
    if (password.empty()) return Strings::localized("FTP_INVALID_PASSWORD");
    return std::nullopt;
}

std::string FTPCredentials::homeDirectory(const std::string& deviceName) const {
    return StorageLayout::deviceDirectory(rootDirectory, deviceName);
}

std::optional<FtpAccount> FTPCredentials::account() const {
    const std::string portText = port.empty() ? kDefaultPort : port;
    int number = 0;
    const auto [end, error] = std::from_chars(portText.data(), portText.data() + portText.size(), number);
    if (error != std::errc() || end != portText.data() + portText.size() || number < 1 || number > 65535) {
        return std::nullopt;
    }
    return FtpAccount{host, number, login, password, passive};
}

std::string FTPCredentials::description() const {
    return fmt::format("ftp://{}@{}:{}{} {{{}}}", login, host, port, rootDirectory, passive ? "passive" : "active");
}

PlistValue::Dictionary FTPCredentials::savedHostEntry() const {
    return {{"host", host},      {"port", port}, {"login", login}, {"password", password}, {"rootDir", rootDirectory},
            {"passive", passive}};
}

std::optional<FTPCredentials> FTPCredentials::fromSavedHostEntry(const PlistValue& entry) {
    const PlistValue::Dictionary* dictionary = entry.asDictionary();
    if (dictionary == nullptr) return std::nullopt;
    const auto text = [dictionary](std::string_view key) {
        const std::string* value = stringForKey(*dictionary, key);
        return value ? *value : std::string();
    };
    FTPCredentials credentials{text("host"), text("port"), text("login"), text("password"), text("rootDir")};
    if (credentials.host.empty()) return std::nullopt;
    const PlistValue* passive = valueForKey(*dictionary, "passive");
    credentials.passive = passive == nullptr || passive->asBoolean().value_or(true);
    return credentials;
}

}  // namespace stowhaven

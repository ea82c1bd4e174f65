#include "support/ServiceEmulator.h"

#include "core/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <stdexcept>

namespace stowhaven::test {

namespace {

std::vector<std::string> argumentsOf(const std::vector<AppCredential>& credentials) {
    std::vector<std::string> arguments;
    for (const auto& credential : credentials) {
        arguments.push_back(credential.option);
        arguments.push_back(credential.value);
    }
    return arguments;
}

ServiceVariables variablesOf(const std::vector<std::string>& hostVariables, const std::string& address,
                             const std::vector<AppCredential>& credentials) {
    std::vector<std::pair<std::string, std::string>> variables;
    for (const auto& host : hostVariables) variables.emplace_back(host, address);
    for (const auto& credential : credentials) variables.emplace_back(credential.variable, credential.value);
    return ServiceVariables(std::move(variables));
}

}  // namespace

ServiceEmulator::ServiceEmulator(const std::string& script, const std::vector<std::string>& hostVariables,
                                 std::vector<AppCredential> credentials, FolderMark folderMark)
    : credentials_(std::move(credentials)),
      folderMark_(std::move(folderMark)),
      process_(script, folder_.path(), argumentsOf(credentials_)),
      variables_(variablesOf(hostVariables, process_.address(), credentials_)) {}

std::vector<std::string> ServiceEmulator::paths() const {
    const auto tree = nlohmann::json::parse(control("GET", "tree"));
    std::vector<std::string> paths;
    for (const auto& entry : tree["entries"]) {
        const bool isFolder = entry.value(folderMark_.field, "") == folderMark_.value;
        paths.push_back(entry["path"].get<std::string>() + (isFolder ? "/" : ""));
    }
    return paths;
}

void ServiceEmulator::addFolder(const std::string& path) const {
    control("POST", "folder?path=" + textutil::percentEncoded(path));
}

void ServiceEmulator::addFile(const std::string& path, const std::string& bytes) const {
    control("POST", "file?path=" + textutil::percentEncoded(path), bytes);
}

OAuthTokens ServiceEmulator::issueTokens() const {
    const auto pair = nlohmann::json::parse(control("POST", "token"));
    return {pair["access_token"].get<std::string>(), pair["refresh_token"].get<std::string>(),
            pair.value("expires_in", std::int64_t{0})};
}

const std::string& ServiceEmulator::credential(const std::string& option) const {
    const auto found = std::find_if(credentials_.begin(), credentials_.end(),
                                    [&](const AppCredential& credential) { return credential.option == option; });
    if (found == credentials_.end()) throw std::logic_error("the emulator takes no " + option);
    return found->value;
}

}  // namespace stowhaven::test

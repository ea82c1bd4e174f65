#include "support/BoxEmulator.h"

#include "core/Text.h"
#include "net/CurlHandle.h"
#include "net/HttpRequest.h"

#include <nlohmann/json.hpp>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <random>
#include <stdexcept>

namespace stowhaven::test {

namespace {

constexpr const char* kPython = "/usr/bin/python3";
constexpr std::size_t kCredentialLength = 32;
// Control replies are small; a whole tree's listing stays well under this.
constexpr std::size_t kLongestReply = 16 * 1024 * 1024;

std::string randomText(const std::string& alphabet, std::size_t length) {
    std::random_device source;
    std::uniform_int_distribution<std::size_t> pick(0, alphabet.size() - 1);
    std::string text;
    for (std::size_t i = 0; i < length; ++i) text += alphabet[pick(source)];
    return text;
}

HttpReply request(const std::string& method, const std::string& url, const std::string& body) {
    CurlHandle handle;
    HttpRequest request(handle, method, url);
    if (method == "POST") request.sendText(body);
    request.keepBody(kLongestReply);
    return request.perform();
}

std::optional<std::string> headerOf(const HttpReply& reply, const std::string& name) {
    for (const auto& [field, value] : reply.headers) {
        if (std::equal(field.begin(), field.end(), name.begin(), name.end(),
                       [](char a, char b) { return std::tolower(a) == std::tolower(b); }))
            return value;
    }
    return std::nullopt;
}

}  // namespace

bool BoxEmulator::isAvailable() { return access(kPython, X_OK) == 0; }

BoxEmulator::BoxEmulator()
    : clientId_(randomText("abcdefghijklmnopqrstuvwxyz0123456789", kCredentialLength)),
      clientSecret_(randomText("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789", kCredentialLength)) {
    process_ = std::make_unique<ServerProcess>(std::vector<std::string>{
        kPython, "-B", STOWHAVEN_SOURCE_DIR "/tests/emulators/box_emulator.py", "--folder", folder_.path().string(),
        "--port", "0", "--client-id", clientId_, "--client-secret", clientSecret_});
    const auto listening = process_->waitForLine("LISTENING ");
    if (!process_->started() || !listening) throw std::runtime_error("the Box emulator of the tests didn't start");
    port_ = std::atoi(listening->c_str() + std::string("LISTENING ").size());
}

BoxEmulator::~BoxEmulator() {
    for (const auto& [name, value] : exported_) {
        if (value) {
            setenv(name.c_str(), value->c_str(), 1);
        } else {
            unsetenv(name.c_str());
        }
    }
}

std::string BoxEmulator::address() const { return "http://127.0.0.1:" + std::to_string(port_); }

std::string BoxEmulator::environment() const {
    return "STOWHAVEN_BOX_API_URL=" + address() + " STOWHAVEN_BOX_UPLOAD_URL=" + address() +
           " STOWHAVEN_BOX_AUTH_URL=" + address() + " STOWHAVEN_BOX_CLIENT_ID=" + clientId_ +
           " STOWHAVEN_BOX_CLIENT_SECRET=" + clientSecret_ + " ";
}

void BoxEmulator::exportEnvironment() {
    for (const auto& [name, value] : std::vector<std::pair<std::string, std::string>>{
             {"STOWHAVEN_BOX_API_URL", address()},
             {"STOWHAVEN_BOX_UPLOAD_URL", address()},
             {"STOWHAVEN_BOX_AUTH_URL", address()},
             {"STOWHAVEN_BOX_CLIENT_ID", clientId_},
             {"STOWHAVEN_BOX_CLIENT_SECRET", clientSecret_}}) {
        const char* before = std::getenv(name.c_str());
        exported_.emplace_back(name, before ? std::optional<std::string>(before) : std::nullopt);
        setenv(name.c_str(), value.c_str(), 1);
    }
}

std::string BoxEmulator::control(const std::string& method, const std::string& pathAndQuery,
                                 const std::string& body) const {
    const HttpReply reply = request(method, address() + "/_emulator/" + pathAndQuery, body);
    if (!reply.isSuccess())
        throw std::runtime_error("the Box emulator refused " + pathAndQuery + ": " + std::to_string(reply.status) +
                                 " " + reply.body);
    return reply.body;
}

std::vector<std::string> BoxEmulator::paths() const {
    const auto tree = nlohmann::json::parse(control("GET", "tree"));
    std::vector<std::string> paths;
    for (const auto& entry : tree["entries"]) {
        paths.push_back(entry["path"].get<std::string>() + (entry["type"] == "folder" ? "/" : ""));
    }
    return paths;
}

void BoxEmulator::addFolder(const std::string& path) const { control("POST", "folder?path=" + textutil::percentEncoded(path)); }

void BoxEmulator::addFile(const std::string& path, const std::string& bytes) const {
    control("POST", "file?path=" + textutil::percentEncoded(path), bytes);
}

void BoxEmulator::injectFault(const std::string& name, int count, const std::string& pathPrefix) const {
    control("POST", "fault?name=" + textutil::percentEncoded(name) + "&count=" + std::to_string(count) +
                        "&path=" + textutil::percentEncoded(pathPrefix));
}

std::string BoxEmulator::grant(const std::string& authorizationAddress) const {
    const HttpReply reply = request("GET", authorizationAddress, "");
    const auto location = headerOf(reply, "Location");
    if (reply.status != 302 || !location)
        throw std::runtime_error("the Box emulator didn't redirect the authorisation: " +
                                 std::to_string(reply.status) + " " + reply.body);
    return *location;
}

BoxTokens BoxEmulator::issueTokens() const {
    const auto pair = nlohmann::json::parse(control("POST", "token"));
    return {pair["access_token"].get<std::string>(), pair["refresh_token"].get<std::string>()};
}

void BoxEmulator::expireAccessToken() const { control("POST", "expire_access_token"); }

}  // namespace stowhaven::test

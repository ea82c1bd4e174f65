#include "support/EmulatorProcess.h"

#include "core/Text.h"
#include "net/CurlHandle.h"
#include "net/HttpRequest.h"
#include "platform/AsciiCase.h"

#include <unistd.h>

#include <cstdlib>
#include <random>
#include <stdexcept>

namespace stowhaven::test {

namespace {

constexpr const char* kPython = "/usr/bin/python3";
constexpr const char* kListening = "LISTENING ";
// Control replies are small; a whole tree's listing stays well under this.
constexpr std::size_t kLongestReply = 16 * 1024 * 1024;

HttpReply request(const std::string& method, const std::string& url, const std::string& body) {
    CurlHandle handle;
    HttpRequest request(handle, method, url);
    if (method == "POST") request.sendText(body);
    request.keepBody(kLongestReply);
    return request.perform();
}

}  // namespace

EmulatorProcess::EmulatorProcess(const std::string& script, const std::filesystem::path& folder,
                                 const std::vector<std::string>& arguments) {
    std::vector<std::string> command{
        kPython, "-B", STOWHAVEN_SOURCE_DIR "/tests/emulators/" + script, "--folder", folder.string(), "--port", "0"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    process_ = std::make_unique<ServerProcess>(command);
    const auto listening = process_->waitForLine(kListening);
    if (!process_->started() || !listening) throw std::runtime_error("the emulator " + script + " didn't start");
    port_ = std::atoi(listening->c_str() + std::string(kListening).size());
}

bool EmulatorProcess::isAvailable() { return access(kPython, X_OK) == 0; }

std::string EmulatorProcess::address() const { return "http://127.0.0.1:" + std::to_string(port_); }

std::string EmulatorProcess::control(const std::string& method, const std::string& pathAndQuery,
                                     const std::string& body) const {
    const HttpReply reply = request(method, address() + "/_emulator/" + pathAndQuery, body);
    if (!reply.isSuccess())
        throw std::runtime_error("the emulator refused " + pathAndQuery + ": " + std::to_string(reply.status) + " " +
                                 reply.body);
    return reply.body;
}

void EmulatorProcess::injectFault(const std::string& name, int count, const std::string& pathPrefix,
                                  int skip) const {
    control("POST", "fault?name=" + textutil::percentEncoded(name) + "&count=" + std::to_string(count) +
                        "&path=" + textutil::percentEncoded(pathPrefix) +
                        (skip > 0 ? "&skip=" + std::to_string(skip) : std::string()));
}

std::string EmulatorProcess::redirectOf(const std::string& address) const {
    const HttpReply reply = request("GET", address, "");
    for (const auto& [name, value] : reply.headers) {
        if (reply.status == 302 && equalsIgnoringAsciiCase(name, "Location")) return value;
    }
    throw std::runtime_error("the emulator didn't redirect " + address + ": " + std::to_string(reply.status) + " " +
                             reply.body);
}

std::string randomText(const std::string& alphabet, std::size_t length) {
    std::random_device source;
    std::uniform_int_distribution<std::size_t> pick(0, alphabet.size() - 1);
    std::string text;
    for (std::size_t i = 0; i < length; ++i) text += alphabet[pick(source)];
    return text;
}

}  // namespace stowhaven::test

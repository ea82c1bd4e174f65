#include "storage/box/BoxLogin.h"

#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/Log.h"
#include "storage/box/BoxHelper.h"
#include "storage/box/BoxService.h"

#include <fmt/ranges.h>
#include <openssl/rand.h>

#include <array>
#include <map>

namespace stowhaven {

namespace {

// Where the page sends the user once they have agreed; no server needs to answer there.
constexpr const char* kRedirectAddress = "http://localhost";

std::optional<std::string> newLoginState() {
    std::array<unsigned char, 16> bytes{};
    if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1) return std::nullopt;
    return fmt::format("{:02x}", fmt::join(bytes, ""));
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// A query's value: "%XX" as its byte, "+" as a space.
std::string percentDecoded(std::string_view text) {
    std::string decoded;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '%' && at + 2 < text.size() && hexValue(text[at + 1]) >= 0 && hexValue(text[at + 2]) >= 0) {
            decoded.push_back(static_cast<char>(hexValue(text[at + 1]) * 16 + hexValue(text[at + 2])));
            at += 2;
        } else {
            decoded.push_back(text[at] == '+' ? ' ' : text[at]);
        }
    }
    return decoded;
}

// The parameters of the redirect's query (everything after "?", or the whole answer when it
// is only a query).
std::map<std::string, std::string> queryOf(std::string_view answer) {
    if (const auto mark = answer.find('?'); mark != std::string_view::npos) answer.remove_prefix(mark + 1);
    answer = answer.substr(0, answer.find('#'));
    std::map<std::string, std::string> parameters;
    for (const std::string& pair : textutil::split(answer, '&')) {
        const auto equals = pair.find('=');
        if (equals == std::string::npos) continue;
        parameters.emplace(percentDecoded(pair.substr(0, equals)), percentDecoded(pair.substr(equals + 1)));
    }
    return parameters;
}

}  // namespace

std::optional<std::string> BoxLogin::authorizationAddress(std::string& error) {
    const BoxService service = BoxService::fromEnvironment();
    if (const auto problem = service.problem()) {
        error = *problem;
        return std::nullopt;
    }
    if (service.authorization.error) {
        error = *service.authorization.error;
        return std::nullopt;
    }
    const auto state = newLoginState();
    if (!state) {
        error = "No random state for the login";
        return std::nullopt;
    }
    Supervisor::shared().lowLevelStorePreferencesData(PlistValue(*state), kLoginStateKey);
    return service.authorizeUrl() + "?response_type=code&client_id=" + textutil::percentEncoded(*service.clientId) +
           "&redirect_uri=" + textutil::percentEncoded(kRedirectAddress) + "&state=" + *state;
}

std::optional<std::string> BoxLogin::finish(const std::string& answer) {
    const std::string text = textutil::trimmed(answer);
    std::string code = text;
    if (text.find('=') != std::string::npos) {
        const auto parameters = queryOf(text);
        const auto value = [&parameters](const char* name) -> std::optional<std::string> {
            const auto found = parameters.find(name);
            if (found == parameters.end()) return std::nullopt;
            return found->second;
        };
        if (const auto refused = value("error")) return value("error_description").value_or("Box refused: " + *refused);
        const auto state = value("state");
        if (state && state != Supervisor::shared().lowLevelGetStringPreferencesDataForKey(kLoginStateKey)) {
            return std::string("The answer belongs to another login: open the address again");
        }
        code = value("code").value_or("");
    }
    if (code.empty()) return std::string("The answer holds no code");
    helper_ = BoxHelper::createBoxHelper();
    if (const auto error = helper_->logInWithCode(code)) return error;
    Supervisor& supervisor = Supervisor::shared();
    supervisor.persistStorageType();
    supervisor.lowLevelStorePreferencesData(PlistValue(), kLoginStateKey);
    SH_LOG("Logged in to Box as <{}>", helper_->accountName());
    return std::nullopt;
}

std::string BoxLogin::accountName() { return helper_ ? helper_->accountName() : std::string(); }

}  // namespace stowhaven

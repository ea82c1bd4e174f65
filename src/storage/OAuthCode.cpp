#include "storage/OAuthCode.h"

#include "core/Supervisor.h"
#include "core/Text.h"
#include "storage/OAuthAnswer.h"
#include "storage/OAuthLogin.h"

#include <fmt/ranges.h>

namespace stowhaven {

OAuthCode OAuthCode::of(const std::string& answer, const char* stateKey, const std::string& serviceName) {
    const std::string text = textutil::trimmed(answer);
    if (text.find('=') == std::string::npos) {
        if (text.empty()) return {std::nullopt, "The answer holds no code"};
        return {text, ""};
    }
    const OAuthAnswer parsed = OAuthAnswer::parse(text);
    if (const auto refused = parsed.parameter("error")) {
        return {std::nullopt, parsed.parameter("error_description").value_or(serviceName + " refused: " + *refused)};
    }
    const auto state = parsed.parameter("state");
    if (state && state != Supervisor::shared().lowLevelGetStringPreferencesDataForKey(stateKey)) {
        return {std::nullopt, "The answer belongs to another login: open the address again"};
    }
    const auto code = parsed.parameter("code");
    if (!code || code->empty()) return {std::nullopt, "The answer holds no code"};
    return {code, ""};
}

std::optional<std::string> newLoginState(const char* stateKey) {
    const auto bytes = loginStateBytes();
    if (!bytes) return std::nullopt;
    std::string state = fmt::format("{:02x}", fmt::join(*bytes, ""));
    Supervisor::shared().lowLevelStorePreferencesData(PlistValue(state), stateKey);
    return state;
}

}  // namespace stowhaven

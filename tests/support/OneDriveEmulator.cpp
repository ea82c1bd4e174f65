#include "support/OneDriveEmulator.h"

#include "core/Text.h"

namespace stowhaven::test {

namespace {

// The service's registrations: a client id of 16 upper-case hexadecimal characters and a
// secret of 32 letters and digits.
constexpr std::size_t kClientIdLength = 16;
constexpr std::size_t kClientSecretLength = 32;

}  // namespace

OneDriveEmulator::OneDriveEmulator()
    : ServiceEmulator(
          "onedrive_emulator.py", {"STOWHAVEN_ONEDRIVE_API_URL", "STOWHAVEN_ONEDRIVE_LOGIN_URL"},
          {{"--client-id", "STOWHAVEN_ONEDRIVE_CLIENT_ID", randomText("0123456789ABCDEF", kClientIdLength)},
           {"--client-secret", "STOWHAVEN_ONEDRIVE_CLIENT_SECRET",
            randomText("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789", kClientSecretLength)}}) {}

void OneDriveEmulator::injectThrottling(int seconds, int count, const std::string& pathPrefix) const {
    control("POST", "fault?name=status_429&count=" + std::to_string(count) +
                        "&path=" + textutil::percentEncoded(pathPrefix) + "&seconds=" + std::to_string(seconds));
}

}  // namespace stowhaven::test

#include "support/BoxEmulator.h"

namespace stowhaven::test {

namespace {

constexpr std::size_t kCredentialLength = 32;

}  // namespace

BoxEmulator::BoxEmulator()
    : ServiceEmulator(
          "box_emulator.py", {"STOWHAVEN_BOX_API_URL", "STOWHAVEN_BOX_UPLOAD_URL", "STOWHAVEN_BOX_AUTH_URL"},
          {{"--client-id", "STOWHAVEN_BOX_CLIENT_ID",
            randomText("abcdefghijklmnopqrstuvwxyz0123456789", kCredentialLength)},
           {"--client-secret", "STOWHAVEN_BOX_CLIENT_SECRET",
            randomText("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789", kCredentialLength)}}) {}

}  // namespace stowhaven::test

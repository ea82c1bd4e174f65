#include "support/GDriveEmulator.h"

namespace stowhaven::test {

namespace {

constexpr const char* kDigits = "0123456789";
constexpr const char* kLowerAlphanumerics = "abcdefghijklmnopqrstuvwxyz0123456789";
constexpr const char* kAlphanumerics = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";

}  // namespace

// An app registration of the shape the service hands out: a project number, a dash, 32
// letters and digits and the fixed suffix; a secret of 24 letters and digits. Its tree marks
// folders by their MIME type.
GDriveEmulator::GDriveEmulator()
    : ServiceEmulator(
          "gdrive_emulator.py", {"STOWHAVEN_GDRIVE_API_URL", "STOWHAVEN_GDRIVE_UPLOAD_URL", "STOWHAVEN_GDRIVE_AUTH_URL"},
          {{"--client-id", "STOWHAVEN_GDRIVE_CLIENT_ID",
            randomText(kDigits, 13) + "-" + randomText(kLowerAlphanumerics, 32) + ".apps.googleusercontent.com"},
           {"--client-secret", "STOWHAVEN_GDRIVE_CLIENT_SECRET", randomText(kAlphanumerics, 24)}},
          {"mimeType", "application/vnd.google-apps.folder"}) {}

}  // namespace stowhaven::test

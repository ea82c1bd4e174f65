#pragma once

#include <string>

namespace stowhaven {

// Enciphers and deciphers files of backup data in place with the device's `openssl`, in
// its salted Base64 format, under the built-in pass phrase. The file is replaced only if
// `openssl` succeeds; the caller names the temporary file that stands between.
class FileCipher {
public:
    static std::string encryptCommand(const std::string& path, const std::string& temporaryPath);
    static std::string decryptCommand(const std::string& path, const std::string& temporaryPath);

    static void encryptFileAtPath(const std::string& path, const std::string& temporaryPath);
    static void decryptFileAtPath(const std::string& path, const std::string& temporaryPath);

    // The file still holds what the cipher writes: a decipherment that failed (another
    // pass phrase, a damaged file) leaves it so.
    static bool isEnciphered(const std::string& path);
};

}  // namespace stowhaven

#include "archive/FileCipher.h"

#include "archive/BuiltInCipherKey.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"
#include "platform/ShellQuote.h"

#include <fmt/format.h>

namespace stowhaven {

namespace {

// {0} the file, {1} the pass phrase, {2} the temporary file.
constexpr const char* kEncryptTemplate =
    R"((openssl enc -e -a -salt -aes-256-cbc -in "{0}" -k "{1}" -out "{2}") && (mv "{2}" "{0}"))";
constexpr const char* kDecryptTemplate =
    R"((openssl enc -d -a -salt -aes-256-cbc -in "{0}" -k "{1}" -out "{2}") && (mv "{2}" "{0}"))";

// "Salted__" in Base64, the start of every enciphered file.
constexpr std::string_view kEncipheredMark = "U2FsdGVkX1";

std::string commandFrom(const char* commandTemplate, const std::string& path, const std::string& temporaryPath) {
    return fmt::format(fmt::runtime(commandTemplate), ShellQuote::inDoubleQuotes(path),
                       ShellQuote::inDoubleQuotes(BuiltInCipherKey::kKeyHex),
                       ShellQuote::inDoubleQuotes(temporaryPath));
}

}  // namespace

std::string FileCipher::encryptCommand(const std::string& path, const std::string& temporaryPath) {
    return commandFrom(kEncryptTemplate, path, temporaryPath);
}

std::string FileCipher::decryptCommand(const std::string& path, const std::string& temporaryPath) {
    return commandFrom(kDecryptTemplate, path, temporaryPath);
}

void FileCipher::encryptFileAtPath(const std::string& path, const std::string& temporaryPath) {
    Platform::current().shell().systemExecute(encryptCommand(path, temporaryPath));
}

void FileCipher::decryptFileAtPath(const std::string& path, const std::string& temporaryPath) {
    Platform::current().shell().systemExecute(decryptCommand(path, temporaryPath));
}

bool FileCipher::isEnciphered(const std::string& path) {
    return FileManager::headOfFile(path, kEncipheredMark.size()) == kEncipheredMark;
}

}  // namespace stowhaven

// The ciphers against the real `openssl`: a file the pass phrase doesn't open stays as it
// was, and the string cipher agrees with `openssl enc` itself. (Files going both ways
// between the program and a plain `openssl enc` stand in the backup and history tests.)

#include "archive/BuiltInCipherKey.h"
#include "archive/FileCipher.h"
#include "archive/StringCipher.h"
#include "platform/FileManager.h"
#include "support/DeviceRootScope.h"
#include "support/TestFolder.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <random>

extern char** environ;

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

const std::string kPassPhrase(BuiltInCipherKey::kKeyHex);

std::string contentsOf(const std::string& path) { return FileManager::contentsOfFile(path).value_or(""); }

// Runs `openssl` with these arguments, no shell between, and answers whether it succeeded.
bool runOpenssl(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "openssl");
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int spawned = posix_spawnp(&child, "openssl", &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    return spawned == 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string randomBytes(std::size_t size) {
    std::mt19937 generator(20240611);
    std::string bytes(size, '\0');
    for (char& byte : bytes) byte = static_cast<char>(generator());
    return bytes;
}

std::string madeFolder(const std::string& path) {
    fs::create_directories(path);
    return path;
}

// Names as a hostile session or server could make them: what the shell would read between
// double quotes, in the folder and in the temporary name.
TEST(FileCipherTest, AFileThatWontDecipherStaysAsItWas) {
    const test::TestFolder folder;
    const test::DeviceRootScope root(madeFolder(folder / "device"));
    const std::string path =
        madeFolder(folder / R"(backup "data" $(touch pwned) `touch pwned` \x)") + "/CONTACTS 1.tar";
    const std::string original = randomBytes(100 * 1024);
    FileManager::writeFile(path, original);
    FileCipher::decryptFileAtPath(path, folder / "cipher $temporary");
    EXPECT_EQ(contentsOf(path), original);
}

TEST(StringCipherAgainstOpensslTest, EnciphersAsOpensslDoesWithTheBuiltInKey) {
    test::TestFolder folder;
    for (const std::string text : {"", "my secret key", "0123456789abcdef", "caf\xc3\xa9"}) {
        FileManager::writeFile(folder / "text", text);
        ASSERT_TRUE(runOpenssl({"enc", "-e", "-aes-256-cbc", "-K", kPassPhrase, "-iv",
                                std::string(BuiltInCipherKey::kInitialisationVectorHex), "-in", folder / "text", "-out",
                                folder / "enciphered"}));
        std::string hex;
        for (const char byte : contentsOf(folder / "enciphered")) {
            hex += fmt::format("{:02X}", static_cast<unsigned char>(byte));
        }
        EXPECT_EQ(StringCipher::encrypt(text), hex) << text;
    }
}

}  // namespace
}  // namespace stowhaven

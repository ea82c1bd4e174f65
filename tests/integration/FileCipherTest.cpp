// The ciphers against the real `openssl`: files go both ways between the system's commands
// and a plain `openssl enc` run, and the string cipher agrees with `openssl enc` itself.

#include "archive/BuiltInCipherKey.h"
#include "archive/FileCipher.h"
#include "archive/StringCipher.h"
#include "platform/FileManager.h"
#include "platform/TemporaryDirectory.h"
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

class FileCipherTest : public ::testing::Test {
protected:
    test::TestFolder folder_;
    test::DeviceRootScope root_{madeFolder(folder_ / "device")};
    // Names as a hostile session or server could make them: what the shell would read
    // between double quotes, in the folder and in the temporary name.
    const std::string path_ =
        madeFolder(folder_ / R"(backup "data" $(touch pwned) `touch pwned` \x)") + "/CONTACTS 1.tar";
    const std::string temporary_ = folder_ / "cipher $temporary";
    const std::string original_ = randomBytes(100 * 1024);
};

TEST_F(FileCipherTest, AFileItEnciphersDeciphersWithPlainOpenssl) {
    FileManager::writeFile(path_, original_);
    FileCipher::encryptFileAtPath(path_, temporary_);

    const std::string enciphered = contentsOf(path_);
    EXPECT_TRUE(enciphered.starts_with("U2FsdGVkX1")) << "Base64 of the salted format";
    EXPECT_FALSE(fs::exists(temporary_));
    const std::string plain = folder_ / "plain";
    ASSERT_TRUE(
        runOpenssl({"enc", "-d", "-a", "-salt", "-aes-256-cbc", "-in", path_, "-k", kPassPhrase, "-out", plain}));
    EXPECT_EQ(contentsOf(plain), original_);
    EXPECT_FALSE(fs::exists(TemporaryDirectory::path() + "/pwned"));
}

TEST_F(FileCipherTest, AFilePlainOpensslEnciphersItDeciphers) {
    const std::string plain = folder_ / "plain";
    FileManager::writeFile(plain, original_);
    ASSERT_TRUE(
        runOpenssl({"enc", "-e", "-a", "-salt", "-aes-256-cbc", "-in", plain, "-k", kPassPhrase, "-out", path_}));

    FileCipher::decryptFileAtPath(path_, temporary_);
    EXPECT_EQ(contentsOf(path_), original_);
    EXPECT_FALSE(fs::exists(temporary_));
}

TEST_F(FileCipherTest, AFileThatWontDecipherStaysAsItWas) {
    FileManager::writeFile(path_, original_);
    FileCipher::decryptFileAtPath(path_, temporary_);
    EXPECT_EQ(contentsOf(path_), original_);
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

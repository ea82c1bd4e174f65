// `stowhaven verify` on a network engine: the session a backup stored on a real FTP server
// is read back through the engine, found sound, and a part damaged on the server is named.

#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "support/FolderSnapshot.h"
#include "support/FtpServer.h"
#include "support/SandboxDevice.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

TEST(VerifyFtpStorageTest, ASessionOnTheServerIsSoundAndAPartCutShortThereIsNamed) {
    STOWHAVEN_SKIP_WITHOUT_FTP_SERVER();
    if (geteuid() != 0) GTEST_SKIP() << "backups read root's files: run as root";
    const test::FtpServer server;
    const test::SandboxDevice device("demo");
    ASSERT_TRUE(device.turnOnScans());
    const test::TestFolder folder;
    const std::string password = folder / "password";
    FileManager::writeFile(password, server.account().password + "\n");
    const auto login =
        device.run("storage login ftp " + server.account().host + " --port " + std::to_string(server.account().port) +
                   " --user " + server.account().login + " --password-file " + ShellQuote::path(password));
    ASSERT_EQ(login.status, 0) << login.output << login.errors;
    const auto backup = device.run("backup --yes");
    ASSERT_EQ(backup.status, 0) << backup.errors;

    const auto sound = device.run("verify");

    EXPECT_EQ(sound.status, 0) << sound.output << sound.errors;
    EXPECT_NE(sound.output.find("  Notes data  OK"), std::string::npos) << sound.output;
    EXPECT_NE(sound.output.find("all sound"), std::string::npos) << sound.output;

    fs::path notes;
    for (const auto& entry : fs::recursive_directory_iterator(server.folder())) {
        if (entry.path().filename() == "NOTES-000") notes = entry.path();
    }
    ASSERT_FALSE(notes.empty()) << "no notes stored on the server";
    fs::resize_file(notes, fs::file_size(notes) / 2);
    const auto stored = test::snapshot(server.folder().string());

    const auto damaged = device.run("verify");

    EXPECT_EQ(damaged.status, 1) << damaged.output << damaged.errors;
    EXPECT_NE(damaged.output.find("  Notes data  FAULT: its joined parts: doesn't list cleanly"), std::string::npos)
        << damaged.output;
    EXPECT_NE(damaged.output.find("  Safari data  OK"), std::string::npos) << damaged.output;
    EXPECT_EQ(test::snapshot(server.folder().string()), stored) << "verify writes nothing on the server";
}

}  // namespace
}  // namespace stowhaven

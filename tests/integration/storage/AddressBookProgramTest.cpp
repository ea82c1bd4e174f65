// The program on the address book, and a session carried to another device as a vCard.

#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "support/SandboxDevice.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

constexpr const char* kTweak = "net.tinkerlane.quietbadges";

bool has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

std::string tweakStatus(const test::SandboxDevice& device) {
    return test::runCommand("DPKG_ADMINDIR=" + ShellQuote::path(device.path("/var/lib/dpkg")) +
                            " dpkg-query -W -f '${db:Status-Status}' " + kTweak + " 2>/dev/null || true");
}

TEST(AddressBookProgramTest, BacksUpListsAndRestoresTheDevicesPackagesFromTheContacts) {
    const test::SandboxDevice device("minimal");
    ASSERT_TRUE(device.turnOn({"AutoScanPkgEnabled"}));
    ASSERT_EQ(device.run("storage use addressbook").output, "Storage is now Addressbook (type 0).\n");
    EXPECT_TRUE(has(device.run("storage").output, "Device records: none"));

    const auto backup = device.run("backup --yes --title 'In the contacts'");
    ASSERT_EQ(backup.status, 0) << backup.errors;
    EXPECT_TRUE(has(backup.output, "Backup done on Addressbook")) << backup.output;
    EXPECT_TRUE(has(device.run("storage").output, "Device records: Haven_0123456789abcdef"));
    const auto history = device.run("history");
    EXPECT_TRUE(has(history.output, "1 session(s) on Addressbook")) << history.output;
    EXPECT_TRUE(has(history.output, "In the contacts"));
    EXPECT_TRUE(has(device.run("status").output, "In the contacts"));

    test::runCommand("dpkg --root=" + ShellQuote::path(device.root()) +
                     " --admindir=" + ShellQuote::path(device.path("/var/lib/dpkg")) + " --force-depends --remove " +
                     kTweak + " > /dev/null 2>&1");
    ASSERT_NE(tweakStatus(device), "installed");
    const auto restore = device.run("restore --yes");
    ASSERT_EQ(restore.status, 0) << restore.errors;
    EXPECT_EQ(tweakStatus(device), "installed");
}

TEST(AddressBookProgramTest, AVCardSharedOnOneDeviceImportsOnAnotherAndReadsBack) {
    const test::SandboxDevice device("minimal");
    ASSERT_TRUE(device.turnOn({"AutoScanPkgEnabled"}));
    const test::SandboxDevice other(device, "other");
    ASSERT_EQ(device.run("backup --yes --title Shared").status, 0);
    const std::string vCard = device.root() + "/../Stow Haven.vcf";

    const auto share = device.run("share vcard " + ShellQuote::path(vCard));
    ASSERT_EQ(share.status, 0) << share.errors;
    const auto inspect = other.run("inspect " + ShellQuote::path(vCard));
    ASSERT_EQ(inspect.status, 0) << inspect.errors;
    EXPECT_TRUE(has(inspect.output, "Shared")) << inspect.output;

    const auto imported = other.run("open --yes " + ShellQuote::path(vCard));
    ASSERT_EQ(imported.status, 0) << imported.errors;
    EXPECT_TRUE(has(imported.output, "Imported: Shared [IMPORTED DATA]!")) << imported.output;
    EXPECT_TRUE(FileManager::isRegularFile(vCard)) << "the handed-in file stays";
}

}  // namespace
}  // namespace stowhaven

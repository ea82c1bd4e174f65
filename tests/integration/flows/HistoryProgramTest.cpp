// The history and devices commands of the program on sandbox devices: what they delete,
// copy and refuse on local storage and on the address book.

#include "support/SandboxDevice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

constexpr const char* kThisDevice = "Haven_0123456789abcdef0123456789abcdef01234567";

bool has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

// The history files anywhere on the device, by their stamps, oldest first.
std::vector<std::string> historyStamps(const test::SandboxDevice& device) {
    std::vector<std::string> stamps;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(device.root())) {
        if (entry.path().extension() == ".stowhvn") stamps.push_back(entry.path().stem().string());
    }
    std::sort(stamps.begin(), stamps.end());
    return stamps;
}

TEST(HistoryProgramTest, HistoryDeleteRemovesTheSessionFromStorageAndFromHistoryAndNothingElse) {
    const test::SandboxDevice device("minimal");
    ASSERT_TRUE(device.turnOn({"AutoScanPkgEnabled"}));
    ASSERT_EQ(device.run("backup --yes --title First").status, 0);
    ASSERT_EQ(device.run("backup --yes --title Second").status, 0);
    const auto stamps = historyStamps(device);
    ASSERT_EQ(stamps.size(), 2U);

    // Names that are no session of this device, and a delete that nobody confirmed.
    for (const std::string& arguments :
         std::vector<std::string>{"history delete --yes ../" + stamps[0], "history delete --yes '../*'",
                                  "history delete --yes 2001-01-01_00~00~00", "history delete " + stamps[0]}) {
        SCOPED_TRACE(arguments);
        const auto refused = device.run(arguments);
        EXPECT_EQ(refused.status, 2) << refused.errors;
        EXPECT_EQ(historyStamps(device), stamps);
    }

    const auto deleted = device.run("history delete --yes " + stamps[0]);
    ASSERT_EQ(deleted.status, 0) << deleted.errors;
    EXPECT_TRUE(has(deleted.output, "Deleted session " + stamps[0] + " \"First\"")) << deleted.output;
    EXPECT_EQ(historyStamps(device), std::vector<std::string>{stamps[1]});
    const auto history = device.run("history");
    EXPECT_TRUE(has(history.output, "1 session(s)")) << history.output;
    EXPECT_TRUE(has(history.output, "Second"));
    EXPECT_FALSE(has(history.output, "First"));
}

TEST(HistoryProgramTest, DevicesAdoptIsRefusedOnLocalStorageAndCopiesTheRecordOnTheAddressBook) {
    const test::SandboxDevice device("minimal");
    ASSERT_TRUE(device.turnOn({"AutoScanPkgEnabled"}));
    const auto refused = device.run("devices adopt Other --yes");
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(has(refused.errors, "only the backups of")) << refused.errors;

    ASSERT_EQ(device.run("storage use addressbook").status, 0);
    ASSERT_EQ(device.run("backup --yes --title 'In the contacts'").status, 0);
    const auto renamed = device.run(std::string("devices rename ") + kThisDevice + " Haven_other");
    ASSERT_EQ(renamed.status, 0) << renamed.errors;
    EXPECT_EQ(device.run("devices").output, "1 device backup(s) on Addressbook\n  Haven_other\n");
    EXPECT_EQ(device.run("devices delete --yes ../Haven_other").status, 2);

    const auto adopted = device.run("devices adopt --yes Haven_other");
    ASSERT_EQ(adopted.status, 0) << adopted.errors;
    EXPECT_EQ(device.run("devices --json").output,
              "[\n  {\n    \"name\": \"Haven_other\",\n    \"thisDevice\": false\n  },\n  {\n    \"name\": \"" +
                  std::string(kThisDevice) + "\",\n    \"thisDevice\": true\n  }\n]\n");
    const auto dates = device.run(std::string("devices dates ") + kThisDevice);
    EXPECT_TRUE(has(dates.output, "1 session(s) of " + std::string(kThisDevice))) << dates.output << dates.errors;
    EXPECT_TRUE(has(device.run("history").output, "In the contacts"));
}

}  // namespace
}  // namespace stowhaven

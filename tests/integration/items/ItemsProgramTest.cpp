#include "support/SandboxDevice.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace stowhaven {
namespace {

bool lists(const nlohmann::json& list, const std::string& key, const std::string& value) {
    return std::any_of(list.begin(), list.end(), [&](const nlohmann::json& item) { return item[key] == value; });
}

TEST(ItemsProgramTest, TheDemoDeviceHasAnItemOfEveryKindInJsonAndInText) {
    const test::SandboxDevice device("demo");
    const auto outcome = device.run("items --json");
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const nlohmann::json items = nlohmann::json::parse(outcome.output);

    EXPECT_TRUE(lists(items["applications"], "bundleIdentifier", "com.tinkerlane.tidewatch"));
    EXPECT_FALSE(lists(items["applications"], "bundleIdentifier", "com.apple.iBooks"));
    EXPECT_TRUE(lists(items["preferenceFiles"], "name", "/var/mobile/Library/Preferences/com.saurik.Cydia.plist"));
    EXPECT_TRUE(lists(items["springboardFiles"], "name", "/var/mobile/Library/SpringBoard/IconState.plist"));
    EXPECT_TRUE(lists(items["sources"], "link", "http://127.0.0.12/quillfeed/"));
    const nlohmann::json& folders = items["archivableFolders"];
    EXPECT_TRUE(lists(folders, "name", "Springtomize 3"));
    EXPECT_TRUE(lists(folders, "archiveName", "ishsh_blobs"));
    const auto clips =
        std::find_if(folders.begin(), folders.end(), [](const auto& folder) { return folder["folderType"] == 9; });
    ASSERT_NE(clips, folders.end());
    EXPECT_TRUE(lists((*clips)["contents"], "title", "Tides"));

    const auto text = device.run("items");
    ASSERT_EQ(text.status, 0) << text.errors;
    for (const char* line : {"Applications (3)", "[ ] Lighthouse (org.harbourgames.lighthouse)  0Mb",
                             "SpringBoard files (", "Sources (5)", "[ ] Ringtones (Cydia)  /Library/Ringtones/"}) {
        EXPECT_NE(text.output.find(line), std::string::npos) << line << "\n" << text.output;
    }
}

}  // namespace
}  // namespace stowhaven

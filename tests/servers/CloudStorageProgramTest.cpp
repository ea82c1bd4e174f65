// The program with a cloud service as its storage, each through its emulator: the login
// through the service's page, a backup of everything, the history, a restore onto a fresh
// device, a refused grant, and a connection that drops during an upload.

#include "core/Text.h"
#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "support/BoxEmulator.h"
#include "support/DemoRestore.h"
#include "support/DropboxEmulator.h"
#include "support/SandboxDevice.h"
#include "support/TextLines.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

// A service of the test's own, and what differs between them.
class CloudUnderTest {
public:
    virtual ~CloudUnderTest() = default;
    // "dropbox": the engine's name on the command line.
    virtual std::string name() const = 0;
    virtual std::string environment() const = 0;
    // Where the service sends a browser that agreed at ADDRESS.
    virtual std::string grant(const std::string& address) const = 0;
    // The next COUNT uploads of a file's bytes get the switch.
    virtual void faultUploads(const std::string& fault, int count) const = 0;
    virtual void refuseGrants() const = 0;
};

class DropboxUnderTest final : public CloudUnderTest {
public:
    std::string name() const override { return "dropbox"; }
    std::string environment() const override { return service_.environment(); }
    std::string grant(const std::string& address) const override { return service_.grant(address); }
    void faultUploads(const std::string& fault, int count) const override {
        service_.injectFault(fault, count, "/1/chunked_upload");
    }
    void refuseGrants() const override { service_.injectFault("refuse_grant", 1, "/1/connect_login"); }

private:
    test::DropboxEmulator service_;
};

class BoxUnderTest final : public CloudUnderTest {
public:
    std::string name() const override { return "box"; }
    std::string environment() const override { return service_.environment(); }
    std::string grant(const std::string& address) const override { return service_.grant(address); }
    void faultUploads(const std::string& fault, int count) const override {
        service_.injectFault(fault, count, "/api/2.0/files/content");
    }
    void refuseGrants() const override { service_.injectFault("refuse_grant", 1, "/api/oauth2/authorize"); }

private:
    test::BoxEmulator service_;
};

struct CloudKind {
    const char* name;
    std::function<std::unique_ptr<CloudUnderTest>()> make;
};

void PrintTo(const CloudKind& kind, std::ostream* out) { *out << kind.name; }

std::string cloudKindName(const ::testing::TestParamInfo<CloudKind>& kind) { return kind.param.name; }

// Every long text kept under the settings that hold the services' tokens.
std::vector<std::string> storedTokens(const test::SandboxDevice& device) {
    const auto settings = nlohmann::json::parse(device.run("settings --json --show-secrets").output);
    std::vector<std::string> tokens;
    const std::function<void(const nlohmann::json&)> collect = [&](const nlohmann::json& value) {
        if (value.is_string() && value.get<std::string>().size() >= 16) tokens.push_back(value.get<std::string>());
        if (value.is_structured()) {
            for (const auto& member : value) collect(member);
        }
    };
    for (const auto& entry : settings) {
        const std::string key = entry.value("key", "");
        if (key == "kDBDropboxSavedCredentials" || key == "box_api_refresh_token") collect(entry["value"]);
    }
    return tokens;
}

// The address the login printed to open in a browser.
std::string addressIn(const std::string& output) {
    for (const std::string& line : test::linesOf(output)) {
        if (line.starts_with("  http")) return textutil::trimmed(line);
    }
    return "";
}

test::ProgramOutcome run(const CloudUnderTest& cloud, const test::SandboxDevice& device, const std::string& arguments) {
    return device.run(arguments + " </dev/null", cloud.environment());
}

// The login as a script does it: the address printed, opened, and the answer handed back.
test::ProgramOutcome logIn(const CloudUnderTest& cloud, const test::SandboxDevice& device) {
    const auto asked = run(cloud, device, "storage login " + cloud.name());
    EXPECT_EQ(asked.status, 2) << asked.output << asked.errors;
    EXPECT_NE(asked.errors.find("--code"), std::string::npos) << asked.errors;
    const std::string address = addressIn(asked.output);
    EXPECT_FALSE(address.empty()) << asked.output;
    return run(cloud, device, "storage login " + cloud.name() + " --code '" + cloud.grant(address) + "'");
}

class CloudStorageProgramTest : public ::testing::TestWithParam<CloudKind> {
protected:
    void SetUp() override {
        if (!test::DropboxEmulator::isAvailable()) GTEST_SKIP() << "the emulators need /usr/bin/python3";
        cloud_ = GetParam().make();
    }

    test::ProgramOutcome run(const test::SandboxDevice& device, const std::string& arguments) const {
        return stowhaven::run(*cloud_, device, arguments);
    }
    test::ProgramOutcome logIn(const test::SandboxDevice& device) const { return stowhaven::logIn(*cloud_, device); }

    std::unique_ptr<CloudUnderTest> cloud_;
};

TEST_P(CloudStorageProgramTest, ABackupGoesToTheServiceAndComesBackOntoAFreshDevice) {
    const test::SandboxDevice original("demo");
    ASSERT_TRUE(original.turnOnScans() && original.turnOn({"AutoScanAppStoreAppsEnabled", "BackupDebsEnabled"}));
    const auto login = logIn(original);
    ASSERT_EQ(login.status, 0) << login.output << login.errors;
    EXPECT_NE(login.output.find("Logged in as "), std::string::npos) << login.output;
    const auto backup = run(original, "backup --yes --title 'To the cloud'");
    ASSERT_EQ(backup.status, 0) << backup.output << backup.errors;
    const auto history = run(original, "history");
    EXPECT_NE(history.output.find("To the cloud"), std::string::npos) << history.output << history.errors;
    const auto tokens = storedTokens(original);
    EXPECT_FALSE(tokens.empty()) << "the login kept its tokens";
    const std::string settings = run(original, "settings --json").output;
    for (const std::string& token : tokens) EXPECT_EQ(settings.find(token), std::string::npos) << "masked: " << token;

    const test::SandboxDevice fresh = test::SandboxDevice::fresh("demo");
    test::readyToRestoreEverything(fresh);
    ASSERT_EQ(logIn(fresh).status, 0);
    const auto restore = run(fresh, "restore --yes");
    EXPECT_EQ(restore.status, 0) << restore.output << restore.errors;
    test::expectDemoRestored(original, fresh);
}

TEST_P(CloudStorageProgramTest, ARefusedGrantEndsWithTheServicesWordsAndTheStorageStays) {
    const test::SandboxDevice device("minimal");
    cloud_->refuseGrants();
    const auto refused = logIn(device);
    EXPECT_EQ(refused.status, 1) << refused.output;
    EXPECT_NE(refused.errors.find("Storage stays local storage."), std::string::npos) << refused.errors;
    const auto storage = run(device, "storage");
    EXPECT_NE(storage.output.find("Storage: local storage"), std::string::npos) << storage.output;
}

TEST_P(CloudStorageProgramTest, AConnectionDroppedDuringAnUploadFailsTheJobAndKeepsTheSessionBefore) {
    const test::SandboxDevice device("demo");
    ASSERT_TRUE(device.turnOn({"AutoScanPkgEnabled"}));
    ASSERT_EQ(logIn(device).status, 0);
    ASSERT_EQ(run(device, "backup --yes --title First").status, 0);

    ASSERT_TRUE(device.turnOnScans());
    cloud_->faultUploads("drop_mid_body", 1000);
    const auto failed = run(device, "backup --yes --title Second");
    EXPECT_NE(failed.status, 0) << failed.output << failed.errors;
    cloud_->faultUploads("drop_mid_body", 0);

    const auto history = run(device, "history");
    EXPECT_NE(history.output.find("First"), std::string::npos) << history.output << history.errors;
    EXPECT_EQ(history.output.find("Second"), std::string::npos) << "no session of the failed job: " << history.output;
}

// Another device's backups on Dropbox become this device's by a copy on the service.
TEST(DropboxStorageProgramTest, AnotherDevicesBackupIsTakenOverByACopy) {
    if (!test::DropboxEmulator::isAvailable()) GTEST_SKIP() << "the emulators need /usr/bin/python3";
    const DropboxUnderTest dropbox;
    const test::SandboxDevice device("minimal");
    ASSERT_TRUE(device.turnOn({"AutoScanPkgEnabled"}));
    ASSERT_EQ(logIn(dropbox, device).status, 0);
    ASSERT_EQ(run(dropbox, device, "backup --yes --title 'Of the old phone'").status, 0);
    const auto listed = nlohmann::json::parse(run(dropbox, device, "devices --json").output);
    ASSERT_EQ(listed.size(), 1u);
    const std::string thisDevice = listed[0]["name"];
    ASSERT_EQ(run(dropbox, device, "devices rename '" + thisDevice + "' 'Old phone'").status, 0);
    EXPECT_EQ(run(dropbox, device, "history").output.find("Of the old phone"), std::string::npos)
        << "not this device's any more";

    const auto adopted = run(dropbox, device, "devices adopt --yes 'Old phone'");
    ASSERT_EQ(adopted.status, 0) << adopted.output << adopted.errors;
    EXPECT_NE(run(dropbox, device, "history").output.find("Of the old phone"), std::string::npos);
    const std::string devices = run(dropbox, device, "devices").output;
    EXPECT_NE(devices.find("Old phone"), std::string::npos) << "the copy leaves the other device's: " << devices;
}

INSTANTIATE_TEST_SUITE_P(Services, CloudStorageProgramTest,
                         ::testing::Values(CloudKind{"dropbox", [] { return std::make_unique<DropboxUnderTest>(); }},
                                           CloudKind{"box", [] { return std::make_unique<BoxUnderTest>(); }}),
                         cloudKindName);

}  // namespace
}  // namespace stowhaven

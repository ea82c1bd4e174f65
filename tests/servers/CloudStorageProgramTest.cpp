// The program with a cloud service as its storage, each through its emulator: the login
// (through the service's page, or with the account's own name and password), a backup of
// everything, the history, a restore onto a fresh device, a refused login, and a connection
// that drops during an upload.

#include "core/Text.h"
#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "support/BoxEmulator.h"
#include "support/DemoRestore.h"
#include "support/DropboxEmulator.h"
#include "support/GDriveEmulator.h"
#include "support/OneDriveEmulator.h"
#include "support/SandboxDevice.h"
#include "support/SugarSyncEmulator.h"
#include "support/TextLines.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

test::ProgramOutcome runWith(const std::string& environment, const test::SandboxDevice& device,
                             const std::string& arguments) {
    return device.run(arguments + " </dev/null", environment);
}

// The address the login printed to open in a browser.
std::string addressIn(const std::string& output) {
    for (const std::string& line : test::linesOf(output)) {
        if (line.starts_with("  http")) return textutil::trimmed(line);
    }
    return "";
}

// A service of the test's own, and what differs between them.
class CloudUnderTest {
public:
    virtual ~CloudUnderTest() = default;
    // "dropbox": the engine's name on the command line.
    virtual std::string name() const = 0;
    virtual std::string environment() const = 0;
    // The login as a script does it.
    virtual test::ProgramOutcome logIn(const test::SandboxDevice& device) const = 0;
    // The next COUNT uploads of a file's bytes get the switch.
    virtual void faultUploads(const std::string& fault, int count) const = 0;
    // The next login is refused.
    virtual void refuseGrants() const = 0;
    // The settings that hold the account's tokens or password.
    virtual std::vector<std::string> secretKeys() const = 0;
    // The variable that gives the service's API host.
    virtual std::string apiVariable() const = 0;
    // What a login needs on the command line to reach the service (a browser login first
    // makes the address to open, which needs nothing).
    virtual std::string loginArguments() const { return ""; }
};

// A service whose login goes through its page in a browser.
class BrowserCloudUnderTest : public CloudUnderTest {
public:
    // Where the service sends a browser that agreed at ADDRESS.
    virtual std::string grant(const std::string& address) const = 0;

    // The address printed, opened, and the answer handed back.
    test::ProgramOutcome logIn(const test::SandboxDevice& device) const override {
        const auto asked = runWith(environment(), device, "storage login " + name());
        EXPECT_EQ(asked.status, 2) << asked.output << asked.errors;
        EXPECT_NE(asked.errors.find("--code"), std::string::npos) << asked.errors;
        const std::string address = addressIn(asked.output);
        EXPECT_FALSE(address.empty()) << asked.output;
        return runWith(environment(), device, "storage login " + name() + " --code '" + grant(address) + "'");
    }
};

class DropboxUnderTest final : public BrowserCloudUnderTest {
public:
    std::string name() const override { return "dropbox"; }
    std::string apiVariable() const override { return "STOWHAVEN_DROPBOX_API_URL"; }
    std::string environment() const override { return service_.environment(); }
    std::string grant(const std::string& address) const override { return service_.grant(address); }
    void faultUploads(const std::string& fault, int count) const override {
        service_.injectFault(fault, count, "/1/chunked_upload");
    }
    void refuseGrants() const override { service_.injectFault("refuse_grant", 1, "/1/connect_login"); }
    std::vector<std::string> secretKeys() const override { return {"kDBDropboxSavedCredentials"}; }

private:
    test::DropboxEmulator service_;
};

class BoxUnderTest final : public BrowserCloudUnderTest {
public:
    std::string name() const override { return "box"; }
    std::string apiVariable() const override { return "STOWHAVEN_BOX_API_URL"; }
    std::string environment() const override { return service_.environment(); }
    std::string grant(const std::string& address) const override { return service_.grant(address); }
    void faultUploads(const std::string& fault, int count) const override {
        service_.injectFault(fault, count, "/api/2.0/files/content");
    }
    void refuseGrants() const override { service_.injectFault("refuse_grant", 1, "/api/oauth2/authorize"); }
    std::vector<std::string> secretKeys() const override { return {"box_api_refresh_token"}; }

private:
    test::BoxEmulator service_;
};

class GDriveUnderTest final : public BrowserCloudUnderTest {
public:
    std::string name() const override { return "gdrive"; }
    std::string apiVariable() const override { return "STOWHAVEN_GDRIVE_API_URL"; }
    std::string environment() const override { return service_.environment(); }
    std::string grant(const std::string& address) const override { return service_.grant(address); }
    void faultUploads(const std::string& fault, int count) const override {
        service_.injectFault(fault, count, "/upload/drive/v3/files");
    }
    void refuseGrants() const override { service_.injectFault("refuse_grant", 1, "/o/oauth2"); }
    std::vector<std::string> secretKeys() const override { return {"Stowhaven_v7_GDRIVE"}; }

private:
    test::GDriveEmulator service_;
};

class OneDriveUnderTest final : public BrowserCloudUnderTest {
public:
    std::string name() const override { return "onedrive"; }
    std::string apiVariable() const override { return "STOWHAVEN_ONEDRIVE_API_URL"; }
    std::string environment() const override { return service_.environment(); }
    std::string grant(const std::string& address) const override { return service_.grant(address); }
    // Uploads are PUTs of a folder's files/NAME: the only PUTs with "/files/" in them.
    void faultUploads(const std::string& fault, int count) const override {
        service_.injectFault(fault, count, "/v5.0/folder.");
    }
    void refuseGrants() const override { service_.injectFault("refuse_grant", 1, "/oauth20_authorize.srf"); }
    std::vector<std::string> secretKeys() const override { return {"SKYDRIVE_ACCESS_TOKEN", "SKYDRIVE_REFRESH_TOKEN"}; }

private:
    test::OneDriveEmulator service_;
};

// SugarSync logs in with the account's own name and password.
class SugarSyncUnderTest final : public CloudUnderTest {
public:
    std::string name() const override { return "sugarsync"; }
    std::string apiVariable() const override { return "STOWHAVEN_SUGARSYNC_API_URL"; }
    std::string loginArguments() const override { return "--user someone"; }
    std::string environment() const override { return service_.environment(); }
    test::ProgramOutcome logIn(const test::SandboxDevice& device) const override {
        const auto asked = runWith(environment(), device, "storage login sugarsync");
        EXPECT_EQ(asked.status, 2) << asked.output << asked.errors;
        EXPECT_NE(asked.errors.find("--user"), std::string::npos) << asked.errors;
        return runWith(environment() + "STOWHAVEN_PASSWORD=" + ShellQuote::quoted(service_.password()) + " ", device,
                       "storage login sugarsync --user " + ShellQuote::quoted(service_.user()));
    }
    void faultUploads(const std::string& fault, int count) const override {
        service_.injectFault(fault, count, "/file/");
    }
    // A login is tried eleven times before it fails.
    void refuseGrants() const override { service_.refuseLogins(11); }
    std::vector<std::string> secretKeys() const override { return {"SUGARSYNC_PASSWORD"}; }

private:
    test::SugarSyncEmulator service_;
};

struct CloudKind {
    const char* name;
    std::function<std::unique_ptr<CloudUnderTest>()> make;
};

void PrintTo(const CloudKind& kind, std::ostream* out) { *out << kind.name; }

std::string cloudKindName(const ::testing::TestParamInfo<CloudKind>& kind) { return kind.param.name; }

// Every text of 16 characters or more kept under the settings that hold the service's tokens
// or password.
std::vector<std::string> storedSecrets(const CloudUnderTest& cloud, const test::SandboxDevice& device) {
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
        const auto keys = cloud.secretKeys();
        if (std::find(keys.begin(), keys.end(), key) != keys.end()) collect(entry["value"]);
    }
    return tokens;
}

test::ProgramOutcome run(const CloudUnderTest& cloud, const test::SandboxDevice& device, const std::string& arguments) {
    return runWith(cloud.environment(), device, arguments);
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
    test::ProgramOutcome logIn(const test::SandboxDevice& device) const { return cloud_->logIn(device); }

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
    const auto tokens = storedSecrets(*cloud_, original);
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

// An API host given as plain http to another machine would carry the account's tokens or
// password in the clear: the login is refused before anything is sent.
TEST_P(CloudStorageProgramTest, APlainHttpHostElsewhereIsRefusedBeforeTheLogin) {
    const test::SandboxDevice device("minimal");
    const std::string elsewhere = cloud_->apiVariable() + "=http://192.0.2.1:9 ";
    const auto refused = runWith(cloud_->environment() + elsewhere + "STOWHAVEN_PASSWORD=secret ", device,
                                 "storage login " + cloud_->name() + " " + cloud_->loginArguments());
    EXPECT_EQ(refused.status, 1) << refused.output << refused.errors;
    EXPECT_NE(refused.errors.find(cloud_->apiVariable() + " may use plain http only for this machine"),
              std::string::npos)
        << refused.errors;
    EXPECT_NE(run(device, "storage").output.find("Storage: local storage"), std::string::npos);
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
    ASSERT_EQ(dropbox.logIn(device).status, 0);
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
                                           CloudKind{"box", [] { return std::make_unique<BoxUnderTest>(); }},
                                           CloudKind{"gdrive", [] { return std::make_unique<GDriveUnderTest>(); }},
                                           CloudKind{"onedrive", [] { return std::make_unique<OneDriveUnderTest>(); }},
                                           CloudKind{"sugarsync",
                                                     [] { return std::make_unique<SugarSyncUnderTest>(); }}),
                         cloudKindName);

}  // namespace
}  // namespace stowhaven

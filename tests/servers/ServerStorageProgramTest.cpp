// The program with a real server as its storage, FTP and WebDAV alike: the login, a backup
// of everything, the layout it leaves on the server, the history, a restore onto a fresh
// device, and what a wrong password and a server that dies during an upload do; then what
// differs by engine (a cancel during a transfer, a device folder of an older version, a
// hostile server).

#include "core/Text.h"
#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "platform/plist/PlistCodec.h"
#include "support/DemoRestore.h"
#include "support/Eventually.h"
#include "support/FtpServer.h"
#include "support/SandboxDevice.h"
#include "support/TerminalProgram.h"
#include "support/TestFolder.h"
#include "support/WebDavServer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <future>
#include <memory>
#include <optional>
#include <string>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

void turnOnEverything(const test::SandboxDevice& device) {
    ASSERT_TRUE(device.turnOnScans() && device.turnOn({"AutoScanAppStoreAppsEnabled", "BackupDebsEnabled"}));
}

std::string lockdownFact(const test::SandboxDevice& device, const char* key) {
    const auto lockdown = PlistCodec::readFile(device.path("/var/root/Library/Lockdown/data_ark.plist"));
    const std::string* value = stringForKey(*lockdown->asDictionary(), key);
    return value ? *value : "";
}

std::string deviceName(const test::SandboxDevice& device) {
    return textutil::trimmed(lockdownFact(device, "-DeviceName"));
}

// The files of a folder by name, folders marked with a "/".
std::vector<std::string> namesIn(const fs::path& folder) {
    std::vector<std::string> names;
    if (!fs::is_directory(folder)) return names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string() + (entry.is_directory() ? "/" : ""));
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> historyFilesIn(const fs::path& folder) {
    auto names = namesIn(folder);
    std::erase_if(names, [](const std::string& name) { return !name.ends_with(".stowhvn"); });
    return names;
}

// A server of the test's own, and how the program logs in to it.
class ServerUnderTest {
public:
    virtual ~ServerUnderTest() = default;
    // `storage login ENGINE` and what follows, but for the password and the options.
    virtual std::string loginArguments() const = 0;
    virtual std::string password() const = 0;
    // The server's path of the share, "" where the whole server is.
    virtual std::string sharePath() const = 0;
    // The local folder behind the share.
    virtual fs::path shareFolder() const = 0;
    // What the server says of a wrong password.
    virtual std::string refusal() const = 0;
    virtual void stop() = 0;
    // Waits until the job stores packages' files.
    virtual bool waitForPackagesUpload() = 0;
    // The program's folder on the server by default.
    fs::path rootFolder() const { return shareFolder() / "Stowhaven"; }
};

class FtpServerUnderTest final : public ServerUnderTest {
public:
    explicit FtpServerUnderTest(const test::FtpServerOptions& options = {}) : server_(options) {}
    std::string loginArguments() const override {
        const FtpAccount account = server_.account();
        return "ftp " + account.host + " --port " + std::to_string(account.port) + " --user " + account.login;
    }
    std::string password() const override { return server_.account().password; }
    std::string sharePath() const override { return ""; }
    fs::path shareFolder() const override { return server_.folder(); }
    std::string refusal() const override { return "530"; }
    void stop() override { server_.stop(); }
    bool waitForPackagesUpload() override {
        std::optional<std::string> upload;
        while ((upload = server_.waitForLine("STOR ")) && upload->find("/DEBS/") == std::string::npos) {
        }
        return upload.has_value();
    }
    const test::FtpServer& server() const { return server_; }

private:
    test::FtpServer server_;
};

class WebDavServerUnderTest final : public ServerUnderTest {
public:
    std::string loginArguments() const override {
        return "owncloud " + server_.account().baseUrl + " --user " + server_.account().login;
    }
    std::string password() const override { return server_.account().password; }
    std::string sharePath() const override { return test::WebDavServer::kSharePath; }
    fs::path shareFolder() const override { return server_.shareFolder(); }
    std::string refusal() const override { return "You have entered bad credentials."; }
    void stop() override { server_.stop(); }
    bool waitForPackagesUpload() override {
        return test::eventually([this] {
            const fs::path device = rootFolder();
            if (!fs::is_directory(device)) return false;
            for (const auto& entry : fs::recursive_directory_iterator(device)) {
                if (entry.path().filename() == "DEBS") return true;
            }
            return false;
        });
    }

private:
    test::WebDavServer server_;
};

struct ServerKind {
    const char* name;
    std::function<bool()> isAvailable;
    std::function<std::unique_ptr<ServerUnderTest>()> make;
};

void PrintTo(const ServerKind& kind, std::ostream* out) { *out << kind.name; }

// `storage login` to SERVER with OPTIONS, and its password or PASSWORD.
test::ProgramOutcome logIn(const test::SandboxDevice& device, const ServerUnderTest& server,
                           const std::string& options = "", const std::optional<std::string>& password = std::nullopt) {
    const test::TestFolder folder;
    const std::string file = folder / "password";
    FileManager::writeFile(file, password.value_or(server.password()) + "\n");
    return device.run("storage login " + server.loginArguments() + " --password-file " + ShellQuote::path(file) + " " +
                      options);
}

class ServerStorageProgramTest : public ::testing::TestWithParam<ServerKind> {
protected:
    void SetUp() override {
        if (!GetParam().isAvailable()) GTEST_SKIP() << GetParam().name << "'s test server isn't installed";
        server_ = GetParam().make();
    }

    std::unique_ptr<ServerUnderTest> server_;
};

TEST_P(ServerStorageProgramTest, ABackupGoesToTheServerAndComesBackOntoAFreshDevice) {
    const test::SandboxDevice original("demo");
    turnOnEverything(original);
    const auto login = logIn(original, *server_);
    ASSERT_EQ(login.status, 0) << login.output << login.errors;
    const auto backup = original.run("backup --yes --title 'To the server'");
    ASSERT_EQ(backup.status, 0) << backup.output << backup.errors;

    // root/device/stamp.stowhvn, and the session's folder with its kinds of data.
    const fs::path deviceFolder = server_->rootFolder() / deviceName(original);
    const auto sessions = historyFilesIn(deviceFolder);
    ASSERT_EQ(sessions.size(), 1u);
    const std::string stamp = sessions[0].substr(0, sessions[0].size() - std::string(".stowhvn").size());
    EXPECT_EQ(namesIn(deviceFolder), (std::vector<std::string>{sessions[0], stamp + "/"}));
    const auto data = namesIn(deviceFolder / stamp);
    for (const char* kind : {"DEBS/", "NOTES/", "NOTES.idx", "CHAT.idx", "APPLICATIONS_DATA/"}) {
        EXPECT_NE(std::find(data.begin(), data.end(), kind), data.end())
            << kind << " in " << ::testing::PrintToString(data);
    }
    EXPECT_EQ(namesIn(server_->rootFolder()).size(), 1u) << "nothing but the device's folder";
    EXPECT_TRUE(namesIn(original.path("/var/mobile/Library/Preferences/Stowhaven")).empty())
        << "nothing kept on the device";

    const auto history = original.run("history");
    EXPECT_EQ(history.status, 0) << history.errors;
    EXPECT_NE(history.output.find("To the server"), std::string::npos) << history.output;

    const test::SandboxDevice fresh = test::SandboxDevice::fresh("demo");
    test::readyToRestoreEverything(fresh);
    ASSERT_EQ(logIn(fresh, *server_).status, 0);
    const auto restore = fresh.run("restore --yes");
    EXPECT_EQ(restore.status, 0) << restore.output << restore.errors;
    test::expectDemoRestored(original, fresh);
}

TEST_P(ServerStorageProgramTest, TheLoginMakesAMissingRootAndARefusedOneLeavesTheStorageAsItWas) {
    const test::SandboxDevice device("minimal");
    const std::string root = server_->sharePath() + "/backups/of phones";
    const auto login = logIn(device, *server_, "--root " + ShellQuote::path(root));
    ASSERT_EQ(login.status, 0) << login.errors;
    EXPECT_TRUE(fs::is_directory(server_->shareFolder() / "backups" / "of phones" / "Stowhaven" / deviceName(device)));
    const auto hosts = device.run("storage hosts " + std::string(GetParam().name));
    EXPECT_NE(hosts.output.find(root + "/Stowhaven ("), std::string::npos) << hosts.output;
    EXPECT_TRUE(hosts.output.starts_with("* owner@")) << "the current one: " << hosts.output;
    EXPECT_NE(hosts.output.find("password ********)"), std::string::npos) << hosts.output;

    const auto refused = logIn(device, *server_, "", "not the password");
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.errors.find(server_->refusal()), std::string::npos) << "the server's words: " << refused.errors;
    EXPECT_EQ(refused.errors.find("not the password"), std::string::npos) << refused.errors;
    const std::string engineName = device.run("storage").output;
    EXPECT_EQ(engineName.find("Storage: local storage"), std::string::npos) << "still the server before";

    // A password changed on the server: the program says so, in the server's words, and works
    // on local storage for the run.
    const std::string passwordKey = GetParam().name == std::string("ftp") ? "FTPPassword" : "OwnCloudPassword";
    ASSERT_EQ(device.run("settings " + passwordKey + " 'an old one'").status, 0);
    const auto storage = device.run("storage");
    EXPECT_NE(storage.output.find("Storage: local storage"), std::string::npos) << storage.output;
    EXPECT_NE(storage.errors.find(server_->refusal()), std::string::npos) << storage.errors;
    EXPECT_EQ(storage.errors.find("an old one"), std::string::npos) << storage.errors;
}

TEST_P(ServerStorageProgramTest, AServerThatDiesDuringAJobFailsItAndKeepsTheSessionsBefore) {
    const test::SandboxDevice device("demo");
    ASSERT_TRUE(device.turnOn({"AutoScanPkgEnabled"}));
    ASSERT_EQ(logIn(device, *server_).status, 0);
    ASSERT_EQ(device.run("backup --yes --title First").status, 0);
    const fs::path deviceFolder = server_->rootFolder() / deviceName(device);
    const auto before = historyFilesIn(deviceFolder);
    ASSERT_EQ(before.size(), 1u);
    const auto firstHistory = FileManager::contentsOfFile((deviceFolder / before[0]).string());

    turnOnEverything(device);
    auto backup = std::async(std::launch::async, [&device] { return device.run("backup --yes --title Second"); });
    ASSERT_TRUE(server_->waitForPackagesUpload()) << "the second backup's uploads began";
    server_->stop();
    const auto outcome = backup.get();
    EXPECT_NE(outcome.status, 0) << outcome.output << outcome.errors;
    EXPECT_NE(outcome.errors.find("127.0.0.1"), std::string::npos) << "what failed: " << outcome.errors;
    EXPECT_EQ(FileManager::contentsOfFile((deviceFolder / before[0]).string()), firstHistory);
}

INSTANTIATE_TEST_SUITE_P(Servers, ServerStorageProgramTest,
                         ::testing::Values(ServerKind{"ftp", test::FtpServer::isAvailable,
                                                      [] { return std::make_unique<FtpServerUnderTest>(); }},
                                           ServerKind{"owncloud", test::WebDavServer::isAvailable,
                                                      [] { return std::make_unique<WebDavServerUnderTest>(); }}),
                         [](const ::testing::TestParamInfo<ServerKind>& kind) { return std::string(kind.param.name); });

class FtpStorageProgramTest : public ::testing::Test {
protected:
    void SetUp() override { STOWHAVEN_SKIP_WITHOUT_FTP_SERVER(); }
};

TEST_F(FtpStorageProgramTest, CtrlCEndsTheTransferAndTheJobLeavesNoSessionOnTheServer) {
    FtpServerUnderTest server({.readLimit = 16 * 1024});
    const test::SandboxDevice device("demo");
    turnOnEverything(device);
    ASSERT_EQ(logIn(device, server).status, 0);
    test::TerminalProgram terminal("--root " + ShellQuote::path(device.root()) + " backup --yes");
    ASSERT_TRUE(terminal.waitFor("UP: ")) << "the transfer's banner: " << terminal.screen();
    terminal.type("\x03");
    ASSERT_TRUE(terminal.waitFor("cancel the operation in progress?")) << terminal.screen();
    terminal.type("2\n");
    EXPECT_EQ(terminal.finish(), 130) << terminal.screen();
    EXPECT_TRUE(historyFilesIn(server.rootFolder() / deviceName(device)).empty());
}

TEST_F(FtpStorageProgramTest, ADeviceFolderNamedAfterTheIdentifierTakesTheDevicesName) {
    FtpServerUnderTest server;
    const test::SandboxDevice device("minimal");
    ASSERT_TRUE(device.turnOn({"AutoScanPkgEnabled"}));
    ASSERT_EQ(logIn(device, server).status, 0);
    ASSERT_EQ(device.run("backup --yes --title 'Of old'").status, 0);
    const fs::path root = server.rootFolder();
    const std::string identifier = lockdownFact(device, "-UniqueDeviceID");
    fs::rename(root / deviceName(device), root / identifier);

    const auto history = device.run("history");
    EXPECT_NE(history.output.find("Of old"), std::string::npos) << history.output << history.errors;
    EXPECT_EQ(namesIn(root), std::vector<std::string>{deviceName(device) + "/"});
}

// The client refuses every hostile shape of a listing (its own test has them all); here the
// engine fails closed on one and writes nothing, and takes a name a shell would run as data.
TEST_F(FtpStorageProgramTest, AHostileListingIsRefusedAndItsNamesAreOnlyData) {
    const test::SandboxDevice device("minimal");
    FtpServerUnderTest server({.hostileListing = "type=file;size=9; ../../x.stowhvn\r\n"});
    const fs::path deviceFolder = server.rootFolder() / deviceName(device);
    fs::create_directories(deviceFolder);
    const auto login = logIn(device, server);
    EXPECT_EQ(login.status, 1) << login.output;
    EXPECT_NE(login.errors.find("stowhaven: "), std::string::npos) << "a message: " << login.errors;
    EXPECT_TRUE(namesIn(deviceFolder).empty());

    server.server().setHostileListing("type=file;size=9; $(touch owned).stowhvn\r\n");
    ASSERT_EQ(logIn(device, server).status, 0);
    const auto history = device.run("history");
    EXPECT_EQ(history.status, 0) << history.errors;
    for (const fs::path& folder : {fs::current_path(), fs::path(device.root()), server.shareFolder()}) {
        EXPECT_FALSE(fs::exists(folder / "owned")) << folder;
    }
}

}  // namespace
}  // namespace stowhaven

// The restore of a session's sources into the package manager's settings and apt list of
// the demo sandbox device. The commands are only recorded: the demo's sources name hosts
// that no network here reaches.

#include "restore/SourcesRestoreOperation.h"

#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/Text.h"
#include "items/DeviceItems.h"
#include "items/RepositorySource.h"
#include "platform/FileManager.h"
#include "platform/plist/PlistCodec.h"
#include "support/SandboxDevice.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

constexpr const char* kCydiaList = "/etc/apt/sources.list.d/cydia.list";

std::shared_ptr<RepositorySource> sourceOf(const std::string& uri, const std::string& distribution,
                                           PlistValue::Array sections = {}) {
    return std::make_shared<RepositorySource>(PlistValue::Dictionary{
        {"URI", uri}, {"Type", "deb"}, {"Distribution", distribution}, {"Sections", std::move(sections)}});
}

class SourcesRestoreOperationTest : public ::testing::Test {
protected:
    SourcesRestoreOperationTest() : scope_(device_.root()) {
        scope_.supervisor();
        CydiaFileManager::shared().waitForCleanUpJobs();
        CydiaFileManager::shared().buildCurrentRepositorySources();
    }

    // Makes the session the current one, which offers the sources the device lacks, then
    // lets CHOOSE change the choice and runs the restore with the commands of the run alone
    // on record.
    template <typename Choice>
    void restore(const std::shared_ptr<BackupSession>& session, Choice choose) {
        CydiaFileManager::shared().processBackupData({session}, false);
        CydiaFileManager::shared().changeCurrentBackupSessionTo(session);
        choose();
        scope_.services.shell.commands.clear();
        std::make_shared<SourcesRestoreOperation>()->start();
    }
    void restore(const std::shared_ptr<BackupSession>& session) {
        restore(session, [] {});
    }

    std::vector<std::string> listLines() const {
        const auto text = FileManager::contentsOfFile(device_.path(kCydiaList));
        return text ? textutil::split(textutil::trimmed(*text), '\n') : std::vector<std::string>{};
    }
    std::string preferencesBytes() const {
        return FileManager::contentsOfFile(device_.path(DeviceItems::kCydiaPreferencesPath)).value_or("");
    }
    PlistValue::Dictionary preferences() const {
        const auto value = PlistCodec::parse(preferencesBytes());
        return value && value->isDictionary() ? *value->asDictionary() : PlistValue::Dictionary{};
    }
    PlistValue::Dictionary cydiaSources() const {
        const PlistValue::Dictionary all = preferences();
        const PlistValue* sources = valueForKey(all, "CydiaSources");
        return sources && sources->isDictionary() ? *sources->asDictionary() : PlistValue::Dictionary{};
    }
    static bool deviceListHasLink(const std::string& link) {
        const auto sources = CydiaFileManager::shared().currentUserRepoSources();
        return std::any_of(sources.begin(), sources.end(), [&](const auto& source) { return source->link() == link; });
    }
    static std::size_t countOf(const std::vector<std::string>& lines, const std::string& line) {
        return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
    }

    test::SandboxDevice device_{"demo"};
    test::SupervisorScope scope_;
};

TEST_F(SourcesRestoreOperationTest, ChosenSourcesJoinBothRecordsAndTheSettingsAreWrittenAnewInBinary) {
    // A key of the device's settings that the package manager can't read.
    PlistValue::Dictionary onDevice = preferences();
    (*onDevice["CydiaSources"].asDictionary())["http://stale.example/"] = PlistValue::Dictionary{{"URI", "x"}};
    ASSERT_TRUE(
        PlistCodec::writeFile(device_.path(DeviceItems::kCydiaPreferencesPath), onDevice, PlistFormat::Xml, 0640));
    const std::vector<std::string> linesBefore = listLines();

    auto session = std::make_shared<BackupSession>();
    session->setSessionDate(Date(700000000));
    session->addRepositorySource(sourceOf("http://repo.newhaven.example/", "./"));
    session->addRepositorySource(sourceOf("https://repo.second.example/", "ios8", {"main", "extra"}));
    session->addRepositorySource(sourceOf("http://repo.untouched.example/", "./"));
    // The session's copy of the settings, whose sources and the session's sections become
    // the settings' "Sections".
    const PlistValue::Dictionary savedSources{
        {"deb:http://saved.example/:./", PlistValue::Dictionary{{"URI", "http://saved.example/"}}}};
    session->setPreferencesData(
        BackupSession::FileData{{DeviceItems::kCydiaPreferencesPath,
                                 PlistValue::data(*PlistCodec::serialize(
                                     PlistValue::Dictionary{{"CydiaSources", savedSources}}, PlistFormat::Binary))}});
    session->setCydiaSections(PlistValue::Dictionary{{"Tweaks", PlistValue::Dictionary{{"Hidden", true}}}});

    restore(session, [&] {
        for (const auto& source : *session->repositorySources()) {
            if (source->link() == "http://repo.untouched.example/") source->setSelected(false);
        }
    });

    std::vector<std::string> expectedLines = linesBefore;
    expectedLines.push_back("deb http://repo.newhaven.example/ ./");
    expectedLines.push_back("deb https://repo.second.example/ ios8 main");
    EXPECT_EQ(listLines(), expectedLines);

    EXPECT_TRUE(preferencesBytes().starts_with("bplist00"));
    const auto attributes = FileManager::attributesOfItem(device_.path(DeviceItems::kCydiaPreferencesPath));
    ASSERT_TRUE(attributes);
    EXPECT_EQ(attributes->permissions & 0777, 0640u) << "the file keeps its mode";
    const PlistValue::Dictionary written = preferences();
    EXPECT_FALSE(written.contains("LastUpdate"));
    PlistValue::Dictionary expectedSections = savedSources;
    expectedSections["Tweaks"] = PlistValue::Dictionary{{"Hidden", true}};
    EXPECT_EQ(written.at("Sections"), PlistValue(expectedSections));

    const PlistValue::Dictionary sources = cydiaSources();
    EXPECT_FALSE(sources.contains("http://stale.example/"));
    EXPECT_TRUE(sources.contains("deb:http://127.0.0.12/quillfeed/:./")) << "the device's own stay";
    EXPECT_TRUE(sources.contains("deb:http://repo.newhaven.example/:./"));
    EXPECT_EQ(sources.at("deb:https://repo.second.example/:ios8"),
              PlistValue(PlistValue::Dictionary{{"Type", "deb"},
                                                {"URI", "https://repo.second.example/"},
                                                {"Distribution", "ios8"},
                                                {"Sections", PlistValue::Array{"main", "extra"}}}));
    EXPECT_FALSE(sources.contains("deb:http://repo.untouched.example/:./")) << "not chosen";
}

TEST_F(SourcesRestoreOperationTest, ASourceTheDeviceHasAlreadyIsNotAddedTwice) {
    const std::vector<std::string> linesBefore = listLines();
    const PlistValue::Dictionary sourcesBefore = cydiaSources();
    const std::size_t deviceSourcesBefore = CydiaFileManager::shared().currentUserRepoSources().size();

    auto session = std::make_shared<BackupSession>();
    session->setSessionDate(Date(700000000));
    // In the device's list: the user ticks it all the same.
    session->addRepositorySource(sourceOf("http://127.0.0.12/quillfeed/", "./"));
    // Left out of the device's list for its "stable", but a line of the apt list.
    session->addRepositorySource(sourceOf("http://127.0.0.11/bigboss/repofiles/cydia/", "stable", {"main"}));

    restore(session, [&] {
        for (const auto& source : *session->repositorySources()) source->setSelected(true);
    });

    EXPECT_EQ(listLines(), linesBefore);
    EXPECT_EQ(countOf(listLines(), "deb http://127.0.0.11/bigboss/repofiles/cydia/ stable main"), 1u);
    PlistValue::Dictionary expectedSources = sourcesBefore;
    expectedSources["deb:http://127.0.0.11/bigboss/repofiles/cydia/:stable"] =
        PlistValue::Dictionary{{"Type", "deb"},
                               {"URI", "http://127.0.0.11/bigboss/repofiles/cydia/"},
                               {"Distribution", "stable"},
                               {"Sections", PlistValue::Array{"main"}}};
    EXPECT_EQ(cydiaSources(), expectedSources) << "the same entry, rewritten";
    EXPECT_EQ(CydiaFileManager::shared().currentUserRepoSources().size(), deviceSourcesBefore + 1);
}

TEST_F(SourcesRestoreOperationTest, WithoutTheSettingsFileTheSourcesStillReachTheAptList) {
    ASSERT_TRUE(FileManager::removeItem(device_.path(DeviceItems::kCydiaPreferencesPath)));
    auto session = std::make_shared<BackupSession>();
    session->setSessionDate(Date(700000000));
    session->addRepositorySource(sourceOf("http://repo.newhaven.example/", "./"));

    restore(session);

    EXPECT_EQ(countOf(listLines(), "deb http://repo.newhaven.example/ ./"), 1u);
    EXPECT_FALSE(FileManager::fileExists(device_.path(DeviceItems::kCydiaPreferencesPath)));
}

TEST_F(SourcesRestoreOperationTest, HostileSourcesNeverBreakOutOfTheirLine) {
    const std::string quoted = "http://quote.example/'; touch " + device_.path("/pwned") + "; echo '";
    const std::vector<std::string> linesBefore = listLines();
    auto session = std::make_shared<BackupSession>();
    session->setSessionDate(Date(700000000));
    session->addRepositorySource(sourceOf(quoted, "./"));
    session->addRepositorySource(sourceOf("http://split.example/", "./\ndeb http://injected.example/ ./"));
    session->addRepositorySource(
        sourceOf("http://sections.example/", "ios8", {"main", "x\ndeb http://injected.example"}));
    session->addRepositorySource(sourceOf("http://bell.example/\a", "./"));

    restore(session, [&] {
        for (const auto& source : *session->repositorySources()) source->setSelected(true);
    });

    std::vector<std::string> expectedLines = linesBefore;
    expectedLines.push_back("deb " + quoted + " ./");
    EXPECT_EQ(listLines(), expectedLines) << "the quote is text in its own line; the others are refused";
    for (const auto& [key, value] : cydiaSources()) {
        EXPECT_EQ(key.find("injected"), std::string::npos) << key;
        EXPECT_EQ(value.description().find("injected"), std::string::npos) << key;
    }
    EXPECT_TRUE(deviceListHasLink(quoted));
    EXPECT_FALSE(deviceListHasLink("http://split.example/"));
    EXPECT_FALSE(deviceListHasLink("http://sections.example/"));
    EXPECT_EQ(scope_.services.shell.commands, std::vector<std::string>{"apt-get update"}) << "no line reached a shell";
}

}  // namespace
}  // namespace stowhaven

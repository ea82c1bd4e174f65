// "stowhaven inspect" on the forms a history comes in, made here as devices make them.

#include "archive/BuiltInCipherKey.h"
#include "archive/HistoryText.h"
#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "support/ProgramRun.h"
#include "support/SampleSessions.h"
#include "support/SandboxDevice.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace stowhaven {
namespace {

class HistoryViewProgramTest : public ::testing::Test {
protected:
    // Writes a file of the test's own and answers its path.
    std::string file(const std::string& name, const std::string& contents) const {
        const std::string path = folder_ / name;
        EXPECT_TRUE(FileManager::writeFile(path, contents));
        return path;
    }

    test::ProgramOutcome view(const std::string& path, const std::string& options = "") const {
        return device_.run("inspect " + options + " " + ShellQuote::path(path));
    }

    nlohmann::json viewAsJson(const std::string& path) const {
        const auto outcome = view(path, "--json");
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return nlohmann::json::parse(outcome.output);
    }

    // The sessions are made by this process, on a device of its own.
    test::SupervisorScope scope_;
    test::SandboxDevice device_{"minimal"};
    test::TestFolder folder_;
};

TEST_F(HistoryViewProgramTest, AHistoryFileShowsItsSessionInFull) {
    const auto session = test::fullSession();
    const std::string history = file("2024-09-12_08~00~00.stowhvn", *HistoryText::encode(session));

    const auto outcome = view(history);
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    for (const std::string& shown :
         {std::string("Session 1 of 1: ") + test::kPadlock + " Before the upgrade", std::string("All my tweaks"),
          std::string("Ann's iPhone (iPhone7,2)"), std::string("Encrypted    yes"), std::string("Packages (2)"),
          std::string("Foo  com.foo  1.0  [Tweaks]"), std::string("deb http://repo.example.org/ stable main"),
          std::string("com.saurik.Cydia.plist  (in the history, 17 bytes)"),
          std::string("net.example.tweak.plist  (in the session's folder)"),
          std::string("Weather (com.example.weather)"), std::string("News"), std::string("chip 86123"),
          std::string("Ringtones (type 4, /Library/Ringtones/): Chime.m4r"), std::string("Camera Roll: 2 photos")}) {
        EXPECT_NE(outcome.output.find(shown), std::string::npos) << shown << "\n" << outcome.output;
    }
}

// The fields the text shows too are left to it; here the archive's own keys and kinds.
TEST_F(HistoryViewProgramTest, JsonKeysTheSessionAsItsArchiveDoes) {
    const std::string history = file("session.stowhvn", *HistoryText::encode(test::fullSession()));
    const nlohmann::json sessions = viewAsJson(history);
    ASSERT_EQ(sessions.size(), 1u);
    const nlohmann::json& session = sessions[0];
    EXPECT_EQ(session["sessionDate"], "2024-09-11T16:00:00.500Z");
    EXPECT_EQ(session["repositorySources"][0]["sections"], nlohmann::json({"main", "extra"}));
    EXPECT_EQ(session["applications"][0]["installDate"], 441763200) << "the archive's integer";
    EXPECT_EQ(session["preferencesData"]["/var/mobile/Library/Preferences/com.saurik.Cydia.plist"],
              "YnBsaXN0MDAgc2V0dGluZ3M=");
    EXPECT_TRUE(session["preferencesData"]["/var/mobile/Library/Preferences/net.example.tweak.plist"].is_null());
    EXPECT_EQ(session["archivableFolders"][0]["folderContents"][0]["name"], "Chime.m4r");
    EXPECT_EQ(session["fCalendar"], true);
    EXPECT_EQ(session["photoVideoAlbums"][0]["photos"], nlohmann::json({"IMG_0001.JPG", "IMG_0002.JPG"}));
    EXPECT_EQ(session["photoVideoAlbums"][0]["size"], 4.5) << "the sum of its sides, though never set itself";
}

TEST_F(HistoryViewProgramTest, ANoteAndItsVCardShowEverySessionOfTheDevice) {
    auto older = test::fullSession();
    older->setSessionDate(Date(100000000));
    older->setVersion(std::nullopt);
    older->setSpringBoardData(
        BackupSession::FileData{{"/var/mobile/Library/SpringBoard/IconState.plist", PlistValue::Dictionary{}}});
    const std::string note = *HistoryText::encode(ArchiveValue::Array{older, test::fullSession()});

    const nlohmann::json sessions = viewAsJson(file("note.txt", note));
    ASSERT_EQ(sessions.size(), 2u);
    EXPECT_TRUE(sessions[0]["version"].is_null()) << "the archive as it stands";
    EXPECT_EQ(sessions[1]["version"], STOWHAVEN_VERSION);
    const auto report = view(file("note.txt", note));
    EXPECT_NE(report.output.find("Version      " STOWHAVEN_VERSION), std::string::npos)
        << "read, a session without a version takes the running one";

    const std::string vCard =
        "BEGIN:VCARD\nVERSION:3.0\nN:Stow;Haven;\nFN:Haven Stow\nORG:Larkmoor, Inc.\n"
        "URL;type=HOMEPAGE;type=pref:http\\://guide.example/\nNOTE:" +
        note.substr(0, 40) + "\n " + note.substr(40) + "\nEND:VCARD";
    EXPECT_EQ(viewAsJson(file("Stow Haven.vcf", vCard)).size(), 2u) << "a folded note line joined";
}

TEST_F(HistoryViewProgramTest, AnEncipheredNoteIsDecipheredWithTheBuiltInPassPhrase) {
    const std::string plain = file("plain.txt", *HistoryText::encode(ArchiveValue::Array{test::fullSession()}));
    const std::string enciphered = folder_ / "enciphered.txt";
    test::runCommand("openssl enc -e -a -salt -aes-256-cbc -in " + ShellQuote::path(plain) + " -k '" +
                     std::string(BuiltInCipherKey::kKeyHex) + "' -out " + ShellQuote::path(enciphered));

    const auto outcome = view(enciphered);
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("Session 1 of 1"), std::string::npos) << outcome.output;
}

TEST_F(HistoryViewProgramTest, ADamagedOrForeignFileIsRefusedClearly) {
    const std::string text = *HistoryText::encode(test::fullSession());
    for (const std::string& contents :
         {text.substr(0, text.size() / 2), std::string("just some notes"), std::string("BEGIN:VCARD\nEND:VCARD"),
          std::string("begin-base64 644 cydiaApps.tbz\nnot really\n====\n"), std::string()}) {
        const auto outcome = view(file("damaged.stowhvn", contents));
        EXPECT_EQ(outcome.status, 1) << contents;
        EXPECT_NE(outcome.errors.find("holds no backup history that can be read"), std::string::npos) << outcome.errors;
    }
    EXPECT_EQ(view(folder_ / "missing.stowhvn").status, 1);
    test::runCommand("truncate -s 65M " + ShellQuote::path(folder_ / "huge.stowhvn"));
    const auto huge = view(folder_ / "huge.stowhvn");
    EXPECT_EQ(huge.status, 1);
    EXPECT_NE(huge.errors.find("too large"), std::string::npos) << huge.errors;
}

}  // namespace
}  // namespace stowhaven

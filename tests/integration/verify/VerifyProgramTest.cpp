// `stowhaven verify` on sessions that the real program stored on a sandbox device: sound
// ones, plain and enciphered, say OK for every item and are left as they were; copies
// damaged as storage, transfers and attackers damage them name each fault.

#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "support/FolderSnapshot.h"
#include "support/SandboxDevice.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStorageFolder = "/var/mobile/Library/Preferences/Stowhaven";

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

bool hasLine(const std::string& output, const std::string& part) { return output.find(part) != std::string::npos; }

// A plain session, then an enciphered one, of the demo device with its applications,
// folders and captured .deb files: built once for the suite.
class VerifyProgramTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        if (geteuid() != 0) return;
        work_ = new test::TestFolder;
        original_ = new test::SandboxDevice("demo");
        // Before any run, which gives the device's settings the storage's place.
        unused_ = new test::SandboxDevice(*original_, "unused");
        FileManager::writeFile(keyFile(), "correct horse\n");
        ASSERT_TRUE(original_->turnOn({"AutoScanPkgEnabled", "AutoScanStockAppsEnabled", "AutoScanAppStoreAppsEnabled",
                                       "AutoScanOtherOptionsEnabled", "BackupDebsEnabled"}));
        const auto plain = original_->run("backup --yes --title Plain");
        ASSERT_EQ(plain.status, 0) << plain.errors;
        ASSERT_TRUE(original_->turnOn({"EncryptBackupEnabled"}));
        const auto enciphered =
            original_->run("backup --yes --title Enciphered --key-file " + ShellQuote::path(keyFile()));
        ASSERT_EQ(enciphered.status, 0) << enciphered.errors;
    }
    static void TearDownTestSuite() {
        delete unused_;
        delete original_;
        delete work_;
    }

    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "backups read and restore root's files: run as root";
        ASSERT_NE(original_, nullptr);
    }

    static std::string keyFile() { return (work_->path() / "key").string(); }

    // The session directories of DEVICE, oldest first: the plain one, then the enciphered one.
    static std::vector<std::string> sessionFolders(const test::SandboxDevice& device) {
        std::vector<std::string> folders;
        for (const auto& entry : fs::directory_iterator(device.path(kStorageFolder))) {
            if (entry.is_directory()) folders.push_back(entry.path().string());
        }
        std::sort(folders.begin(), folders.end());
        return folders;
    }

    static inline test::TestFolder* work_ = nullptr;
    static inline test::SandboxDevice* original_ = nullptr;
    static inline test::SandboxDevice* unused_ = nullptr;
};

TEST_F(VerifyProgramTest, SoundSessionsPlainAndEncipheredAreOkItemByItemAndStayAsTheyWere) {
    const auto storedBefore = test::snapshot(original_->path(kStorageFolder));

    const auto verify = original_->run("verify --all --key-file " + ShellQuote::path(keyFile()));

    EXPECT_EQ(verify.status, 0) << verify.output << verify.errors;
    const auto lines = linesOf(verify.output);
    ASSERT_FALSE(lines.empty());
    for (std::size_t index = 0; index + 1 < lines.size(); ++index) {
        EXPECT_NE(lines[index].find("  OK"), std::string::npos) << lines[index];
    }
    EXPECT_NE(lines.back().find("2 session(s)"), std::string::npos) << lines.back();
    EXPECT_NE(lines.back().find("all sound"), std::string::npos) << lines.back();
    for (const char* item : {"  history  OK (\"Plain\")", "Enciphered\")", "  key  OK (the key given)",
                             "  Notes data  OK", "  Calendar data  OK", "  application ", "  folder ", "  package "}) {
        EXPECT_TRUE(hasLine(verify.output, item)) << item << " in\n" << verify.output;
    }
    EXPECT_EQ(test::snapshot(original_->path(kStorageFolder)), storedBefore) << "verify writes nothing on storage";
    for (const auto& entry : fs::recursive_directory_iterator(original_->path("/var/tmp/stowhaven"))) {
        EXPECT_FALSE(entry.is_regular_file()) << entry.path() << " left in the temporary folder";
    }

    // The newest session alone, with the key it keeps, as JSON objects.
    const auto json = original_->run("verify --json");
    EXPECT_EQ(json.status, 0) << json.output << json.errors;
    const auto objects = linesOf(json.output);
    ASSERT_GE(objects.size(), 3u);
    bool keyChecked = false;
    for (std::size_t index = 0; index + 1 < objects.size(); ++index) {
        const auto object = nlohmann::json::parse(objects[index]);
        EXPECT_TRUE(object.at("ok").get<bool>()) << objects[index];
        if (object.at("item") == "key") keyChecked = object.at("detail") == "the key the session keeps";
    }
    EXPECT_TRUE(keyChecked) << json.output;
    EXPECT_EQ(nlohmann::json::parse(objects.back()).at("summary").at("faults"), 0) << objects.back();

    // A session named by its date as the history lists it.
    const auto listed = nlohmann::json::parse(original_->run("history --json").output);
    const auto plain = original_->run("verify --session " + listed.back().at("date").get<std::string>());
    EXPECT_EQ(plain.status, 0) << plain.output << plain.errors;
    EXPECT_TRUE(hasLine(plain.output, "history  OK (\"Plain\")")) << plain.output;
    EXPECT_TRUE(hasLine(plain.output, "1 session(s)")) << plain.output;

    const auto unknown = original_->run("verify --session 1999-01-01_00~00~00");
    EXPECT_EQ(unknown.status, 2) << unknown.output << unknown.errors;
    EXPECT_NE(unknown.errors.find("no session 1999-01-01_00~00~00"), std::string::npos) << unknown.errors;
}

// One damage of a copy of the stored sessions, made with plain file operations on the
// plain session's folder (FOLDERS[0]) or the enciphered one's (FOLDERS[1]).
struct Damage {
    std::string name;
    std::function<void(const std::vector<std::string>& folders)> apply;
    // Put before the program on its command line.
    std::string environment;
    std::string fault;
};

void PrintTo(const Damage& damage, std::ostream* out) { *out << damage.name; }

std::string firstDeb(const std::string& folder) {
    for (const auto& entry : fs::directory_iterator(folder + "/DEBS")) return entry.path().string();
    ADD_FAILURE() << "no .deb captured in " << folder;
    return {};
}

void cutInHalf(const std::string& file) { fs::resize_file(file, fs::file_size(file) / 2); }

void appendLine(const std::string& file, const std::string& line) {
    FileManager::writeFile(file, FileManager::contentsOfFile(file).value_or("") + line + "\n");
}

class DamagedSessionVerifyTest : public VerifyProgramTest, public ::testing::WithParamInterface<Damage> {};

TEST_P(DamagedSessionVerifyTest, NamesTheFaultAndGoesOnWithTheRest) {
    // The stored sessions on a device of their own, which finds its storage where it is.
    const test::SandboxDevice copy(*unused_, "damaged");
    fs::copy(original_->path(kStorageFolder), copy.path(kStorageFolder), fs::copy_options::recursive);
    const auto folders = sessionFolders(copy);
    ASSERT_EQ(folders.size(), 2u);
    GetParam().apply(folders);

    const auto verify = copy.run("verify --all", GetParam().environment);

    EXPECT_EQ(verify.status, 1) << verify.output << verify.errors;
    EXPECT_TRUE(hasLine(verify.output, GetParam().fault)) << GetParam().fault << " in\n" << verify.output;
    EXPECT_TRUE(hasLine(verify.output, "  Safari data  OK")) << "the other items are checked:\n" << verify.output;
    EXPECT_TRUE(hasLine(verify.output, "fault(s)")) << verify.output;
    EXPECT_FALSE(fs::exists("pwned") || fs::exists(copy.path("/var/tmp/stowhaven/pwned")))
        << "a name from storage ran as a command";
}

INSTANTIATE_TEST_SUITE_P(
    Damages, DamagedSessionVerifyTest,
    ::testing::Values(Damage{"PartMissing", [](const auto& folders) { fs::remove(folders[0] + "/NOTES/NOTES-000"); },
                             "", "  Notes data  FAULT: its part <NOTES-000> is missing"},
                      Damage{"PartIsAPipe",
                             [](const auto& folders) {
                                 const std::string part = folders[0] + "/NOTES/NOTES-000";
                                 fs::remove(part);
                                 ASSERT_EQ(mkfifo(part.c_str(), 0600), 0);
                             },
                             "", "  Notes data  FAULT: its part <NOTES-000> is missing"},
                      Damage{"PartCutShort",
                             [](const auto& folders) { cutInHalf(folders[0] + "/CALENDAR/CALENDAR-000"); }, "",
                             "  Calendar data  FAULT: its joined parts: doesn't list cleanly as a tar archive"},
                      Damage{"IndexNamesAPartThatIsGone",
                             [](const auto& folders) { appendLine(folders[0] + "/NOTES.idx", "NOTES-001"); }, "",
                             "  Notes data  FAULT: its part <NOTES-001> is missing"},
                      Damage{"IndexLeavesOutAStoredPart",
                             [](const auto& folders) {
                                 fs::copy_file(folders[0] + "/NOTES/NOTES-000", folders[0] + "/NOTES/NOTES-001");
                             },
                             "", "  Notes data  FAULT: its index leaves out the stored part <NOTES-001>"},
                      Damage{"IndexNamesACommand",
                             [](const auto& folders) {
                                 FileManager::writeFile(folders[0] + "/NOTES.idx", "NOTES-000\n$(touch pwned)\n");
                             },
                             "", "  Notes data  FAULT: its index names <$(touch pwned)> where <NOTES-001> belongs"},
                      Damage{"WrongKey", [](const auto&) {}, "STOWHAVEN_KEY=another ",
                             "  key  FAULT: the key given is not the session's"},
                      Damage{"ArchiveEncipheredUnderAnotherPassPhrase",
                             [](const auto& folders) {
                                 const std::string notes = folders[1] + "/NOTES/NOTES-000";
                                 const std::string plain = ShellQuote::path(notes + ".plain");
                                 test::runCommand("head -c 4096 /dev/urandom > " + plain +
                                                  " && openssl enc -e -a -salt -aes-256-cbc -pbkdf2 -k another -in " +
                                                  plain + " -out " + ShellQuote::path(notes) + " && rm " + plain);
                             },
                             "", "  Notes data  FAULT: its joined parts: doesn't decipher"},
                      Damage{"HistoryDamaged",
                             [](const auto& folders) {
                                 const std::string history = folders[0] + ".stowhvn";
                                 std::string text = FileManager::contentsOfFile(history).value_or("");
                                 text.replace(text.size() / 2, 8, "!!!!!!!!");
                                 FileManager::writeFile(history, text);
                             },
                             "", "  history  FAULT: <"},
                      Damage{"DebCutShort", [](const auto& folders) { cutInHalf(firstDeb(folders[0])); }, "",
                             "is not a valid package archive"}),
    [](const ::testing::TestParamInfo<Damage>& param) { return param.param.name; });

}  // namespace
}  // namespace stowhaven

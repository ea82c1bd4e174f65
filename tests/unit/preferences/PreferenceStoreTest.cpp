#include "platform/FileManager.h"
#include "platform/PreferenceStore.h"
#include "platform/plist/PlistCodec.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <thread>

namespace stowhaven {
namespace {

using Array = PlistValue::Array;
using Dictionary = PlistValue::Dictionary;

class PreferenceStoreTest : public ::testing::Test {
protected:
    test::TestFolder folder_;
    const std::string path_ = folder_ / "Library/Preferences/com.larkmoor.stowhaven.plist";

    std::string fileBytes() const { return FileManager::contentsOfFile(path_).value_or(""); }
    unsigned fileMode() const { return FileManager::attributesOfItem(path_)->permissions; }
    void putFile(const std::string& bytes, unsigned mode = 0644) const {
        ASSERT_TRUE(FileManager::createDirectory(folder_ / "Library/Preferences", true));
        ASSERT_TRUE(FileManager::writeFile(path_, bytes, nullptr, mode));
    }
};

TEST_F(PreferenceStoreTest, StoredValuesComeBeforeRegisteredDefaultsWhichAreNeverWritten) {
    PreferenceStore store(path_);
    store.registerDefaults({{"CurrentStorageType", 5}, {"SoundEnabled", true}, {"RepeatSchedule", -1}});
    store.registerDefaults({{"RepeatSchedule", 2}, {"ConfirmBackup", true}});
    EXPECT_EQ(store.object("CurrentStorageType"), PlistValue(5));
    EXPECT_EQ(store.object("RepeatSchedule"), PlistValue(2)) << "registered again, the new value counts";
    EXPECT_TRUE(store.object("DropboxStoragePath").isNull());
    EXPECT_TRUE(store.keyExists("ConfirmBackup")) << "registered keys exist";
    EXPECT_FALSE(store.keyExists("DropboxStoragePath"));

    ASSERT_TRUE(store.set("CurrentStorageType", 6));
    EXPECT_EQ(store.number("CurrentStorageType"), PlistValue(6));
    EXPECT_EQ(PlistCodec::readFile(path_), PlistValue(Dictionary{{"CurrentStorageType", 6}}));

    ASSERT_TRUE(store.remove("CurrentStorageType"));
    EXPECT_EQ(store.number("CurrentStorageType"), PlistValue(5)) << "the registered default shows again";
    ASSERT_TRUE(store.set("LocalStoragePath", "/var/mobile/Library/Preferences/Stowhaven"));
    ASSERT_TRUE(store.set("LocalStoragePath", PlistValue()));
    EXPECT_FALSE(store.keyExists("LocalStoragePath")) << "storing null removes the key";
    EXPECT_EQ(PlistCodec::readFile(path_), PlistValue(Dictionary{}));
}

TEST_F(PreferenceStoreTest, BooleansCountAsTheDevicesUserDefaultsCountThem) {
    const std::vector<std::pair<PlistValue, bool>> cases = {
        {true, true},   {false, false},  {1, true},         {-3, true},       {0, false},
        {0.5, true},    {0.0, false},    {"YES", true},     {"yes", true},    {"true", true},
        {"TRUE", true}, {"1", true},     {"NO", false},     {"0", false},     {"y", false},
        {"", false},    {" YES", false}, {Array{1}, false}, {Date(1), false}, {PlistValue::data("1"), false}};
    PreferenceStore store(path_);
    for (const auto& [value, expected] : cases) {
        ASSERT_TRUE(store.set("flag", value));
        EXPECT_EQ(store.boolean("flag"), expected) << value.description();
    }
    store.registerDefaults({{"registered", true}});
    EXPECT_TRUE(store.boolean("registered"));
}

TEST_F(PreferenceStoreTest, ReadsXmlWrittenByOthersAndWritesItBackInBinary) {
    putFile(*PlistCodec::serialize(Dictionary{{"FTPHost", "nas.local"}, {"FTPPort", 21}}, PlistFormat::Xml), 0600);
    PreferenceStore store(path_);
    EXPECT_EQ(store.string("FTPHost"), "nas.local");
    ASSERT_TRUE(store.set("FTPLogin", "me"));
    EXPECT_TRUE(fileBytes().starts_with("bplist00"));
    EXPECT_EQ(PlistCodec::readFile(path_),
              PlistValue(Dictionary{{"FTPHost", "nas.local"}, {"FTPPort", 21}, {"FTPLogin", "me"}}));
}

TEST_F(PreferenceStoreTest, TheFileIsOnlyEverReadableByItsOwner) {
    const mode_t previousMask = umask(0);  // a careless mask must not widen the file
    {
        PreferenceStore store(path_);
        ASSERT_TRUE(store.set("FTPPassword", "secret"));
    }
    umask(previousMask);
    EXPECT_EQ(fileMode(), 0600u);

    chmod(path_.c_str(), 0644);
    PreferenceStore store(path_);
    EXPECT_EQ(fileMode(), 0600u) << "a wider file is narrowed as soon as it is read";
    chmod(path_.c_str(), 0644);
    ASSERT_TRUE(store.set("FTPLogin", "me"));
    EXPECT_EQ(fileMode(), 0600u) << "and rewritten narrow";
    EXPECT_EQ(store.string("FTPPassword"), "secret");
}

TEST_F(PreferenceStoreTest, ADamagedFileReadsAsEmptyAndStaysUntilTheNextChange) {
    std::string deeplyNested = "<plist>";
    for (int i = 0; i < 100000; ++i) deeplyNested += "<dict><key>k</key>";
    const std::string binary = *PlistCodec::serialize(Dictionary{{"FTPHost", "nas.local"}}, PlistFormat::Binary);
    const std::vector<std::pair<std::string, std::string>> damaged = {
        {"truncated binary", binary.substr(0, binary.size() / 2)},
        {"garbage",
         "\x7f"
         "ELF\x02\x01\x01 not settings at all"},
        {"an empty file", ""},
        {"deep nesting", deeplyNested},
        {"an array instead of a dictionary", *PlistCodec::serialize(Array{1, 2}, PlistFormat::Binary)},
    };
    for (const auto& [what, bytes] : damaged) {
        SCOPED_TRACE(what);
        putFile(bytes, 0600);
        PreferenceStore store(path_);
        EXPECT_FALSE(store.keyExists("FTPHost"));

        EXPECT_TRUE(store.synchronize());
        EXPECT_TRUE(store.remove("FTPHost"));
        EXPECT_EQ(fileBytes(), bytes) << "left as it is while nothing changed";

        ASSERT_TRUE(store.set("FTPPort", 21));
        EXPECT_EQ(PlistCodec::readFile(path_), PlistValue(Dictionary{{"FTPPort", 21}}));
    }
}

TEST_F(PreferenceStoreTest, RefusesValuesThatCannotBeStoredAndChangesNothing) {
    PreferenceStore store(path_);
    ASSERT_TRUE(store.set("kept", 1));
    const std::string before = fileBytes();
    EXPECT_FALSE(store.set("albums", Array{"ok", PlistValue()}));
    EXPECT_FALSE(store.set("name", "\xff\xfe"));
    EXPECT_FALSE(store.keyExists("albums"));
    EXPECT_FALSE(store.keyExists("name"));
    EXPECT_EQ(fileBytes(), before);
}

// Makes every write beyond `bytes` fail with EFBIG, as a full disk would, for root too.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        previousHandler_ = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &previous_);
        const rlimit limit{bytes, previous_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &previous_);
        std::signal(SIGXFSZ, previousHandler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit previous_{};
    void (*previousHandler_)(int) = nullptr;
};

TEST_F(PreferenceStoreTest, AFailedWriteLeavesTheStoredFileAndIsTriedAgain) {
    PreferenceStore store(path_);
    ASSERT_TRUE(store.set("FTPPassword", "secret"));
    const std::string before = fileBytes();
    {
        const FileSizeLimit diskFull(before.size() + 8);
        EXPECT_FALSE(store.set("FTPRootDirectory", std::string(4096, 'x')));
        EXPECT_EQ(fileBytes(), before);
        EXPECT_EQ(FileManager::contentsOfDirectory(folder_ / "Library/Preferences")->size(), 1u) << "no litter";
        EXPECT_TRUE(store.keyExists("FTPRootDirectory")) << "kept for this run";
        EXPECT_FALSE(store.synchronize());
    }
    EXPECT_TRUE(store.synchronize());
    EXPECT_EQ(PreferenceStore(path_).string("FTPRootDirectory"), std::string(4096, 'x'));
}

TEST_F(PreferenceStoreTest, ConcurrentChangesAreAllWritten) {
    PreferenceStore store(path_);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&store, thread] {
            for (int i = 0; i < 25; ++i) {
                store.set("key" + std::to_string(thread * 100 + i), i);
                (void)store.boolean("key0");
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(PlistCodec::readFile(path_)->asDictionary()->size(), 100u);
}

}  // namespace
}  // namespace stowhaven

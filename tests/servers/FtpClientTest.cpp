#include "net/FtpClient.h"

#include "support/FtpServer.h"
#include "support/TestFolder.h"
#include "support/TransferFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;
using test::kLongestTransfer;
using test::randomBytes;
using test::readFile;
using test::transferSucceeds;
using test::writeFile;
using ::testing::HasSubstr;
using ::testing::Not;

bool isPrintableLine(const std::string& text) {
    return std::none_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; });
}

const FtpEntry* entryNamed(const std::vector<FtpEntry>& entries, const std::string& name) {
    const auto found =
        std::find_if(entries.begin(), entries.end(), [&](const FtpEntry& entry) { return entry.name == name; });
    return found == entries.end() ? nullptr : &*found;
}

// The engine's round trip is the contract suite's; here what only the client shows: names a
// shell or a URL would split, active mode, a failed download and deleteMatching.
TEST(FtpClientTest, NamesAShellOrAUrlWouldSplitGoAndComeBackInActiveModeToo) {
    STOWHAVEN_SKIP_WITHOUT_FTP_SERVER();
    test::FtpServer server;
    const test::TestFolder local;
    FtpClient client(server.account());
    ASSERT_TRUE(client.connect()) << client.lastError();

    const std::string device = "/Stowhaven/Jo's \"phone\" #1 %2F";
    for (const std::string& folder : {std::string("/Stowhaven"), device})
        ASSERT_TRUE(client.createDirectory(folder)) << folder << ": " << client.lastError();
    const std::string archive = randomBytes(3 * 1024 * 1024 + 17);
    writeFile(local / "archive", archive);
    writeFile(local / "note", "note");
    ASSERT_TRUE(transferSucceeds(client.startUpload(local / "archive", device + "/data.tar")));
    for (const char* name : {"/a.stowhvn", "/b.stowhvn", "/keep.txt"})
        ASSERT_TRUE(transferSucceeds(client.startUpload(local / "note", device + name)));
    EXPECT_EQ(readFile(server.folder() / "Stowhaven/Jo's \"phone\" #1 %2F/data.tar"), archive);

    auto activeAccount = server.account();
    activeAccount.passive = false;
    FtpClient active(activeAccount);
    const auto download = active.startDownload(device + "/data.tar", local / "back");
    ASSERT_TRUE(download->waitUntilFinished(kLongestTransfer));
    EXPECT_TRUE(download->succeeded()) << download->error();
    EXPECT_EQ(readFile(local / "back"), archive);
    EXPECT_FALSE(transferSucceeds(active.startDownload(device + "/missing", local / "missing")));
    EXPECT_FALSE(fs::exists(local / "missing"));

    ASSERT_TRUE(client.deleteMatching(device, "*.stowhvn")) << client.lastError();
    const auto left = client.list(device);
    ASSERT_TRUE(left);
    EXPECT_EQ(left->size(), 2u);
    EXPECT_TRUE(entryNamed(*left, "keep.txt"));
    EXPECT_FALSE(client.removeDirectory(device));
    EXPECT_THAT(client.lastError(), HasSubstr("550"));
}

TEST(FtpClientTest, RefusalsCarryTheServersWordsButNeverThePassword) {
    STOWHAVEN_SKIP_WITHOUT_FTP_SERVER();
    test::FtpServer server;
    writeFile(server.folder() / "victim", "still here");

    auto wrong = server.account();
    wrong.password = "not the " + wrong.password;
    FtpClient refused(wrong);
    EXPECT_FALSE(refused.connect());
    EXPECT_FALSE(refused.isConnected());
    EXPECT_THAT(refused.lastError(), HasSubstr("530"));
    EXPECT_THAT(refused.lastError(), Not(HasSubstr(wrong.password)));

    // Line breaks would end one command and start another on the control connection.
    auto injecting = server.account();
    injecting.password += "\r\nDELE /victim";
    FtpClient injector(injecting);
    EXPECT_FALSE(injector.connect());
    EXPECT_THAT(injector.lastError(), Not(HasSubstr(server.account().password)));
    FtpClient client(server.account());
    ASSERT_TRUE(client.connect()) << client.lastError();
    EXPECT_FALSE(client.createDirectory("/made\r\nDELE /victim"));
    EXPECT_FALSE(client.rename("/victim", "/gone\nDELE /victim"));
    EXPECT_FALSE(client.deleteFile(std::string("/x\0\r\nDELE /victim", 18)));
    EXPECT_FALSE(transferSucceeds(client.startUpload(server.folder() / "victim", "/up\r\nDELE /victim")));
    EXPECT_EQ(readFile(server.folder() / "victim"), "still here");
    EXPECT_EQ(std::distance(fs::directory_iterator(server.folder()), fs::directory_iterator()), 1);
    EXPECT_TRUE(client.sizeOf("/victim"));

    const int port = server.account().port;
    server.stop();
    auto nobody = server.account();
    nobody.port = port;
    FtpClient unanswered(nobody);
    EXPECT_FALSE(unanswered.connect());
    EXPECT_THAT(unanswered.lastError(), HasSubstr("onnect"));
}

TEST(FtpClientTest, HostileListingsAreRefusedWholeAndNamesStayData) {
    STOWHAVEN_SKIP_WITHOUT_FTP_SERVER();
    test::FtpServer server({.hostileListing = ""});
    FtpClient client(server.account());
    ASSERT_TRUE(client.connect()) << client.lastError();

    const struct {
        const char* what;
        std::string listing;
        const char* problem;
    } refused[] = {
        {"a slash in a name", "type=file;size=1; ok\r\ntype=file;size=1; ../../etc/passwd\r\n", "not one file name"},
        {"a parent folder as a folder", "type=dir; ..\r\n", "named \"..\""},
        {"a backslash", "type=file; ..\\secret\r\n", "not one file name"},
        {"a line break in a name", "type=file; evil\r\nDELE victim\r\n", "not facts"},
        {"a carriage return in a name", "type=file; evil\rname\r\n", "not facts"},
        {"a NUL in a name", std::string("type=file; a\0b\r\n", 16), "not one file name"},
        {"an escape sequence in a name", "type=file; \x1b]0;owned\x07\r\n", "not one file name"},
        {"a line without facts", "drwxr-xr-x 2 owner owner 4096 Nov 24 10:00 folder\r\n", "not facts"},
        {"facts without \"; \"", "type=file;size=1;name\r\n", "not facts"},
        {"an empty name", "type=file; \r\n", "without a name"},
        {"a size that isn't one", "type=file;size=-5; a\r\n", "not a number"},
        {"no type", "size=1; a\r\n", "without its type"},
        {"a listing cut short", "type=file;size=1; a\r\ntype=file;size=2; b", "cut short"},
    };
    for (const auto& row : refused) {
        SCOPED_TRACE(row.what);
        server.setHostileListing(row.listing);
        EXPECT_FALSE(client.list("/"));
        EXPECT_THAT(client.lastError(), HasSubstr(row.problem));
        EXPECT_TRUE(isPrintableLine(client.lastError())) << client.lastError();
    }

    // A name a shell would run is only a name; "." and ".." go.
    const fs::path cwd = fs::current_path();
    server.setHostileListing("type=cdir; .\r\ntype=pdir; ..\r\ntype=file;size=3; $(touch x).stowhvn\r\n");
    const auto entries = client.list("/");
    ASSERT_TRUE(entries) << client.lastError();
    ASSERT_EQ(entries->size(), 1u);
    EXPECT_EQ(entries->front().name, "$(touch x).stowhvn");
    EXPECT_EQ(entries->front().size, 3);
    EXPECT_FALSE(fs::exists(cwd / "x"));
    EXPECT_FALSE(fs::exists(server.folder() / "x"));

    // A deletion deletes a link as a file and never goes through it; a tree without end stops.
    fs::create_directory(server.folder() / "d");
    writeFile(server.folder() / "d/link", "");
    server.setHostileListing("type=OS.unix=slink:/; link\r\n");
    EXPECT_TRUE(client.deleteTree("/d")) << client.lastError();
    EXPECT_FALSE(fs::exists(server.folder() / "d"));
    server.setHostileListing("type=dir; deeper\r\n");
    EXPECT_FALSE(client.deleteTree("/"));
    EXPECT_THAT(client.lastError(), HasSubstr("deep"));
}

// A server that doesn't know MLSD is listed with LIST: its ls-like lines (names with blanks,
// an arrow in a file's name, a link, an old file shown with its year) give what MLSD would,
// and a deletion walks them. A DOS listing reads too; a hostile name refuses the listing.
TEST(FtpClientTest, AServerWithoutMlsdIsListedWithList) {
    STOWHAVEN_SKIP_WITHOUT_FTP_SERVER();
    test::FtpServer server({.withoutMlsd = true});
    const fs::path root = server.folder();
    fs::create_directories(root / "sub folder" / "deeper");
    writeFile(root / "sub folder" / "deeper" / "part", "12345");
    writeFile(root / " two  blanks.stowhvn", "123");
    writeFile(root / "not -> a link", "");
    writeFile(root / "old", "1234567");
    fs::last_write_time(root / "old", fs::file_time_type::clock::now() - std::chrono::hours(24 * 400));
    fs::create_symlink("sub folder", root / "link");
    FtpClient client(server.account());
    ASSERT_TRUE(client.connect()) << client.lastError();

    const auto entries = client.list("/");
    ASSERT_TRUE(entries) << client.lastError();
    EXPECT_EQ(entries->size(), 5u);
    const struct {
        const char* name;
        bool isDirectory;
        bool isSymbolicLink;
        std::int64_t size;
    } expected[] = {{"sub folder", true, false, -1},
                    {" two  blanks.stowhvn", false, false, 3},
                    {"not -> a link", false, false, 0},
                    {"old", false, false, 7},
                    {"link", false, true, 10}};
    for (const auto& want : expected) {
        SCOPED_TRACE(want.name);
        const FtpEntry* entry = entryNamed(*entries, want.name);
        ASSERT_TRUE(entry);
        EXPECT_EQ(entry->isDirectory, want.isDirectory);
        EXPECT_EQ(entry->isSymbolicLink, want.isSymbolicLink);
        if (want.size >= 0) EXPECT_EQ(entry->size, want.size);
    }
    ASSERT_TRUE(client.deleteTree("/sub folder")) << client.lastError();
    EXPECT_FALSE(fs::exists(root / "sub folder"));
    ASSERT_TRUE(client.deleteMatching("/", "*.stowhvn")) << client.lastError();
    EXPECT_FALSE(fs::exists(root / " two  blanks.stowhvn"));

    test::FtpServer hostile({.hostileListing = "11-24-26  10:00AM       <DIR>          Stowhaven\r\n"
                                               "11-24-26  10:00AM 1234 iPhone.stowhvn\r\n",
                             .withoutMlsd = true});
    FtpClient dosClient(hostile.account());
    ASSERT_TRUE(dosClient.connect()) << dosClient.lastError();
    const auto dos = dosClient.list("/");
    ASSERT_TRUE(dos) << dosClient.lastError();
    ASSERT_EQ(dos->size(), 2u);
    EXPECT_TRUE(dos->at(0).isDirectory);
    EXPECT_EQ(dos->at(1).size, 1234);
    hostile.setHostileListing("-rw-r--r-- 1 o o 9 Nov 24 10:00 ../../x.stowhvn\r\n");
    EXPECT_FALSE(dosClient.list("/"));
    EXPECT_THAT(dosClient.lastError(), HasSubstr("not one file name"));
}

TEST(FtpClientTest, AListingTheServerNeverFinishesFails) {
    STOWHAVEN_SKIP_WITHOUT_FTP_SERVER();
    test::FtpServer server({.cutListing = true});
    FtpClient client(server.account());
    ASSERT_TRUE(client.connect()) << client.lastError();
    EXPECT_FALSE(client.list("/"));
    EXPECT_FALSE(client.lastError().empty());
}

TEST(FtpClientTest, AnUploadEndsUnsucceededWhenAbortedOrWhenTheServerDies) {
    STOWHAVEN_SKIP_WITHOUT_FTP_SERVER();
    test::FtpServer server({.readLimit = 64 * 1024});
    const test::TestFolder local;
    writeFile(local / "big", randomBytes(8 * 1024 * 1024));
    FtpClient client(server.account());
    ASSERT_TRUE(client.connect()) << client.lastError();

    const auto aborted = client.startUpload(local / "big", "/aborted");
    ASSERT_TRUE(server.waitForLine("STOR /aborted"));
    aborted->abort();
    ASSERT_TRUE(aborted->waitUntilFinished(kLongestTransfer));
    EXPECT_FALSE(aborted->succeeded());

    const auto cut = client.startUpload(local / "big", "/cut");
    ASSERT_TRUE(server.waitForLine("STOR /cut"));
    EXPECT_FALSE(cut->isFinished());
    server.stop();
    ASSERT_TRUE(cut->waitUntilFinished(kLongestTransfer));
    EXPECT_FALSE(cut->succeeded());
    EXPECT_FALSE(cut->error().empty());
    EXPECT_LT(cut->bytesDone(), 8 * 1024 * 1024);
}

}  // namespace
}  // namespace stowhaven

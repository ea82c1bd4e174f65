#include "net/WebDavClient.h"

#include "support/TestFolder.h"
#include "support/TransferFiles.h"
#include "support/WebDavServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
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
using ::testing::StartsWith;

const std::string kShare = test::WebDavServer::kSharePath;

std::string repeated(const std::string& text, std::size_t count) {
    std::string result;
    for (std::size_t done = 0; done < count; ++done) result += text;
    return result;
}

const WebDavEntry* entryNamed(const std::vector<WebDavEntry>& entries, const std::string& name) {
    const auto found =
        std::find_if(entries.begin(), entries.end(), [&](const WebDavEntry& entry) { return entry.name == name; });
    return found == entries.end() ? nullptr : &*found;
}

// A PROPFIND reply as Apache writes it, one response per href.
std::string multistatus(const std::vector<std::string>& hrefs, const std::string& size = "3") {
    std::string reply = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<D:multistatus xmlns:D=\"DAV:\">";
    for (const auto& href : hrefs) {
        reply += "<D:response><D:href>" + href +
                 "</D:href><D:propstat><D:prop><D:resourcetype/>"
                 "<D:getcontentlength>" +
                 size +
                 "</D:getcontentlength></D:prop>"
                 "<D:status>HTTP/1.1 200 OK</D:status></D:propstat></D:response>";
    }
    return reply + "</D:multistatus>";
}

class WebDavClientTest : public ::testing::TestWithParam<bool> {};

TEST_P(WebDavClientTest, KeepsFoldersAndFilesOnTheShareAndTakesThemBack) {
    STOWHAVEN_SKIP_WITHOUT_WEBDAV_SERVER();
    test::WebDavServer server({.https = GetParam()});
    const test::TestFolder local;
    WebDavClient client(server.account());

    // Names a shell or a URL would split or read as syntax.
    const std::string root = kShare + "/Stowhaven";
    const std::string device = root + "/Jo's \"phone\" #1 %2F?&";
    const std::string session = device + "/2026-11-24_10~00~00";
    for (const std::string& folder : {root, device, session})
        ASSERT_TRUE(client.createFolder(folder)) << folder << ": " << client.lastError();
    const std::string archive = randomBytes(3 * 1024 * 1024 + 17);
    writeFile(local / "archive", archive);
    writeFile(local / "note", "note");
    ASSERT_TRUE(transferSucceeds(client.startUpload(local / "archive", session + "/data.tar")));
    ASSERT_TRUE(transferSucceeds(client.startUpload(local / "note", device + "/2026-11-24_10~00~00.stowhvn")));
    EXPECT_EQ(readFile(server.shareFolder() / "Stowhaven/Jo's \"phone\" #1 %2F?&/2026-11-24_10~00~00/data.tar"),
              archive);

    const auto entries = client.list(device + "/");
    ASSERT_TRUE(entries) << client.lastError();
    ASSERT_EQ(entries->size(), 2u);
    ASSERT_TRUE(entryNamed(*entries, "2026-11-24_10~00~00"));
    EXPECT_TRUE(entryNamed(*entries, "2026-11-24_10~00~00")->isDirectory);
    ASSERT_TRUE(entryNamed(*entries, "2026-11-24_10~00~00.stowhvn"));
    EXPECT_FALSE(entryNamed(*entries, "2026-11-24_10~00~00.stowhvn")->isDirectory);
    EXPECT_EQ(entryNamed(*entries, "2026-11-24_10~00~00.stowhvn")->size, 4);
    const auto file = client.entry(session + "/data.tar");
    ASSERT_TRUE(file) << client.lastError();
    EXPECT_EQ(file->name, "data.tar");
    EXPECT_EQ(file->size, static_cast<std::int64_t>(archive.size()));
    EXPECT_TRUE(client.entry(device)->isDirectory);

    const auto download = client.startDownload(session + "/data.tar", local / "back");
    ASSERT_TRUE(download->waitUntilFinished(kLongestTransfer));
    EXPECT_TRUE(download->succeeded()) << download->error();
    EXPECT_EQ(download->bytesDone(), static_cast<std::int64_t>(archive.size()));
    EXPECT_EQ(readFile(local / "back"), archive);
    EXPECT_FALSE(transferSucceeds(client.startDownload(session + "/missing", local / "missing")));
    EXPECT_FALSE(fs::exists(local / "missing"));

    ASSERT_TRUE(client.move(session, device + "/renamed")) << client.lastError();
    EXPECT_TRUE(fs::exists(server.shareFolder() / "Stowhaven/Jo's \"phone\" #1 %2F?&/renamed/data.tar"));
    ASSERT_TRUE(client.remove(device)) << client.lastError();
    EXPECT_TRUE(fs::is_empty(server.shareFolder() / "Stowhaven"));
    EXPECT_FALSE(client.list(device));
    EXPECT_EQ(client.lastError(), "Request failed: not found (404)");
}

INSTANTIATE_TEST_SUITE_P(HttpAndHttps, WebDavClientTest, ::testing::Bool(),
                         [](const ::testing::TestParamInfo<bool>& param) { return param.param ? "Https" : "Http"; });

TEST(WebDavClientFailureTest, RefusalsTellWhatWentWrongButNeverThePassword) {
    STOWHAVEN_SKIP_WITHOUT_WEBDAV_SERVER();
    test::WebDavServer server;
    fs::create_directory(server.shareFolder() / "kept");

    auto wrong = server.account();
    wrong.password = "not " + wrong.password;
    WebDavClient refused(wrong);
    EXPECT_FALSE(refused.list(kShare));
    EXPECT_THAT(refused.lastError(), StartsWith("You have entered bad credentials. "));
    EXPECT_THAT(refused.lastError(), Not(HasSubstr(wrong.password)));

    // A path that climbs out of the share, or a credential that would split a header, never goes.
    WebDavClient client(server.account());
    EXPECT_FALSE(client.remove(kShare + "/../../kept"));
    EXPECT_FALSE(client.remove(kShare + "/kept/.."));
    EXPECT_FALSE(client.move(kShare + "/kept", kShare + "/kept/inside"));
    EXPECT_TRUE(fs::exists(server.shareFolder() / "kept"));
    const auto upload = client.startUpload(server.shareFolder() / "absent", kShare + "/absent");
    ASSERT_TRUE(upload->waitUntilFinished(kLongestTransfer));
    EXPECT_EQ(upload->error(), "You are trying upload a file that does not exist");
    auto splitting = server.account();
    splitting.login += ":x\r\nDepth: infinity";
    EXPECT_FALSE(WebDavClient(splitting).remove(kShare + "/kept"));
    EXPECT_TRUE(fs::exists(server.shareFolder() / "kept"));

    auto nobody = server.account();
    server.stop();
    WebDavClient unanswered(nobody);
    EXPECT_FALSE(unanswered.list(kShare));
    EXPECT_THAT(unanswered.lastError(), HasSubstr("onnect"));
}

TEST(WebDavClientFailureTest, HostileRepliesAreRefusedWholeAndNamesStayData) {
    STOWHAVEN_SKIP_WITHOUT_WEBDAV_SERVER();
    test::WebDavServer server({.hostileReply = ""});
    WebDavClient client(server.account());
    const std::string folder = kShare + "/Stowhaven";

    const struct {
        const char* what;
        std::string reply;
        const char* problem;
    } refused[] = {
        {"not XML", "<html><body>Welcome</body>", "not XML"},
        {"no multistatus", "<?xml version=\"1.0\"?><D:error xmlns:D=\"DAV:\"/>", "not a multistatus"},
        {"a multistatus of another namespace", "<D:multistatus xmlns:D=\"urn:other\"/>", "not a multistatus"},
        {"a huge reply", multistatus(std::vector<std::string>(200000, folder + "/" + std::string(80, 'a'))),
         "larger than 16 MiB"},
        {"elements nested without end", "<D:multistatus xmlns:D=\"DAV:\">" + repeated("<D:response>", 100000),
         "too deep"},
        {"a parent folder as a name", multistatus({folder + "/.."}), "not one clean name"},
        {"a slash in a name", multistatus({folder + "/a%2F..%2F..%2Fetc%2Fpasswd"}), "not one clean name"},
        {"a backslash in a name", multistatus({folder + "/..%5Csecret"}), "not one clean name"},
        {"a NUL in a name", multistatus({folder + "/a%00b"}), "not one clean name"},
        {"an escape sequence in a name", multistatus({folder + "/%1B]0;owned%07"}), "not one clean name"},
        {"an entry outside the folder", multistatus({folder, kShare + "/elsewhere"}), "not one clean name"},
        {"an entry below another", multistatus({folder + "/sub/file"}), "not one clean name"},
        {"a climbing href", multistatus({folder + "/../../etc/passwd"}), "not one clean name"},
        {"a broken escape", multistatus({folder + "/a%zz"}), "broken escape"},
        {"a size that isn't one", multistatus({folder + "/a"}, "-5"), "no count of bytes"},
    };
    for (const auto& row : refused) {
        SCOPED_TRACE(row.what);
        server.setHostileReply(row.reply);
        EXPECT_FALSE(client.list(folder));
        EXPECT_THAT(client.lastError(), HasSubstr(row.problem));
    }

    // A name a shell would run is only a name, whatever the prefixes; the folder itself goes,
    // written as a whole URL with its final "/".
    const fs::path cwd = fs::current_path();
    server.setHostileReply("<multistatus xmlns=\"DAV:\" xmlns:lp1=\"DAV:\"><response><href>" +
                           server.account().baseUrl + folder +
                           "/</href><propstat><prop><lp1:resourcetype><collection/></lp1:resourcetype></prop>"
                           "<status>HTTP/1.1 200 OK</status></propstat></response>"
                           "<response><href>" +
                           folder +
                           "/%24(touch%20x).stowhvn</href><propstat><prop>"
                           "<lp1:getcontentlength>12</lp1:getcontentlength></prop></propstat></response>"
                           "</multistatus>");
    const auto entries = client.list(folder);
    ASSERT_TRUE(entries) << client.lastError();
    ASSERT_EQ(entries->size(), 1u);
    EXPECT_EQ(entries->front().name, "$(touch x).stowhvn");
    EXPECT_EQ(entries->front().size, 12);
    EXPECT_FALSE(entries->front().isDirectory);
    EXPECT_FALSE(fs::exists(cwd / "x"));
    const auto itself = client.entry(folder);
    ASSERT_TRUE(itself) << client.lastError();
    EXPECT_TRUE(itself->isDirectory);
}

TEST(WebDavClientFailureTest, ARedirectOrAReplyCutShortFails) {
    STOWHAVEN_SKIP_WITHOUT_WEBDAV_SERVER();
    const test::TestFolder local;
    test::WebDavServer redirecting({.redirectTo = "http://192.0.2.1/steal"});
    WebDavClient redirected(redirecting.account());
    EXPECT_FALSE(redirected.list(kShare));
    EXPECT_EQ(redirected.lastError(), "Request failed: redirected (302)");
    EXPECT_FALSE(transferSucceeds(redirected.startDownload(kShare + "/file", local / "redirected")));
    EXPECT_FALSE(fs::exists(local / "redirected"));

    test::WebDavServer cutting({.hostileReply = multistatus({kShare + "/a", kShare + "/b"}), .cutShort = true});
    WebDavClient cut(cutting.account());
    EXPECT_FALSE(cut.list(kShare));
    EXPECT_FALSE(cut.lastError().empty());
    EXPECT_FALSE(transferSucceeds(cut.startDownload(kShare + "/file", local / "cut")));
    EXPECT_FALSE(fs::exists(local / "cut"));
}

TEST(WebDavClientFailureTest, AnAbortedUploadEndsUnsucceeded) {
    STOWHAVEN_SKIP_WITHOUT_WEBDAV_SERVER();
    test::WebDavServer server({.readLimit = 64 * 1024});
    const test::TestFolder local;
    writeFile(local / "big", randomBytes(32 * 1024 * 1024));
    WebDavClient client(server.account());
    const auto upload = client.startUpload(local / "big", kShare + "/big");
    ASSERT_TRUE(server.waitForLine("PUT " + kShare + "/big"));
    EXPECT_FALSE(upload->isFinished());
    upload->abort();
    ASSERT_TRUE(upload->waitUntilFinished(kLongestTransfer));
    EXPECT_FALSE(upload->succeeded());
    EXPECT_LT(upload->bytesDone(), 32 * 1024 * 1024);
}

}  // namespace
}  // namespace stowhaven

// The package list shared by the program on a sandbox device: printed as a PDF that the real
// pdftotext and pdfinfo read back, mailed to the outbox, copied to the terminal's clipboard
// from the main menu, and written as text. Some names are built as an attacker would build
// them: control sequences for the terminal, bytes that are no UTF-8.

#include "archive/Base64.h"
#include "cli/TextWrap.h"
#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "support/SandboxDevice.h"
#include "support/TerminalProgram.h"
#include "support/TestFolder.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace stowhaven {
namespace {

constexpr int kTweakCount = 70;  // more names than one printed page holds
const std::string kTerminalAttack = "Evil\x1b]0;owned\a\x1b[2J";

std::string tweakName(int number) { return fmt::format("Tweak number {:02}", number); }

// The tweaks whose names TEXT lacks.
std::string tweaksMissingFrom(const std::string& text) {
    std::string missing;
    for (int number = 1; number <= kTweakCount; ++number) {
        if (text.find(tweakName(number)) == std::string::npos) missing += tweakName(number) + "\n";
    }
    return missing;
}

std::string contentsOf(const std::string& path) { return FileManager::contentsOfFile(path).value_or(""); }

class ShareProgramTest : public ::testing::Test {
protected:
    ShareProgramTest() {
        std::ofstream status(device_.path("/var/lib/dpkg/status"), std::ios::app);
        const auto add = [&](const std::string& package, const std::string& name) {
            status << fmt::format(
                "\nPackage: {}\nStatus: install ok installed\nArchitecture: iphoneos-arm\n"
                "Version: 1.0\nMaintainer: M <m@example.org>\nName: {}\nDescription: d\n",
                package, name);
        };
        for (int number = 1; number <= kTweakCount; ++number) add(fmt::format("tweak{:02}", number), tweakName(number));
        add("evil", kTerminalAttack);
        add("cafe", "Caf\xe9 \xff");
        status.close();
        EXPECT_TRUE(device_.turnOn({"AutoScanPkgEnabled"}));
    }

    const test::SandboxDevice device_{"minimal"};
    const test::TestFolder folder_;
};

TEST_F(ShareProgramTest, ThePrintoutLaysTheWholeListOutOnNumberedLetterPages) {
    const std::string pdf = ShellQuote::path(folder_ / "list.pdf");
    const auto outcome = device_.run("share pdf " + pdf);
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const std::string text = test::runCommand("pdftotext " + pdf + " -");
    EXPECT_EQ(tweaksMissingFrom(text), "");
    EXPECT_NE(text.find("Caf\xef\xbf\xbd"), std::string::npos) << "a byte that is no UTF-8 is shown as U+FFFD";

    const std::string info = test::runCommand("pdfinfo " + pdf);
    EXPECT_NE(info.find(" 612 x 792 pts"), std::string::npos) << info;
    const auto pagesField = info.find("Pages:");
    ASSERT_NE(pagesField, std::string::npos) << info;
    const int pages = std::stoi(info.substr(info.find_first_not_of(' ', pagesField + 6)));
    EXPECT_GE(pages, 2);
    for (int page = 1; page <= pages; ++page) {
        const std::string number = std::to_string(page);
        const std::string onPage = test::runCommand(fmt::format("pdftotext -f {0} -l {0} {1} -", number, pdf));
        EXPECT_NE(onPage.find("Page " + number), std::string::npos) << onPage;
    }

    // Nowhere to write: no file, and the print's failure said.
    const auto refused = device_.run("share pdf " + ShellQuote::path(folder_ / "missing/list.pdf"));
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.errors.find("Print failed"), std::string::npos) << refused.errors;
}

// The MIME body of a mail, decoded.
std::string bodyOf(const std::string& mail) {
    const std::string bodyStart = "Content-Transfer-Encoding: base64\r\n\r\n";
    const auto start = mail.find(bodyStart);
    if (start == std::string::npos) return "";
    const auto from = start + bodyStart.size();
    return Base64::decode(mail.substr(from, mail.find("--stowhaven-", from) - from)).value_or("");
}

// Without a recipient the mail waits in the outbox; with one, and a transport configured, it
// goes to the transport, the list as HTML; an address with a header slipped in goes nowhere.
TEST_F(ShareProgramTest, TheMailOfTheListWaitsInTheOutboxOrGoesToTheTransport) {
    const auto outcome = device_.run("share mail");
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.errors.find("Email saved as a draft"), std::string::npos) << outcome.errors;
    std::vector<std::filesystem::path> mails;
    for (const auto& entry : std::filesystem::directory_iterator(device_.path("/var/mobile/Library/Stowhaven/Mail")))
        mails.push_back(entry.path());
    ASSERT_EQ(mails.size(), 1U);
    EXPECT_EQ(mails[0].extension(), ".eml");
    const std::string body = bodyOf(contentsOf(mails[0]));
    EXPECT_EQ(tweaksMissingFrom(body), "");
    EXPECT_NE(body.find(kTerminalAttack), std::string::npos) << "the mail carries the names as they are";

    // A transport that keeps what it is handed, and how.
    const std::string transport = folder_ / "sendmail";
    const std::string sent = folder_ / "sent.eml";
    ASSERT_TRUE(FileManager::writeFile(transport, "#!/bin/sh\necho \"$@\" > \"$0.arguments\"\ncat > \"$(dirname \"$0\")/sent.eml\"\n"));
    std::filesystem::permissions(transport, std::filesystem::perms::owner_all);
    ASSERT_TRUE(FileManager::writeFile(sent, ""));
    const std::string configured = "STOWHAVEN_SENDMAIL=" + ShellQuote::path(transport) + " ";
    EXPECT_EQ(device_.run("share mail --to 'friend@example.net\nBcc: spy@example.net'", configured).status, 2);
    EXPECT_EQ(contentsOf(sent), "") << "nothing sent for a hostile address";
    const auto mailed = device_.run("share mail --to friend@example.net", configured);
    ASSERT_EQ(mailed.status, 0) << mailed.errors;
    EXPECT_NE(mailed.errors.find("Email sent"), std::string::npos) << mailed.errors;
    EXPECT_EQ(contentsOf(transport + ".arguments"), "-t -i\n");
    const std::string mail = contentsOf(sent);
    EXPECT_NE(mail.find("To: friend@example.net\r\n"), std::string::npos) << mail;
    EXPECT_NE(mail.find("Content-Type: text/html; charset=UTF-8"), std::string::npos) << mail;
    EXPECT_EQ(tweaksMissingFrom(bodyOf(mail)), "");
}

// Files get the names as they are; the terminal never gets a control character of theirs.
TEST_F(ShareProgramTest, TheListAsTextKeepsItsNamesWholeInFilesButHarmlessOnTheTerminal) {
    const std::string copied = folder_ / "copied.txt";
    const auto clipboard = device_.run("share clipboard --output " + ShellQuote::path(copied));
    ASSERT_EQ(clipboard.status, 0) << clipboard.errors;
    EXPECT_NE(clipboard.output.find("Not copied: the icon"), std::string::npos) << clipboard.output;
    EXPECT_EQ(tweaksMissingFrom(contentsOf(copied)), "");
    EXPECT_NE(contentsOf(copied).find(kTerminalAttack), std::string::npos);

    const auto shown = device_.run("share text");
    ASSERT_EQ(shown.status, 0) << shown.errors;
    EXPECT_EQ(tweaksMissingFrom(shown.output), "");
    EXPECT_NE(shown.output.find("Evil?]0;owned??[2J"), std::string::npos) << shown.output;

    EXPECT_EQ(device_.run("share clipboard").status, 1) << "no terminal to take the sequence, and no file";
}

// The main menu's Share on a terminal of 80 columns: the list reaches the terminal's
// clipboard in one OSC 52 sequence, the only escape on the screen.
TEST_F(ShareProgramTest, TheShareMenuCopiesTheListToTheTerminalsClipboard) {
    test::TerminalProgram terminal("--root " + ShellQuote::path(device_.root()));
    ASSERT_TRUE(terminal.waitFor("5) Share")) << terminal.screen();
    terminal.type("5\n");
    ASSERT_TRUE(terminal.waitFor("5) Copy the package list to the clipboard")) << terminal.screen();
    terminal.type("5\n");
    ASSERT_TRUE(terminal.waitFor("0) Quit", 2)) << terminal.screen();
    terminal.type("0\n");
    ASSERT_EQ(terminal.finish(), 0) << terminal.screen();

    const std::string& screen = terminal.screen();
    EXPECT_NE(screen.find("The package list is on the terminal's clipboard."), std::string::npos) << screen;
    const std::string opening = "\x1b]52;c;";
    const auto start = screen.find(opening);
    const auto end = screen.find('\a', start);
    ASSERT_NE(end, std::string::npos) << screen;
    EXPECT_EQ(std::count(screen.begin(), screen.end(), '\x1b'), 1) << screen;
    const auto copied = Base64::decode(screen.substr(start + opening.size(), end - start - opening.size()));
    ASSERT_TRUE(copied);
    EXPECT_EQ(tweaksMissingFrom(*copied), "");
    EXPECT_NE(copied->find(kTerminalAttack), std::string::npos);

    std::istringstream lines(screen.substr(0, start) + screen.substr(end + 1));
    for (std::string line; std::getline(lines, line);) EXPECT_LE(columnCount(line), 81U) << "with its \\r: " << line;
}

}  // namespace
}  // namespace stowhaven

#include "support/SandboxDevice.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/wait.h>

#include <algorithm>
#include <sstream>

namespace stowhaven {
namespace {

struct Outcome {
    int status;
    std::string output;
};

// Runs the program with its output and error in one text.
Outcome runProgram(const std::string& arguments, const std::string& prefix = "") {
    const std::string command = prefix + STOWHAVEN_PROGRAM + " " + arguments + " 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    std::string output;
    char buffer[4096];
    while (const std::size_t count = fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, count);
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

std::vector<std::string> sortedLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    std::sort(lines.begin(), lines.end());
    return lines;
}

class ProgramTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { device_ = new test::SandboxDevice("demo"); }
    static void TearDownTestSuite() { delete device_; }
    static test::SandboxDevice* device_;
};

test::SandboxDevice* ProgramTest::device_ = nullptr;

TEST_F(ProgramTest, ListsExactlyThePackagesThatDpkgQueryListsForTheRoot) {
    const Outcome listing = runProgram("--root " + device_->root() + " packages --json");
    ASSERT_EQ(listing.status, 0) << listing.output;

    std::vector<std::string> listed;
    for (const auto& package : nlohmann::json::parse(listing.output)) listed.push_back(package["package"]);
    std::sort(listed.begin(), listed.end());

    const std::string expected = test::runCommand("DPKG_ADMINDIR=" + device_->root() +
                                                  "/var/lib/dpkg dpkg-query -W -f='${Package}\\n'");
    EXPECT_EQ(listed, sortedLines(expected));
    EXPECT_NE(std::find(listed.begin(), listed.end(), "mobilesubstrate"), listed.end());
}

TEST_F(ProgramTest, TheRootMayComeFromTheEnvironment) {
    const Outcome listing = runProgram("packages", "STOWHAVEN_ROOT=" + device_->root() + " ");
    ASSERT_EQ(listing.status, 0) << listing.output;
    EXPECT_NE(listing.output.find("mobilesubstrate"), std::string::npos);
    EXPECT_EQ(listing.output.find("coreutils"), std::string::npos) << "the host's own packages stay out";
}

TEST_F(ProgramTest, RefusesToRunWithoutRoot) {
    const Outcome outcome = runProgram("--root " + device_->root() + " packages",
                                       "setpriv --reuid=65534 --regid=65534 --clear-groups ");
    EXPECT_EQ(outcome.status, 255);
    EXPECT_NE(outcome.output.find("must run as root"), std::string::npos) << outcome.output;
}

TEST_F(ProgramTest, RefusesARootThatIsNoFolderOrCouldBreakACommand) {
    EXPECT_EQ(runProgram("--root /nonexistent/device packages").status, 2);
    EXPECT_EQ(runProgram("--root '" + device_->root() + "/a b' packages").status, 2);
}

TEST_F(ProgramTest, AnswersVersionAndHelpWithoutADevice) {
    const Outcome version = runProgram("--version");
    EXPECT_EQ(version.status, 0);
    EXPECT_TRUE(version.output.starts_with("stowhaven ")) << version.output;
    const Outcome help = runProgram("--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.output.find("packages"), std::string::npos);
}

}  // namespace
}  // namespace stowhaven

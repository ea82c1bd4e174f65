#include "platform/FileManager.h"
#include "platform/HostShell.h"
#include "platform/ShellQuote.h"
#include "platform/TemporaryDirectory.h"
#include "support/DeviceRootScope.h"
#include "support/TestFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

std::string contentsOf(const std::string& path) { return FileManager::contentsOfFile(path).value_or(""); }

// Sends the process's own standard output and error into a file while it lives.
class TerminalCapture {
public:
    explicit TerminalCapture(const std::string& file) {
        std::fflush(stdout);
        std::fflush(stderr);
        const int capture = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        savedOut_ = dup(STDOUT_FILENO);
        savedError_ = dup(STDERR_FILENO);
        dup2(capture, STDOUT_FILENO);
        dup2(capture, STDERR_FILENO);
        close(capture);
    }
    ~TerminalCapture() {
        std::fflush(stdout);
        std::fflush(stderr);
        dup2(savedOut_, STDOUT_FILENO);
        dup2(savedError_, STDERR_FILENO);
        close(savedOut_);
        close(savedError_);
    }

private:
    int savedOut_;
    int savedError_;
};

class ShellTest : public ::testing::Test {
protected:
    test::TestFolder folder_;
    test::DeviceRootScope root_{folder_.path().string()};
    HostShell shell_;
};

// The program keeps its own files private; the device's files keep their usual modes.
TEST_F(ShellTest, TheDevicesToolsWriteWithTheDevicesUsualModesWhateverTheProgramsUmask) {
    const mode_t saved = umask(077);
    shell_.systemExecute("echo status > " + ShellQuote::path(folder_ / "status") + "; mkdir " +
                         ShellQuote::path(folder_ / "lists"));
    umask(saved);
    EXPECT_EQ(FileManager::attributesOfItem(folder_ / "status")->permissions & 0777, 0644u);
    EXPECT_EQ(FileManager::attributesOfItem(folder_ / "lists")->permissions & 0777, 0755u);
}

// What a session unpacks lies in the temporary folder, and the user's key is the program's
// alone.
TEST_F(ShellTest, ToolsSeeNeitherTheUsersKeyNorTheTemporaryFolderOnTheirPath) {
    ASSERT_EQ(setenv("STOWHAVEN_KEY", "secret", 1), 0);
    shell_.systemExecute("env > " + ShellQuote::path(folder_ / "env.txt"));
    unsetenv("STOWHAVEN_KEY");
    const std::string environment = "\n" + contentsOf(folder_ / "env.txt");
    EXPECT_EQ(environment.find("secret"), std::string::npos) << environment;
    const std::size_t path = environment.find("\nPATH=");
    ASSERT_NE(path, std::string::npos) << environment;
    const std::string searchPath = environment.substr(path + 6, environment.find('\n', path + 1) - path - 6);
    EXPECT_TRUE(searchPath.starts_with((folder_ / "var/lib/stowhaven/tools") + ":")) << "the device's tools first";
    EXPECT_EQ(searchPath.find(TemporaryDirectory::path()), std::string::npos) << searchPath;
}

TEST_F(ShellTest, NothingReachesTheTerminalWhateverTheCommandDoes) {
    const std::string captured = folder_ / "terminal";
    {
        TerminalCapture capture(captured);
        shell_.systemExecute("echo to-stdout; echo to-stderr >&2");
        shell_.systemExecute("exit 3");
        shell_.systemExecute("no-such-tool-anywhere --flag");
        shell_.systemExecute("(echo unbalanced");
    }
    EXPECT_EQ(contentsOf(captured), "");
}

TEST_F(ShellTest, ALineWhoseFolderChangeFailsStaysInTheProgramsOwnFolder) {
    const std::string outside = folder_ / "victim-1";
    std::ofstream(outside) << "keep";
    shell_.systemExecute("cd " + ShellQuote::path(folder_ / "missing") + "; touch here-1");
    EXPECT_TRUE(fs::exists(outside));
    EXPECT_TRUE(fs::exists(TemporaryDirectory::path() + "/here-1"));
}

}  // namespace
}  // namespace stowhaven

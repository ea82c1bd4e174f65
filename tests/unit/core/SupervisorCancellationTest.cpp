#include "core/Supervisor.h"
#include "platform/Date.h"
#include "platform/ShellQuote.h"
#include "support/CapturedLog.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <deque>
#include <fstream>

namespace stowhaven {
namespace {

// Stands in for the process listings: a command that sends its output to the listing file
// gets the next listing written there.
class ListingShell final : public Shell {
public:
    ListingShell(std::deque<std::string> listings, std::string file)
        : listings_(std::move(listings)), file_(std::move(file)) {}

    void systemExecute(const std::string& command) override {
        commands.push_back(command);
        if (!command.ends_with(" > " + ShellQuote::path(file_)) || listings_.empty()) return;
        std::ofstream(file_) << listings_.front();
        listings_.pop_front();
    }

    std::vector<std::string> commands;

private:
    std::deque<std::string> listings_;
    std::string file_;
};

class SupervisorCancellationTest : public ::testing::Test {
protected:
    SupervisorCancellationTest() {
        scope_.services.clock.time = Date(436000000.5).timePoint();
        listing_ = supervisor_.getTemporaryFileName(true);
    }

    // The commands that cancelChildProcesses runs with these listings.
    std::vector<std::string> commandsFor(std::deque<std::string> listings) {
        auto shell = std::make_unique<ListingShell>(std::move(listings), listing_);
        ListingShell& recorded = *shell;
        Platform::current().setShell(std::move(shell));
        supervisor_.cancelChildProcesses();
        return recorded.commands;
    }

    std::string listCommand(const std::string& pattern) const {
        return "sudo ps -ax | \\grep " + pattern + " | awk '{print $2}' > " + ShellQuote::path(listing_);
    }

    test::SupervisorScope scope_;
    Supervisor& supervisor_ = scope_.supervisor();
    std::string listing_;
};

// The listing is of the whole machine, and the scope's device root is a copy of a device,
// not "/": the kills are logged and never reach the shell. The first listed process is the
// listing's own grep.
TEST_F(SupervisorCancellationTest, EveryListedProcessButTheFirstIsKilledAndNothingButANumberReachesACommand) {
    test::CapturedLog log;
    EXPECT_EQ(commandsFor({}), std::vector<std::string>{listCommand("Stowhaven_")});
    EXPECT_EQ(commandsFor({"111; reboot\n"}), std::vector<std::string>{listCommand("Stowhaven_")});
    EXPECT_EQ(commandsFor({"111\n", "111\n222 && reboot\n333\n"}),
              (std::vector<std::string>{listCommand("Stowhaven_"), listCommand("111")}));
    EXPECT_TRUE(log.contains("as it acts on the running system: kill -9 333"));
    EXPECT_FALSE(log.contains("kill -9 111"));
    EXPECT_FALSE(log.contains("kill -9 222"));
}

}  // namespace
}  // namespace stowhaven

// On a copy of a device the program changes the copy and nothing of the machine it runs on.

#include "platform/FileManager.h"
#include "platform/Shell.h"
#include "platform/ShellQuote.h"
#include "support/SandboxDevice.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

TEST(RunningSystemProgramTest, TheNetworkInterfaceOfTheMachineIsLeftAloneOnADeviceRoot) {
    const test::SandboxDevice device("minimal");
    const test::TestFolder folder;
    // An ifconfig of the test's own, first on the path, that writes down what it was given.
    const std::string record = folder / "ifconfig-ran";
    const std::string tool = folder / "bin/ifconfig";
    test::runCommand("mkdir " + ShellQuote::path(folder / "bin") + " && printf '#!/bin/sh\\necho \"$@\" >> %s\\n' " +
                     ShellQuote::path(ShellQuote::path(record)) + " > " + ShellQuote::path(tool) + " && chmod 755 " +
                     ShellQuote::path(tool));
    const std::string path = "PATH=" + ShellQuote::path((folder / "bin") + ":/usr/bin:/bin") + " ";
    // The program's own command line would find it there.
    test::runCommand(path + "sh -c '" + Shell::wrap("ifconfig probe") + "'");
    ASSERT_EQ(FileManager::contentsOfFile(record), "probe\n");
    ASSERT_TRUE(FileManager::removeItem(record));

    // At start and again as the settings are read.
    const auto outcome = device.run("--verbose status", path);
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_FALSE(FileManager::fileExists(record)) << *FileManager::contentsOfFile(record);
    EXPECT_NE(outcome.errors.find("Not run on the device root <" + device.root() +
                                  ">, as it acts on the running system: ifconfig en0 mtu 1400"),
              std::string::npos)
        << outcome.errors;
}

}  // namespace
}  // namespace stowhaven

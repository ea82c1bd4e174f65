#pragma once

#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "support/SandboxDevice.h"

#include <gtest/gtest.h>

#include <string>

namespace stowhaven::test {

// A fresh device set to restore everything a backup of the "demo" device holds.
inline void readyToRestoreEverything(const SandboxDevice& fresh) {
    EXPECT_TRUE(fresh.turnOnScans() && fresh.turnOn({"AutoScanAppStoreAppsEnabled"}));
    EXPECT_EQ(fresh.run("settings PkgFWCompatibilityCheckEnabled false").status, 0);
}

// After a restore of a backup of ORIGINAL onto FRESH: the tweaks are installed and the notes
// and messages are as they were.
inline void expectDemoRestored(const SandboxDevice& original, const SandboxDevice& fresh) {
    const std::string packages =
        runCommand("dpkg-query --admindir=" + ShellQuote::path(fresh.path("/var/lib/dpkg")) + " -W -f='${Package}\\n'");
    for (const char* package : {"com.fuyuchi.flex2", "net.tinkerlane.quietbadges"}) {
        EXPECT_NE(packages.find(std::string(package) + "\n"), std::string::npos) << package;
    }
    for (const char* file : {"/var/mobile/Library/Notes/notes.sqlite", "/var/mobile/Library/SMS/sms.db"}) {
        EXPECT_TRUE(FileManager::contentsOfFile(fresh.path(file)) == FileManager::contentsOfFile(original.path(file)))
            << file;
    }
}

}  // namespace stowhaven::test

// A session's stored lines of three packages and the install log apt-get leaves for each,
// as the restore keeps them: one installed (a foreign architecture, as on the device), one
// already there, one that failed.

#include "seeds/Seeds.h"

namespace stowhaven::fuzz {

namespace {

constexpr std::string_view kSessionLines =
    "Lighthouse\tcom.example.lighthouse\t1.2-3\tTweak Author <author@example.net>\tTweaks (SpringBoard)\t"
    "mobilesubstrate,preferenceloader\n"
    "Cydia Substrate\tmobilesubstrate\t0.9.5101\tExample Maker <maker@example.org>\tDevelopment\t(null)\n"
    "Gone\tcom.example.gone\t2.0\tTheme Author <theme@example.net>\tThemes\t(null)\n";

constexpr std::string_view kInstalled =
    "Reading package lists...\nBuilding dependency tree...\nReading state information...\n"
    "The following NEW packages will be installed:\n  com.example.lighthouse:iphoneos-arm\n"
    "0 upgraded, 1 newly installed, 0 to remove and 0 not upgraded.\nNeed to get 0 B/2048 B of archives.\n"
    "Selecting previously unselected package com.example.lighthouse:iphoneos-arm.\n"
    "(Reading database ... 1200 files and directories currently installed.)\n"
    "Preparing to unpack .../com.example.lighthouse_1.2-3_iphoneos-arm.deb ...\n"
    "Unpacking com.example.lighthouse:iphoneos-arm (1.2-3) ...\n"
    "Setting up com.example.lighthouse:iphoneos-arm (1.2-3) ...\n";

constexpr std::string_view kAlreadyThere =
    "Reading package lists...\nBuilding dependency tree...\nReading state information...\n"
    "mobilesubstrate is already the newest version (0.9.5101).\n"
    "0 upgraded, 0 newly installed, 0 to remove and 0 not upgraded.\n";

constexpr std::string_view kFailed = "Reading package lists...\nBuilding dependency tree...\n"
                                     "Reading state information...\nE: Unable to locate package com.example.gone\n";

}  // namespace

void writeRestoreLogSeeds(const std::filesystem::path& folder) {
    const SeedCorpus corpus(folder, "restore_log");
    corpus.add("restore.txt", std::string(kSessionLines) + '\0' + std::string(kInstalled) + '\0' +
                                  std::string(kAlreadyThere) + '\0' + std::string(kFailed));
    corpus.add("never-installed.txt", std::string(kSessionLines));
}

}  // namespace stowhaven::fuzz

// Packages that no repository serves any more, rebuilt from the device by a backup that
// captures .deb files, and brought back by a restore from those files onto a fresh device.
// The packages are made here with the real dpkg-deb and installed with the real dpkg, with
// their owners, modes, links, conffiles and maintainer scripts.

#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "support/SandboxDevice.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <sstream>
#include <string>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStorageFolder = "/var/mobile/Library/Preferences/Stowhaven";

std::string quoted(const std::string& path) { return ShellQuote::path(path); }

std::string dpkgOn(const test::SandboxDevice& device) {
    return "dpkg --root=" + quoted(device.root()) + " --admindir=" + quoted(device.path("/var/lib/dpkg"));
}

// The device gets a shell of its own, as every jailbroken device has, for the maintainer
// scripts that dpkg runs inside the device root.
void giveShell(const test::SandboxDevice& device) {
    std::istringstream libraries(test::runCommand("ldd /bin/dash"));
    for (std::string word; libraries >> word;) {
        if (word.starts_with("/")) {
            fs::create_directories(device.path(fs::path(word).parent_path().string()));
            fs::copy_file(word, device.path(word), fs::copy_options::overwrite_existing);
        }
    }
    fs::create_directories(device.path("/bin"));
    fs::copy_file("/bin/dash", device.path("/bin/sh"), fs::copy_options::overwrite_existing);
}

// The folder of a package for dpkg-deb: its files ({device path: content}; a content "-> X"
// is a link to X) and its DEBIAN files.
fs::path packageTree(const test::TestFolder& work, const std::string& identifier,
                     const std::map<std::string, std::string>& files,
                     const std::map<std::string, std::string>& control) {
    const fs::path tree = work.path() / identifier;
    fs::create_directories(tree / "DEBIAN");
    for (const auto& [path, content] : files) {
        const fs::path target = tree / path.substr(1);
        fs::create_directories(target.parent_path());
        if (content.starts_with("-> ")) {
            fs::create_symlink(content.substr(3), target);
        } else {
            EXPECT_TRUE(FileManager::writeFile(target.string(), content, nullptr, 0644));
        }
    }
    for (const auto& [name, content] : control) {
        const bool script = name.ends_with("inst") || name.ends_with("rm");
        EXPECT_TRUE(FileManager::writeFile((tree / "DEBIAN" / name).string(), content, nullptr, script ? 0755 : 0644));
    }
    return tree;
}

// The package of TREE made by dpkg-deb and installed on the device by dpkg; its .deb file.
std::string install(const test::SandboxDevice& device, const fs::path& tree) {
    const std::string deb = tree.string() + ".deb";
    test::runCommand("dpkg-deb -b " + quoted(tree.string()) + " " + quoted(deb) + " >/dev/null");
    test::runCommand(dpkgOn(device) + " -i " + quoted(deb) + " >/dev/null 2>&1");
    return deb;
}

std::string controlFor(const std::string& identifier, const std::string& version) {
    return "Package: " + identifier + "\nVersion: " + version +
           "\nArchitecture: iphoneos-arm\nMaintainer: Ada <ada@example.invalid>\nDepends: mobilesubstrate\n"
           "Section: Tweaks\nName: " +
           identifier + "\nDescription: a tweak whose repository closed\n Its longer description.\n";
}

// The session's DEBS folder in the device's local storage.
fs::path storedDebs(const test::SandboxDevice& device) {
    for (const auto& entry : fs::recursive_directory_iterator(device.path(kStorageFolder))) {
        if (entry.is_directory() && entry.path().filename() == "DEBS") return entry.path();
    }
    return {};
}

// dpkg-deb's listing of a package's files without the times, which a repack doesn't keep.
std::string contentsWithoutTimes(const std::string& deb) {
    std::istringstream listing(test::runCommand("dpkg-deb -c " + quoted(deb)));
    std::string contents;
    for (std::string line; std::getline(listing, line);) {
        std::istringstream words(line);
        std::string mode, owner, size, day, time, rest;
        words >> mode >> owner >> size >> day >> time;
        std::getline(words, rest);
        contents += mode + " " + owner + " " + size + rest + "\n";
    }
    return contents;
}

std::string filesOf(const test::SandboxDevice& device, const std::string& identifier) {
    return test::runCommand("dpkg-query --admindir=" + quoted(device.path("/var/lib/dpkg")) + " -L " + identifier);
}

class PackageRepackProgramTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "a repack keeps the files' owners, which takes root";
        giveShell(original_);
        ASSERT_TRUE(original_.turnOn({"AutoScanPkgEnabled", "BackupDebsEnabled"}));
    }

    std::string backUp() {
        const auto backup = original_.run("backup --yes");
        EXPECT_EQ(backup.status, 0) << backup.output << backup.errors;
        return backup.output;
    }

    test::TestFolder work_;
    test::SandboxDevice original_{"minimal"};
};

TEST_F(PackageRepackProgramTest, APackageNoRepositoryServesComesBackFromTheDeviceWithItsFilesAndScripts) {
    // Owners, a set-id mode, a link, a conffile below the device's /etc link, maintainer
    // scripts, and an epoch in the version, which the file's name must carry as a restore
    // looks for it.
    const fs::path orphanTree =
        packageTree(work_, "net.example.orphan",
                    {{"/Library/Orphan/Orphan.dylib", std::string(3000, 'o')},
                     {"/usr/lib/liborphan.dylib", "-> /Library/Orphan/Orphan.dylib"},
                     {"/etc/orphan.conf", "setting=1\n"}},
                    {{"control", controlFor("net.example.orphan", "1:1.0-1")},
                     {"conffiles", "/etc/orphan.conf\n"},
                     {"postinst", "#!/bin/sh\necho \"postinst $1\" >> /var/mobile/orphan.log\n"},
                     {"prerm", "#!/bin/sh\necho \"prerm $1\" >> /var/mobile/orphan.log\n"}});
    const std::string dylib = (orphanTree / "Library/Orphan/Orphan.dylib").string();
    ASSERT_EQ(chown(dylib.c_str(), 501, 501), 0);
    ASSERT_EQ(chmod(dylib.c_str(), 04750), 0);
    const std::string orphanDeb = install(original_, orphanTree);
    // One whose owner deleted a file and its conffile by hand.
    install(original_, packageTree(work_, "net.example.worn",
                                   {{"/Library/Worn/Kept.dylib", "kept"},
                                    {"/Library/Worn/Deleted.dylib", "gone"},
                                    {"/etc/worn.conf", "x\n"}},
                                   {{"control", controlFor("net.example.worn", "2.0")},
                                    {"conffiles", "/etc/worn.conf\n"}}));
    fs::remove(original_.path("/Library/Worn/Deleted.dylib"));
    fs::remove(original_.path("/etc/worn.conf"));

    const std::string report = backUp();
    EXPECT_NE(report.find("Repacked <net.example.orphan> from the device: no repository served it"), std::string::npos)
        << report;
    EXPECT_NE(report.find("Repacked <net.example.worn> from the device without what it no longer has: "
                          "/Library/Worn/Deleted.dylib, /etc/worn.conf"),
              std::string::npos)
        << report;
    // Packages that the repository serves are downloaded, not repacked.
    EXPECT_EQ(report.find("<preferenceloader>"), std::string::npos) << report;

    const fs::path debs = storedDebs(original_);
    const std::string orphan = (debs / "net.example.orphan_1%3a1.0-1_iphoneos-arm.deb").string();
    ASSERT_TRUE(fs::exists(orphan)) << debs;
    EXPECT_EQ(contentsWithoutTimes(orphan), contentsWithoutTimes(orphanDeb));
    EXPECT_EQ(test::runCommand("dpkg-deb -f " + quoted(orphan) + " Version Description Status"),
              "Version: 1:1.0-1\nDescription: a tweak whose repository closed\n Its longer description.\n");

    const test::SandboxDevice fresh = test::SandboxDevice::fresh("minimal");
    giveShell(fresh);
    fs::copy(original_.path(kStorageFolder), fresh.path(kStorageFolder), fs::copy_options::recursive);
    ASSERT_TRUE(fresh.turnOn({"AutoScanPkgEnabled", "RestoreFromDebsEnabled"}));
    ASSERT_EQ(fresh.run("settings PkgFWCompatibilityCheckEnabled false").status, 0);
    // (The restore installs the files one by one in the order of their names, so a package
    // that depends on one named after it fails whatever this test does: its status isn't read.)
    const auto restore = fresh.run("restore --yes");
    for (const char* installed : {"installed          net.example.orphan (net.example.orphan 1:1.0-1)",
                                  "installed          net.example.worn (net.example.worn 2.0)"}) {
        EXPECT_NE(restore.output.find(installed), std::string::npos) << installed << "\n" << restore.output;
    }

    EXPECT_EQ(filesOf(fresh, "net.example.orphan"), filesOf(original_, "net.example.orphan"));
    EXPECT_EQ(FileManager::contentsOfFile(fresh.path("/var/mobile/orphan.log")), "postinst configure\n");
    EXPECT_EQ(FileManager::contentsOfFile(fresh.path("/var/lib/dpkg/info/net.example.orphan.prerm")),
              FileManager::contentsOfFile(original_.path("/var/lib/dpkg/info/net.example.orphan.prerm")));
    EXPECT_EQ(FileManager::destinationOfSymbolicLink(fresh.path("/usr/lib/liborphan.dylib")),
              "/Library/Orphan/Orphan.dylib");
    EXPECT_EQ(FileManager::contentsOfFile(fresh.path("/etc/orphan.conf")), "setting=1\n");
    EXPECT_TRUE(fs::exists(fresh.path("/Library/Worn/Kept.dylib")));
}

TEST_F(PackageRepackProgramTest, ADatabaseThatNamesPlacesOutsideTheDeviceIsRefusedWithoutReadingThem) {
    // A secret beside the device root, which the database of the device leads to twice: by
    // ".." steps, and by a folder of the device that links out of it.
    const std::string secret = work_ / "secret";
    ASSERT_TRUE(FileManager::writeFile(secret, "not the device's\n"));
    for (const char* identifier : {"net.example.dotted", "net.example.escape", "net.example.linked"}) {
        install(original_, packageTree(work_, identifier, {{std::string("/Library/") + identifier, "a"}},
                                       {{"control", controlFor(identifier, "1.0")}}));
    }
    const auto appendToList = [this](const std::string& identifier, const std::string& line) {
        const std::string list = original_.path("/var/lib/dpkg/info/" + identifier + ".list");
        ASSERT_TRUE(FileManager::writeFile(list, FileManager::contentsOfFile(list).value_or("") + line + "\n"));
    };
    appendToList("net.example.dotted", "/../../../secret");
    fs::create_directory_symlink(work_.path(), original_.path("/Library/Outside"));
    appendToList("net.example.escape", "/Library/Outside/secret");
    // An info file that is a link out of the device.
    fs::create_symlink(secret, original_.path("/var/lib/dpkg/info/net.example.linked.postrm"));

    const std::string report = backUp();
    for (const char* refusal :
         {"Couldn't repack <net.example.dotted> from the device: /../../../secret: not a plain absolute path",
          "Couldn't repack <net.example.escape> from the device: /Library/Outside/secret: it leads out of the device "
          "root",
          "Couldn't repack <net.example.linked> from the device: /var/lib/dpkg/info/net.example.linked.postrm: not a "
          "plain file"}) {
        EXPECT_NE(report.find(refusal), std::string::npos) << refusal << "\n" << report;
    }
    for (const auto& entry : fs::directory_iterator(storedDebs(original_))) {
        const std::string name = entry.path().filename().string();
        EXPECT_FALSE(name.starts_with("net.example.")) << name;
    }
}

}  // namespace
}  // namespace stowhaven

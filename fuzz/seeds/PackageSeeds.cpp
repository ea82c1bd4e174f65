// The package manager's files as the load and the sources restore read them: the package
// scan, which dpkg-query prints here from a status file of a device's packages, a session's
// stored lines of the same packages, the package manager's settings with its sources and
// sections, and its apt list.

#include "core/CydiaFile.h"
#include "core/PackageScan.h"
#include "platform/plist/PlistCodec.h"
#include "seeds/Seeds.h"

namespace stowhaven::fuzz {

namespace {

using Array = PlistValue::Array;
using Dictionary = PlistValue::Dictionary;

// A device's packages as its status file keeps them: the system's own, tweaks with
// alternatives and versioned dependencies, a package removed with its configuration left.
constexpr const char* kStatus = R"(Package: firmware
Status: install ok installed
Priority: required
Section: System
Maintainer: Example Maker <maker@example.org>
Architecture: iphoneos-arm
Version: 8.1.2
Description: almost impossible to remove

Package: mobilesubstrate
Status: install ok installed
Priority: required
Section: Development
Installed-Size: 1024
Maintainer: Example Maker <maker@example.org>
Architecture: iphoneos-arm
Version: 0.9.5101
Depends: firmware (>= 2.0)
Description: powerful code insertion platform
Name: Cydia Substrate

Package: com.example.lighthouse
Status: install ok installed
Priority: optional
Section: Tweaks_(SpringBoard)
Installed-Size: 88
Maintainer: Tweak Author <author@example.net>
Architecture: iphoneos-arm
Version: 1.2-3
Depends: mobilesubstrate (>= 0.9.5000), firmware (>= 7.0) | firmware (<< 9.0), preferenceloader | com.example.prefs
Description: lights the status bar
 A longer description over
 two lines.
Name: Lighthouse

Package: com.example.gone
Status: deinstall ok config-files
Priority: optional
Section: Themes
Maintainer: Theme Author <theme@example.net>
Architecture: iphoneos-arm
Version: 2.0
Conffiles:
 /etc/gone.conf 0123456789abcdef0123456789abcdef
Description: a removed theme
Name: Gone

)";

PlistValue cydiaSettings() {
    const auto source = [](const char* uri, const char* distribution, Array sections) {
        return Dictionary{{"URI", uri}, {"Distribution", distribution}, {"Type", "deb"}, {"Sections", sections}};
    };
    return Dictionary{
        {"CydiaSources",
         Dictionary{{"deb:http://apt.example.org/:./", source("http://apt.example.org/", "./", {})},
                    {"deb:http://repo.example.net/cydia/:stable", source("http://repo.example.net/cydia/", "stable",
                                                                           {"main"})},
                    {"deb:https://user:pw@[::1]:8080/repo/:ios/1141.16",
                     source("https://user:pw@[::1]:8080/repo/", "ios/1141.16", {"main", "contrib"})}}},
        {"Sections", Dictionary{{"Tweaks", Dictionary{{"Visible", true}}}}},
        {"LastUpdate", Date(440000000)}};
}

constexpr const char* kCydiaList = "deb http://apt.example.org/ ./\ndeb http://repo.example.net/cydia/ stable main\n"
                                   "# a comment\n\ndeb https://repo.example.com/ ./  \n";

}  // namespace

void writePackageSeeds(const std::filesystem::path& folder) {
    const SeedCorpus corpus(folder, "package_files");
    const ScratchFolder scratch;
    scratch.write("db/status", kStatus);
    scratch.write("db/updates/.keep", "");
    const std::string scan = hostOutput("DPKG_ADMINDIR='" + scratch.path() + "/db' " +
                                        PackageScan::command("/dev/stdout") + " 2>/dev/null");
    corpus.add("scan.txt", scan);
    std::string stored;
    for (const std::string& line : PackageScan::linesOf(scan)) {
        const CydiaFile package(line);
        if (package.packageName()) stored += package.backupData() + "\n";
    }
    corpus.add("session-lines.txt", stored);
    corpus.add("com.saurik.Cydia.plist", *PlistCodec::serialize(cydiaSettings(), PlistFormat::Binary));
    corpus.add("com.saurik.Cydia.xml", *PlistCodec::serialize(cydiaSettings(), PlistFormat::Xml));
    corpus.add("cydia.list", kCydiaList);
}

}  // namespace stowhaven::fuzz

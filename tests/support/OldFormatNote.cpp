#include "support/OldFormatNote.h"

#include "platform/FileManager.h"
#include "platform/ShellQuote.h"
#include "platform/plist/PlistCodec.h"
#include "support/SandboxDevice.h"

#include <stdexcept>

namespace stowhaven::test {

std::string oldFormatNote(const std::string& folder, const std::string& rawData) {
    const std::string packed = folder + "/packed";
    const bool written =
        FileManager::createDirectory(packed + "/var/mobile", true) &&
        FileManager::createDirectory(packed + "/tmp", true) &&
        FileManager::writeFile(packed + "/var/mobile/cydiaApps.txt", rawData) &&
        PlistCodec::writeFile(packed + "/tmp/com.apple.springboard.plist",
                              PlistValue::Dictionary{{"SBShowBatteryPercentage", true}}, PlistFormat::Xml, 0644);
    if (!written) throw std::runtime_error("couldn't lay out an old note in " + folder);
    runCommand("touch -d '2010-06-01 12:00:00 UTC' " + ShellQuote::path(packed + "/var/mobile/cydiaApps.txt"));
    runCommand("tar -C " + ShellQuote::path(packed) + " -czf " + ShellQuote::path(folder + "/cydiaApps.tbz") +
               " var tmp");
    return runCommand("cd " + ShellQuote::path(folder) + " && uuencode -m cydiaApps.tbz cydiaApps.tbz");
}

}  // namespace stowhaven::test

// The command lines of the restore pipeline, on the device itself and on another root.

#include "restore/RestoreCommands.h"
#include "support/DeviceRootScope.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

TEST(RestoreCommandsTest, ArchivesUnpackIntoTheRootOfTheDeviceTheyRestore) {
    {
        test::DeviceRootScope device("/");
        EXPECT_EQ(RestoreCommands::joinParts("/var/tmp/stowhaven", "NOTES", "Notes"),
                  R"(cd "/var/tmp/stowhaven"; cat NOTES-??? >> Notes.tbz; rm -f NOTES-??? NOTES.idx)");
        EXPECT_EQ(RestoreCommands::extract("/var/tmp/stowhaven/Notes.tbz", "/", "/var/tmp/stowhaven/list"),
                  R"(tar -xf "/var/tmp/stowhaven/Notes.tbz" -C "//" --no-same-owner --no-same-permissions )"
                  R"(--no-recursion --no-wildcards --verbatim-files-from -T "/var/tmp/stowhaven/list")");
    }
    test::DeviceRootScope sandbox("/srv/devices/phone");
    EXPECT_EQ(RestoreCommands::extract("/srv/devices/phone/var/tmp/stowhaven/Tidewatch.tbz",
                                       "/var/mobile/Containers/Data/Application/C39F", "/srv/list.txt", 6),
              R"(tar -xf "/srv/devices/phone/var/tmp/stowhaven/Tidewatch.tbz" )"
              R"(-C "/srv/devices/phone//var/mobile/Containers/Data/Application/C39F" --no-same-owner )"
              R"(--no-same-permissions --strip-components=6 --no-recursion --no-wildcards --verbatim-files-from )"
              R"(-T "/srv/list.txt")");
    // A folder's path comes from a session: it stays one quoted word.
    EXPECT_EQ(RestoreCommands::giveToMobile({"/var/mobile/Media/DCIM", "/Library/Themes/$(reboot)\""}),
              R"(chown -R mobile:mobile "/srv/devices/phone/var/mobile/Media/DCIM" )"
              R"("/srv/devices/phone/Library/Themes/\$(reboot)\"")");
}

}  // namespace
}  // namespace stowhaven

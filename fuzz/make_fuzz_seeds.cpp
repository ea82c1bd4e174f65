// Writes the seed corpus of every fuzz target into FOLDER/<target without "fuzz_">. Seeds
// have the shapes the readers meet: what the system itself writes, and what the device's
// tools (tar, dpkg-query, uuencode) write, made here by the host's own, and what WebDAV
// shares answer.

#include "seeds/Seeds.h"
#include "support/DetachedDevice.h"

#include <cstdio>
#include <exception>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    using namespace stowhaven::fuzz;
    const std::filesystem::path folder = argv[1];
    try {
        const stowhaven::test::DetachedDevice device;
        writeArchiveSeeds(folder);
        writeTarSeeds(folder);
        writePlistSeeds(folder);
        writeNoteSeeds(folder);
        writePackageSeeds(folder);
        writeRestoreLogSeeds(folder);
        writeMultistatusSeeds(folder);
        writeDropboxSeeds(folder);
        writeBoxSeeds(folder);
        writeGDriveSeeds(folder);
        writeOneDriveSeeds(folder);
        writeSugarSyncSeeds(folder);
        writeFtpListSeeds(folder);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", argv[0], failure.what());
        return 1;
    }
    return 0;
}

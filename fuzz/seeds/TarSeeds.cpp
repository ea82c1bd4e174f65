// Archives the host's tar writes in each of its formats, of a device folder with the
// members a restore meets: folders, files, symbolic and hard links, long names, a sparse
// file; hostile ones too, with names that climb out, a link that leads out, a line break
// and a backslash in a name; and tar's own listing of a hostile archive, as the restore
// reads it to count members.

#include "seeds/Seeds.h"

#include <fstream>
#include <string>
#include <vector>

namespace stowhaven::fuzz {

namespace {

const std::string kNotes = "var/mobile/Library/Notes/";
const std::string kPreferences = "var/mobile/Library/Preferences/";

std::string quoted(const std::string& text) { return "'" + text + "'"; }

std::string names(const std::vector<std::string>& members) {
    std::string joined;
    for (const std::string& member : members) joined += " " + quoted(member);
    return joined;
}

// The device folder: small files, so that the archives stay far below the fuzzers' limit.
void layOutTree(const ScratchFolder& scratch) {
    scratch.write("tree/" + kNotes + "notes.sqlite", std::string(700, 's'));
    scratch.write("tree/" + kNotes + "line\nbreak", "a name with a line break");
    scratch.write("tree/" + kNotes + "back\\slash", "a name with a backslash");
    scratch.write("tree/" + kPreferences + std::string(120, 'p') + "/" + std::string(90, 'q') + ".plist", "<plist/>");
    const std::string tree = quoted(scratch.path() + "/tree");
    hostOutput("cd " + tree + "/" + kNotes + " && ln -s notes.sqlite latest && ln notes.sqlite same.sqlite && " +
               "ln -s ../../../../../etc/passwd out");
    // Mostly holes, so that tar stores it as a sparse member.
    std::filesystem::create_directories(scratch.path() + "/tree/var/mobile/Media");
    std::ofstream image(scratch.path() + "/tree/var/mobile/Media/disk.img", std::ios::binary);
    for (int island = 0; island < 4; ++island) image.seekp(island * 65536) << std::string(512, 'x');
    image.seekp(4 * 65536 - 1) << '\0';
}

std::string tarred(const ScratchFolder& scratch, const std::string& options, const std::vector<std::string>& members) {
    return hostOutput("tar -C " + quoted(scratch.path() + "/tree") + " " + options +
                      " --no-recursion --owner=mobile:501 --group=mobile:501 -cf -" + names(members) + " 2>/dev/null");
}

}  // namespace

void writeTarSeeds(const std::filesystem::path& folder) {
    const SeedCorpus corpus(folder, "tar_listing");
    const ScratchFolder scratch;
    layOutTree(scratch);
    const std::vector<std::string> plain = {"var/", "var/mobile/", "var/mobile/Library/", kNotes,
                                            kNotes + "notes.sqlite", kNotes + "latest", kNotes + "same.sqlite"};
    const std::string longName = kPreferences + std::string(120, 'p') + "/" + std::string(90, 'q') + ".plist";
    for (const char* format : {"gnu", "oldgnu", "ustar", "pax", "v7"}) {
        corpus.add(std::string(format) + ".tar", tarred(scratch, std::string("--format=") + format, plain));
    }
    corpus.add("gnu-long-sparse.tar",
               tarred(scratch, "--format=gnu --sparse", {longName, "var/mobile/Media/disk.img"}));
    corpus.add("pax-long-sparse.tar", tarred(scratch, "--format=pax --sparse --sparse-version=1.0",
                                             {longName, "var/mobile/Media/disk.img"}));

    const std::vector<std::string> hostile = {kNotes + "notes.sqlite", kNotes + "line\nbreak", kNotes + "back\\slash",
                                              kNotes + "out"};
    const std::string climbing = "--transform='s,^var/mobile/Library/Notes/notes.sqlite$,../../etc/notes,'";
    for (const char* format : {"gnu", "pax"}) {
        const std::string name = std::string("hostile-") + format + ".tar";
        const std::string archive = tarred(scratch, std::string("--format=") + format + " " + climbing, hostile);
        corpus.add(name, archive);
        scratch.write(name, archive);
        // As the restore has tar list it.
        corpus.add(name + ".list", hostOutput("tar -tf " + quoted(scratch.path() + "/" + name) +
                                              " --quoting-style=escape 2>/dev/null && echo Listed"));
    }
    corpus.add("absolute.tar", hostOutput("tar -P --format=gnu -cf - " + quoted(scratch.path() + "/tree/" + kNotes +
                                                                                  "notes.sqlite") + " 2>/dev/null"));
}

}  // namespace stowhaven::fuzz

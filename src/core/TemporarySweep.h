#pragma once

#include <functional>
#include <string>

namespace stowhaven {

// The sweep of the program's temporary folder, at start, on cancel and when the program
// leaves. It deletes broadly inside that folder, and never outside it; and not at all while
// another program runs a backup or a restore, whose working files the folder holds.
class TemporarySweep {
public:
    // Deletes the entries that the system's working files are named like, then runs the
    // shell's own sweep of hyphenated names.
    static void removeTemporaryFiles();
    // Removes the working folders "debs", "Photos" and "Videos".
    static void removeTemporaryFolders();
    // Deletes the entries of the temporary folder whose names match; false when the folder
    // couldn't be listed.
    static bool removeTemporaryFilesMatching(const std::function<bool(const std::string& name)>& matches);

    // A name the sweep deletes: a leading digit; the extension txt, zip, tar, tbz, idx,
    // stowhvn or deb; the prefix "pkg"; or a hyphen anywhere.
    static bool isSweptName(const std::string& name);

    // The shell's sweep of hyphenated names in FOLDER.
    static std::string shellSweepCommand(const std::string& folder);
};

}  // namespace stowhaven

#pragma once

#include <string>
#include <vector>

namespace stowhaven {

class BackupSession;

// What a session's history says its storage holds, each file with the name the restore
// fetches it by: the kinds of indexed data, one archive per application (in
// APPLICATIONS_DATA) and per archivable folder (in the session directory), and one .deb
// per package (in DEBS) when the backup captured them.
struct SessionContents {
    struct File {
        // What the report calls it: "application Notes+", "folder Themes", "package foo".
        std::string item;
        std::string name;
        // The data directory it lies in; empty for the session directory itself.
        std::string directory;
    };

    std::vector<std::string> kinds;
    std::vector<File> archives;
    std::vector<File> debs;
    // Packages the session names under an identifier no file can be fetched by.
    std::vector<std::string> unnamedPackages;
};

SessionContents contentsOf(const BackupSession& session);

}  // namespace stowhaven

#pragma once

#include <string>
#include <vector>

namespace stowhaven {

// A folder that is the program's own: a real folder (no symbolic link), owned by the
// program's user (root on the device) and open to that user alone (mode 0700). The
// program runs as root, deletes broadly in its temporary folder and runs tools from its
// tool folder: a folder another user made first, or a link to one, would hand those to
// that user.
class PrivateFolder {
public:
    // Makes BASE/NAMES[0]/NAMES[1]/... the program's own. BASE is a folder of the device,
    // taken as it is (made when missing); each name below it is looked at without following
    // links, made when missing, and moved aside to a new name beside it, with a log line,
    // when it is anything but such a folder. Nothing found is deleted or followed. Answers
    // whether the whole path is now the program's own.
    static bool make(const std::string& base, const std::vector<std::string>& names);

    // Whether PATH is such a folder now (its last component is not followed): a cheap look
    // for a folder made before.
    static bool isPrivate(const std::string& path);
};

}  // namespace stowhaven

#pragma once

#include <string>

namespace stowhaven {

// The program's own temporary folder on the device: <var>/tmp/stowhaven, a private folder
// (see PrivateFolder) of root's. It is never a shared folder, since the sweep of temporary
// files deletes broadly in it, and never on the search path of the tools, since sessions
// and archives are unpacked in it.
class TemporaryDirectory {
public:
    // The folder; a cheap look on each call, and prepare() when it isn't the program's own
    // (the first time for a device root, or when something removed it).
    static std::string path();

    // Makes the folder the program's own, moving aside whatever another user or a link put
    // at its name. Done once at start, before the sweep deletes anything in it.
    static bool prepare();
};

}  // namespace stowhaven

#pragma once

namespace stowhaven {

// The modes of what the program keeps for its user alone (root on the device): stored
// sessions hold the user's key and the user's data, and other users' programs on the
// device have no business reading them.
class FileModes {
public:
    static constexpr unsigned kPrivateFile = 0600;
    static constexpr unsigned kPrivateFolder = 0700;

    // From now on, what the process makes without a mode of its own is for its user alone
    // (umask 077).
    static void keepNewItemsPrivate();
};

}  // namespace stowhaven

#pragma once

#include <optional>
#include <string>

namespace stowhaven {

// The engine of the current storage type, made as the program starts with it: the same way
// for the main screen and for every command that reads the storage.
class StorageEngineStart {
public:
    // Makes the engine and waits for one that connects in the background. The address book
    // opens its helper, which gives way to local storage by itself without access to the
    // contacts. An engine this build lacks, or one that can't start (a server that refuses
    // the login, say), gives way to local storage for this run, the stored type staying as
    // it is; the answer is then the message that tells the user so.
    static std::optional<std::string> start();

    // Local storage for this run in place of the current engine; the stored type stays.
    static void fallBackToLocalStorage();
};

}  // namespace stowhaven

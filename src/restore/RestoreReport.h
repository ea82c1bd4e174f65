#pragma once

#include "platform/dispatch/Monitored.h"

#include <string>
#include <vector>

namespace stowhaven {

// What the last restore could not bring back beside packages (whose install logs say it):
// a kind of data, an application's data or a folder whose archive was incomplete, damaged
// or not deciphered, so that nothing of it was unpacked. Emptied as each restore starts.
class RestoreReport {
public:
    struct Failure {
        std::string what;
        std::string reason;
    };

    // The reason of an archive that tar couldn't list in full or that leads out of its places.
    static constexpr const char* kUntrustedArchive = "its archive is damaged, incomplete or can't be trusted";

    static RestoreReport& shared();

    void clear();
    // Logs the failure too.
    void add(const std::string& what, const std::string& reason);
    std::vector<Failure> failures() const { return failures_.copy(); }

private:
    Monitored<std::vector<Failure>> failures_;
};

}  // namespace stowhaven

#pragma once

#include "verify/VerifyReport.h"

#include <functional>
#include <optional>
#include <string>

namespace stowhaven {

class StorageHelperProtocol;

// The verification of one stored session, item by item into the report: its history file
// decodes, its key (the one given, or the one it keeps) is its own, each kind of indexed
// data is whole and lists cleanly, each application and folder archive is there and lists
// cleanly, and each captured .deb is a whole package archive. Nothing is written but in
// the temporary folder, and each fetched file goes once checked.
class SessionCheck {
public:
    // What is being checked now, and how far that item has come when it is known.
    using Progress = std::function<void(const std::string& item, std::optional<double> fraction)>;

    SessionCheck(StorageHelperProtocol& engine, VerifyReport& report, Progress progress)
        : engine_(engine), report_(report), progress_(std::move(progress)) {}

    // HISTORYNAME as the engine lists it; FETCHED, the local copy of it, when the engine could
    // fetch it; KEY, the key the user gave, if any.
    void run(const std::string& historyName, const std::optional<std::string>& fetched,
             const std::optional<std::string>& key);

private:
    StorageHelperProtocol& engine_;
    VerifyReport& report_;
    Progress progress_;
};

}  // namespace stowhaven

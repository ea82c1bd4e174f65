#pragma once

#include "platform/Date.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace stowhaven {

class StorageHelperProtocol;

// The check of one kind of indexed data of a session: its index names the parts KIND-000,
// KIND-001... in order and nothing else, each of them is stored and none after the last,
// and the parts joined make an archive the restore would unpack (deciphered where it is
// enciphered, then listed member by member). An engine that keeps its files on the device
// has them read where they lie; any other's are fetched into the temporary folder, and go
// at the end. A plain archive is listed as its parts joined through a pipe, nothing of it
// written; only an enciphered or compressed one is joined into one copy first.
class CategoryCheck {
public:
    struct Outcome {
        std::optional<std::string> fault;
        // For a sound kind: how many parts and bytes.
        std::string detail;
    };
    // Told PARTS DONE of PARTS as the parts arrive.
    using Progress = std::function<void(std::size_t done, std::size_t parts)>;

    static Outcome run(StorageHelperProtocol& engine, Date date, const std::string& kind, const Progress& progress);
};

}  // namespace stowhaven

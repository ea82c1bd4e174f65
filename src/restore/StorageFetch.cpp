#include "restore/StorageFetch.h"

#include "storage/StorageHelperProtocol.h"

namespace stowhaven {

std::optional<std::string> fetchSessionFile(StorageHelperProtocol& engine, const std::string& name, Date date,
                                            const std::optional<std::string>& subDirectory, bool* answered) {
    // Shared with the hooks, which an engine may keep after the request.
    struct Outcome {
        bool answered = false;
        std::optional<std::string> path;
    };
    auto outcome = std::make_shared<Outcome>();
    engine.setSuccessSelector(
        [outcome](const HookObject& object) {
            outcome->answered = true;
            if (const auto* path = std::get_if<std::string>(&object)) outcome->path = *path;
        },
        [outcome] { outcome->answered = true; });
    engine.loadFile(name, date, subDirectory);
    if (answered) *answered = outcome->answered;
    return outcome->path;
}

}  // namespace stowhaven

#include "restore/StorageFetch.h"

#include "storage/StorageHelperProtocol.h"

namespace stowhaven {

std::optional<std::string> fetchSessionFile(StorageHelperProtocol& engine, const std::string& name, Date date,
                                            const std::optional<std::string>& subDirectory) {
    auto fetched = std::make_shared<std::optional<std::string>>();
    engine.setSuccessSelector(
        [fetched](const HookObject& object) {
            if (const auto* path = std::get_if<std::string>(&object)) *fetched = *path;
        },
        [] {});
    engine.loadFile(name, date, subDirectory);
    return *fetched;
}

}  // namespace stowhaven

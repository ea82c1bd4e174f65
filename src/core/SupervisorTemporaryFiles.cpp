#include "core/Supervisor.h"

#include "core/TemporarySweep.h"
#include "platform/Date.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/TemporaryDirectory.h"

#include <fmt/format.h>

namespace stowhaven {

// Named after the time now, to the microsecond, as the device writes it with "%f".
std::string Supervisor::getTemporaryFileName(bool secure) const {
    const double now = Platform::current().clock().date().timeIntervalSinceReferenceDate();
    return fmt::format("{}/{}{:.6f}.txt", TemporaryDirectory::path(), secure ? "secure" : "", now);
}

void Supervisor::removeTemporaryFiles() { TemporarySweep::removeTemporaryFiles(); }

void Supervisor::removeTemporaryFolders() { TemporarySweep::removeTemporaryFolders(); }

bool Supervisor::deleteFileAtPath(const std::string& path) {
    bool isDirectory = false;
    if (!FileManager::fileExists(path, isDirectory) || isDirectory) return true;
    std::string error;
    if (FileManager::removeItem(path, &error)) return true;
    SH_LOG("Error <{}> while removing file <{}>", error, path);
    return false;
}

}  // namespace stowhaven

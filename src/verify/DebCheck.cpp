#include "verify/DebCheck.h"

#include "core/Supervisor.h"
#include "platform/FileManager.h"
#include "verify/VerifyCommands.h"

namespace stowhaven {

std::optional<std::string> faultOfDeb(const std::string& deb) {
    Supervisor& supervisor = Supervisor::shared();
    const std::string mark = supervisor.getTemporaryFileName(true) + ".whole";
    supervisor.systemExecute(VerifyCommands::checkDeb(deb, mark));
    const bool whole = FileManager::fileExists(mark);
    FileManager::removeItem(mark);
    FileManager::removeItem(deb);
    if (whole) return std::nullopt;
    return "not a valid package archive (dpkg-deb can't read it whole)";
}

}  // namespace stowhaven

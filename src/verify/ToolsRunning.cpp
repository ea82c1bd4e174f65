#include "verify/ToolsRunning.h"

#include "core/Supervisor.h"
#include "platform/FileManager.h"
#include "verify/VerifyCommands.h"

namespace stowhaven {

bool deviceToolsRun() {
    Supervisor& supervisor = Supervisor::shared();
    const std::string mark = supervisor.getTemporaryFileName(true) + ".ran";
    supervisor.systemExecute(VerifyCommands::markRun(mark));
    const bool ran = FileManager::fileExists(mark);
    FileManager::removeItem(mark);
    return ran;
}

}  // namespace stowhaven

#include "core/DeviceToolCheck.h"

#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/ShellQuote.h"
#include "platform/TemporaryDirectory.h"

#include <fmt/format.h>

namespace stowhaven {

namespace {

constexpr const char* kJobTools = "tar split bzip2 openssl dpkg dpkg-query apt-get";

}  // namespace

std::vector<std::string> missingDeviceTools() {
    const std::string list = TemporaryDirectory::path() + "/missingTools.txt";
    Supervisor::shared().systemExecute(
        fmt::format("for tool in {}; do command -v \"$tool\" > /dev/null || echo \"$tool\"; done > {}", kJobTools,
                    ShellQuote::quoted(list)));
    std::vector<std::string> missing = textutil::split(FileManager::contentsOfFile(list).value_or(""), '\n');
    FileManager::removeItem(list);
    std::erase(missing, "");
    for (const std::string& tool : missing) SH_LOG("The device has no <{}>!", tool);
    return missing;
}

}  // namespace stowhaven

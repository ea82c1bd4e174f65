#include "flows/PackageActions.h"

#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/ShellQuote.h"
#include "platform/Strings.h"
#include "platform/dispatch/NotificationCenter.h"

#include <fmt/format.h>

namespace stowhaven {

std::vector<std::pair<std::string, std::string>> PackageActions::details(CydiaFile& package) {
    package.loadDescription();
    const auto field = [](const std::optional<std::string>& value) { return value.value_or(""); };
    std::string depends;
    if (package.dependsList()) depends = fmt::format("{}", fmt::join(*package.dependsList(), ", "));
    return {{Strings::localized("NAME_TEXT"), field(package.name())},
            {Strings::localized("PACKAGE_TEXT"), field(package.packageName())},
            {Strings::localized("SECTION_TEXT"), field(package.sectionName())},
            {Strings::localized("VERSION_TEXT"), field(package.version())},
            {Strings::localized("MAINTAINER_TEXT"), field(package.maintainerName())},
            {Strings::localized("DESCRIPTION_TEXT"), textutil::trimmed(field(package.note()))},
            {Strings::localized("DEPENDENCIES_BUTTON"), depends}};
}

std::string PackageActions::actionTitle(bool backup) {
    return Strings::localized(backup ? "REMOVE_NOW_BUTTON" : "INSTALL_NOW_BUTTON");
}

std::optional<std::string> PackageActions::commandLine(const CydiaFile& package, bool backup) {
    // The identifier stands unquoted: only the characters an identifier can have pass.
    const auto identifier = ShellQuote::packageIdentifier(package.packageName().value_or(""));
    if (!identifier) return std::nullopt;
    return fmt::format(fmt::runtime(backup ? kRemoveNow : kInstallNow), *identifier);
}

bool PackageActions::run(const CydiaFile& package, bool backup) {
    const auto command = commandLine(package, backup);
    if (!command) return false;
    // The package manager's clean-ups hold its database while they run.
    CydiaFileManager::shared().waitForCleanUpJobs();
    Supervisor::shared().systemExecute(*command);
    NotificationCenter::defaultCenter().post("RELOAD_DATA_NEEDED");
    return true;
}

}  // namespace stowhaven

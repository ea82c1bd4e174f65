#include "core/CydiaFile.h"

#include "core/Text.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/ShellQuote.h"
#include "platform/TemporaryDirectory.h"

namespace stowhaven {

namespace {

std::string descriptionCommand(const std::string& packageName, const std::string& file) {
    return "dpkg-query -W -f='${Description}' " + packageName + " > " + ShellQuote::path(file);
}

std::string nameCommand(const std::string& packageName, const std::string& file) {
    return "dpkg-query -W -f='${name}' " + packageName + " > \"" + ShellQuote::inDoubleQuotes(file) + "\"";
}

// Runs one dpkg-query on a package, its output going to a file named by the package in
// the program's temporary folder, and answers what the file held. The identifier stands
// unquoted in the command, so one that isn't a plain package name runs nothing.
std::optional<std::string> queryPackage(const std::string& packageName,
                                        std::string (*command)(const std::string&, const std::string&)) {
    const auto identifier = ShellQuote::packageIdentifier(packageName);
    if (!identifier) return std::nullopt;
    const std::string file = TemporaryDirectory::path() + "/" + *identifier;
    Platform::current().shell().systemExecute(command(*identifier, file));
    auto text = FileManager::contentsOfFile(file);
    if (!text) SH_LOG("Unable to load description from <{}>", file);
    // "." and ".." pass as identifiers but name folders, which must stay.
    if (FileManager::isRegularFile(file)) FileManager::removeItem(file);
    return text;
}

}  // namespace

void CydiaFile::loadDescription() {
    note_ = packageName_ ? queryPackage(*packageName_, descriptionCommand) : std::nullopt;
}

std::optional<std::string> CydiaFile::getNameWithPackageName(const std::optional<std::string>& packageName) {
    if (!packageName) return std::nullopt;
    const auto name = queryPackage(*packageName, nameCommand);
    if (!name) return std::nullopt;
    std::string displayName = textutil::trimmed(*name);
    if (displayName.empty()) return std::nullopt;
    return displayName;
}

}  // namespace stowhaven

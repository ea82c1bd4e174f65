#include "backup/PackageRepackRecord.h"

#include "core/Text.h"
#include "platform/ContainedPath.h"
#include "platform/FileManager.h"
#include "platform/ShellQuote.h"

#include <algorithm>
#include <array>

namespace stowhaven {

namespace {

constexpr const char* kInfoFolder = "/var/lib/dpkg/info/";

// The fields dpkg writes into its status file on install, which no package file holds.
constexpr std::array<std::string_view, 3> kInstallFields = {"Status", "Config-Version", "Conffiles"};
// The files of the info folder that go into the package's control area as they are.
constexpr std::array<const char*, 8> kControlFiles = {"preinst", "postinst", "prerm",  "postrm",
                                                      "config",  "templates", "triggers", "shlibs"};

std::nullopt_t refuse(std::string* reason, std::string text) {
    *reason = std::move(text);
    return std::nullopt;
}

std::optional<std::string> readDatabaseFile(const std::string& devicePath, std::string* reason) {
    std::string why;
    const auto hostPath = ContainedPath::hostPath(devicePath, &why);
    if (!hostPath) return refuse(reason, devicePath + ": " + why);
    // A link in the database's place could lead anywhere.
    const auto attributes = FileManager::attributesOfItem(*hostPath, reason);
    if (!attributes) return std::nullopt;
    if (attributes->type != FileType::Regular) return refuse(reason, devicePath + ": not a plain file");
    return FileManager::contentsOfFile(*hostPath, reason);
}

std::string fieldName(const std::string& line) { return line.substr(0, line.find(':')); }

std::string fieldValue(const std::string& line) { return textutil::trimmed(line.substr(line.find(':') + 1)); }

// The lines of the status entry of IDENTIFIER that dpkg counts as installed.
std::optional<std::vector<std::string>> installedEntry(const std::string& status, const std::string& identifier) {
    std::vector<std::string> entry;
    for (const std::string& line : textutil::split(status + "\n", '\n')) {
        if (!line.empty()) {
            entry.push_back(line);
            continue;
        }
        const bool isPackage = std::ranges::any_of(entry, [&](const std::string& field) {
            return fieldName(field) == "Package" && fieldValue(field) == identifier;
        });
        const bool isInstalled = std::ranges::any_of(entry, [](const std::string& field) {
            return fieldName(field) == "Status" && fieldValue(field).ends_with(" installed");
        });
        if (isPackage && isInstalled) return entry;
        entry.clear();
    }
    return std::nullopt;
}

// The entry's lines less the install fields and their continuation lines.
std::string controlOf(const std::vector<std::string>& entry) {
    std::string control;
    bool dropping = false;
    for (const std::string& line : entry) {
        const bool continuation = line.starts_with(' ') || line.starts_with('\t');
        if (!continuation) dropping = std::ranges::find(kInstallFields, fieldName(line)) != kInstallFields.end();
        if (!dropping) control += line + "\n";
    }
    return control;
}

std::vector<std::string> nonEmptyLines(const std::string& text) {
    std::vector<std::string> lines;
    for (const std::string& line : textutil::split(text, '\n')) {
        if (!line.empty()) lines.push_back(line);
    }
    return lines;
}

}  // namespace

std::optional<PackageRepackRecord> PackageRepackRecord::read(const std::string& identifier, std::string* reason) {
    if (!ShellQuote::packageIdentifier(identifier)) return refuse(reason, "not a package name");
    const auto status = readDatabaseFile("/var/lib/dpkg/status", reason);
    if (!status) return std::nullopt;
    const auto entry = installedEntry(*status, identifier);
    if (!entry) return refuse(reason, "not installed according to the status file");

    PackageRepackRecord record;
    record.identifier = identifier;
    record.control = controlOf(*entry);
    for (const std::string& line : *entry) {
        if (fieldName(line) == "Version") record.version = fieldValue(line);
        if (fieldName(line) == "Architecture") record.architecture = fieldValue(line);
    }
    if (record.version.empty()) return refuse(reason, "the status file gives no version");

    // dpkg names the info files of a package that may be installed for several
    // architectures with the architecture too.
    std::string info = kInfoFolder + identifier;
    std::string ignored;
    auto list = readDatabaseFile(info + ".list", &ignored);
    if (!list) {
        info += ":" + record.architecture;
        list = readDatabaseFile(info + ".list", reason);
    }
    if (!list) return std::nullopt;
    for (const std::string& path : nonEmptyLines(*list)) {
        if (path != "/.") record.files.push_back(path);
    }
    if (const auto conffiles = readDatabaseFile(info + ".conffiles", &ignored)) {
        for (const std::string& line : nonEmptyLines(*conffiles)) {
            // Flags such as "remove-on-upgrade" come before the path.
            record.conffiles.push_back(line.substr(line.rfind(' ') + 1));
        }
    }
    for (const char* name : kControlFiles) {
        const auto hostPath = ContainedPath::hostPath(info + "." + name, &ignored);
        if (!hostPath) return refuse(reason, info + "." + name + ": " + ignored);
        const auto attributes = FileManager::attributesOfItem(*hostPath);
        if (!attributes) continue;
        if (attributes->type != FileType::Regular) return refuse(reason, info + "." + name + ": not a plain file");
        record.scripts.push_back({name, *hostPath});
    }
    return record;
}

}  // namespace stowhaven

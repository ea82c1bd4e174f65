#include "verify/SessionContents.h"

#include "backup/ApplicationsDataOperation.h"
#include "core/BackupSession.h"
#include "core/CydiaFile.h"
#include "core/SessionDebName.h"
#include "core/Text.h"
#include "items/Application.h"
#include "items/ArchivableFolder.h"
#include "platform/ShellQuote.h"
#include "restore/DataCategories.h"

#include <fmt/format.h>

namespace stowhaven {

namespace {

constexpr const char* kDebsDirectory = "DEBS";

void addPackages(const BackupSession& session, SessionContents& contents) {
    for (const std::string& line : textutil::split(session.rawData().value_or(""), '\n')) {
        const CydiaFile package(line);
        if (!package.packageName()) continue;
        if (!ShellQuote::packageIdentifier(*package.packageName())) {
            contents.unnamedPackages.push_back(*package.packageName());
            continue;
        }
        contents.debs.push_back({"package " + *package.packageName(), sessionDebName(package), kDebsDirectory});
    }
}

}  // namespace

SessionContents contentsOf(const BackupSession& session) {
    SessionContents contents;
    for (const DataCategory& category : dataCategories()) {
        if (category.isHeldBy(session)) contents.kinds.emplace_back(category.name);
    }
    if (const auto& applications = session.applications()) {
        for (const auto& application : *applications) {
            contents.archives.push_back({"application " + application->displayName(), application->archiveName(),
                                         ApplicationsDataOperation::kDirectory});
        }
    }
    if (const auto& folders = session.archivableFolders()) {
        for (const auto& folder : *folders) {
            contents.archives.push_back({"folder " + folder->name(), folder->archiveName() + ".tbz", ""});
        }
    }
    addPackages(session, contents);
    return contents;
}

}  // namespace stowhaven

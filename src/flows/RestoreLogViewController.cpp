#include "flows/RestoreLogViewController.h"

#include "core/CydiaFileManager.h"
#include "core/Text.h"

namespace stowhaven {

namespace {

// A package the restore found gone afterwards failed, whatever its install said.
RestoreLogViewController::Mark markOf(const CydiaFile& package) {
    using Mark = RestoreLogViewController::Mark;
    if (package.isMissingAfterRestore()) return Mark::Failed;
    if (package.isSuccessfullyInstalled()) return Mark::Installed;
    if (package.isAlreadyInstalled()) return Mark::AlreadyInstalled;
    return Mark::Failed;
}

}  // namespace

std::vector<RestoreLogViewController::Row> RestoreLogViewController::packageList() {
    std::vector<Row> rows;
    for (const auto& package : CydiaFileManager::shared().selectedRestorePackages()) {
        rows.push_back({textutil::orNull(package->name()), textutil::orNull(package->packageName()),
                        textutil::orNull(package->version()), markOf(*package), package->installLog().value_or("")});
    }
    return rows;
}

const char* RestoreLogViewController::textOf(Mark mark) {
    switch (mark) {
        case Mark::Installed:
            return "installed";
        case Mark::AlreadyInstalled:
            return "already installed";
        case Mark::Failed:
            break;
    }
    return "failed";
}

}  // namespace stowhaven

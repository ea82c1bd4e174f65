#include "cli/RestoreLog.h"

#include "core/CydiaFileManager.h"
#include "core/Text.h"
#include "restore/RestoreReport.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>

namespace stowhaven {

namespace {

const char* markOf(const CydiaFile& package) {
    if (package.isMissingAfterRestore()) return "failed";
    if (package.isSuccessfullyInstalled()) return "installed";
    if (package.isAlreadyInstalled()) return "already installed";
    return "failed";
}

}  // namespace

bool printRestoreLog(const std::optional<std::string>& logOf, std::ostream& out, std::ostream& errors) {
    const auto packages = CydiaFileManager::shared().selectedRestorePackages();
    const auto failures = RestoreReport::shared().failures();
    bool allIn = true;
    fmt::print(out, "{} package(s) restored\n", packages.size());
    for (const auto& package : packages) {
        const char* mark = markOf(*package);
        allIn = allIn && std::string_view(mark) != "failed";
        fmt::print(out, "  {:<17}  {} ({} {})\n", mark, textutil::orNull(package->name()),
                   textutil::orNull(package->packageName()), textutil::orNull(package->version()));
    }
    for (const RestoreReport::Failure& failure : failures) {
        fmt::print(out, "  {:<17}  {}: {}\n", "failed", failure.what, failure.reason);
    }
    if (logOf) {
        const auto found = std::find_if(packages.begin(), packages.end(),
                                        [&](const auto& package) { return package->packageName() == logOf; });
        if (found == packages.end()) {
            fmt::print(errors, "stowhaven: no install log of {}\n", *logOf);
        } else {
            // The tools redraw their progress with carriage returns: each drawing is a line here.
            const std::string log = textutil::replacingAll((*found)->installLog().value_or(""), "\r\n", "\n");
            fmt::print(out, "\nInstall log of {}:\n{}\n", *logOf, textutil::replacingAll(log, "\r", "\n"));
        }
    }
    return allIn && failures.empty();
}

}  // namespace stowhaven

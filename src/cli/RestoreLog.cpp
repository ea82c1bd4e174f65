#include "cli/RestoreLog.h"

#include "core/Text.h"
#include "flows/RestoreLogViewController.h"
#include "restore/RestoreReport.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>

namespace stowhaven {

bool printRestoreLog(const std::optional<std::string>& logOf, std::ostream& out, std::ostream& errors) {
    using Row = RestoreLogViewController::Row;
    const std::vector<Row> packages = RestoreLogViewController::packageList();
    const auto failures = RestoreReport::shared().failures();
    bool allIn = true;
    fmt::print(out, "{} package(s) restored\n", packages.size());
    for (const Row& package : packages) {
        allIn = allIn && package.mark != RestoreLogViewController::Mark::Failed;
        fmt::print(out, "  {:<17}  {} ({} {})\n", RestoreLogViewController::textOf(package.mark), package.name,
                   package.packageName, package.version);
    }
    for (const RestoreReport::Failure& failure : failures) {
        fmt::print(out, "  {:<17}  {}: {}\n", "failed", failure.what, failure.reason);
    }
    if (logOf) {
        const auto found = std::find_if(packages.begin(), packages.end(),
                                        [&](const Row& package) { return package.packageName == *logOf; });
        if (found == packages.end()) {
            fmt::print(errors, "stowhaven: no install log of {}\n", *logOf);
        } else {
            // The tools redraw their progress with carriage returns: each drawing is a line here.
            const std::string log = textutil::replacingAll(found->installLog, "\r\n", "\n");
            fmt::print(out, "\nInstall log of {}:\n{}\n", *logOf, textutil::replacingAll(log, "\r", "\n"));
        }
    }
    return allIn && failures.empty();
}

}  // namespace stowhaven

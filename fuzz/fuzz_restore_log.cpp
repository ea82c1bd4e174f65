// The restore log on any input, fed as a restore feeds it: a session's stored package lines
// become the catalogue's packages, and each gets the install log that apt-get left. The
// input is the session's lines, then each package's install log after a NUL, in the
// packages' order; the log asked for is the first package's.
//
// Beyond not failing: the log has one row per package that went through an install, in
// order, marked as its install log tells, and answers that all went in exactly when no
// row is marked failed.

#include "FuzzSupport.h"
#include "cli/RestoreLog.h"
#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/Text.h"
#include "restore/RestoreReport.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace stowhaven;

// The catalogue's packages of a session of those lines, with the logs in order.
CydiaFileManager::Packages restoredPackages(std::string_view input) {
    const std::vector<std::string> parts = textutil::split(input, '\0');
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    catalogue.resetAllData();
    auto session = std::make_shared<BackupSession>();
    session->setRawData(parts.front());
    catalogue.processBackupData({session}, false);
    catalogue.processRawCydiaFileData();
    const auto packages = catalogue.oldPackages();
    for (std::size_t index = 0; index < packages.size() && index + 1 < parts.size(); ++index) {
        packages[index]->setInstallLog(parts[index + 1]);
    }
    RestoreReport::shared().clear();
    return catalogue.selectedRestorePackages();
}

std::string expectedMark(const CydiaFile& package) {
    if (package.isSuccessfullyInstalled()) return "installed";
    if (package.isAlreadyInstalled()) return "already installed";
    return "failed";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::useFuzzingDevice();
    const auto packages = restoredPackages(fuzz::bytesOf(data, size));
    const auto logOf = packages.empty() ? std::nullopt : packages.front()->packageName();
    std::ostringstream out;
    std::ostringstream errors;
    const bool allIn = printRestoreLog(logOf, out, errors);

    std::istringstream printed(out.str());
    std::string line;
    std::getline(printed, line);
    fuzz::expect(line == std::to_string(packages.size()) + " package(s) restored", "the log counts the packages");
    bool anyFailed = false;
    for (const auto& package : packages) {
        const std::string mark = expectedMark(*package);
        anyFailed = anyFailed || mark == "failed";
        fuzz::expect(std::getline(printed, line) && line.starts_with("  " + mark + " "),
                     "each package has its row, in order, marked as its install log tells");
    }
    fuzz::expect(allIn == !anyFailed, "the log answers that all went in when none failed");
    if (logOf) {
        fuzz::expect(out.str().ends_with("\nInstall log of " + *logOf + ":\n" +
                                         packages.front()->installLog().value_or("") + "\n"),
                     "the log asked for ends the log");
    }
    return 0;
}

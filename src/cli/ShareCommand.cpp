#include "cli/ShareCommand.h"

#include "cli/CatalogueLoad.h"
#include "core/AddressBookNote.h"
#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"
#include "platform/FileManager.h"
#include "platform/Strings.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

namespace stowhaven {

int ShareCommand::runVCard(const std::string& file, std::ostream& out, std::ostream& errors) {
    loadCatalogue();
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    const auto note = catalogue.getABVCardCurrentBackupSessionDataFormat();
    if (!note || note->empty()) {
        fmt::print(errors, "stowhaven: {}\n", Strings::localized("NOTHING_TO_SHARE"));
        return 1;
    }
    std::string error;
    if (!FileManager::writeFile(file, AddressBookNote::vCardOf(*note), &error)) {
        fmt::print(errors, "stowhaven: {}: {}\n", Strings::localized("ERROR_CREATING_VCARD"), error);
        return 1;
    }
    const auto date = catalogue.currentBackupSession()->sessionDate();
    fmt::print(out, "The session of {} is in {}.\n", date ? gDateFormatter.stringFromDate(*date) : "(null)", file);
    return 0;
}

}  // namespace stowhaven

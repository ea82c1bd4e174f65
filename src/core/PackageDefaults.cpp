#include "core/PackageDefaults.h"

#include "items/SelectionDefaults.h"

namespace stowhaven {

bool isPackageSelectedByDefault(const CydiaFile& package, bool backup) {
    static SelectionDefaults lists("DefaultPackages_Backup", "DefaultPackages_Restore");
    DefaultList& list = lists.side(backup);
    return !list.names() || (package.packageName() && list.contains(*package.packageName()));
}

}  // namespace stowhaven

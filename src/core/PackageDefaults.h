#pragma once

#include "core/CydiaFile.h"

namespace stowhaven {

// Whether a package comes up selected in a direction: every package while that direction's
// default list ("DefaultPackages_Backup", "DefaultPackages_Restore") is absent, else only
// the packages whose identifier it names. A package installed after the list was saved is
// thus selected only when the list is absent, as for the other kinds of items.
bool isPackageSelectedByDefault(const CydiaFile& package, bool backup);

}  // namespace stowhaven

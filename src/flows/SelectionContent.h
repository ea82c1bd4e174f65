#pragma once

#include "flows/SelectionKind.h"
#include "flows/SelectionList.h"

namespace stowhaven {

// The lines of a list in a direction: for a backup what the device holds, for a restore
// what the current session holds. Packages come by section, then by name.
SelectionRows selectionRows(SelectionKind kind, bool backup);

// What is selected in ROWS, kept as the default of the next time in the direction the user
// works in (gIsBackupMode). A list
// of which every line is selected, and every line can stand in it, is kept as none, which
// stands for every item, those found later too.
void saveSelectionAsDefault(SelectionKind kind, const SelectionRows& rows);

}  // namespace stowhaven

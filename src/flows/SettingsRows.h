#pragma once

#include "storage/StorageType.h"

#include <span>
#include <string>
#include <vector>

namespace stowhaven {

// One row of the engines on the settings screen.
struct EngineRow {
    StorageType type;
    const char* title;
};

// The nine engines in the screen's fixed order: Box, Dropbox, FTP, Google Drive, ownCloud,
// OneDrive, SugarSync, local storage, the address book.
std::span<const EngineRow> engineRows();

// One row of the list of switches.
struct SwitchRow {
    enum class Kind {
        Switch,  // a boolean setting
        Slider,  // a level from 0 to 1
        Reset,   // turned on, resets and ends the program
    };

    Kind kind;
    const char* title;
    // The setting the row shows and writes; for a reset, the setting that asks for it.
    const char* key;
};

struct SwitchSection {
    const char* title;
    std::vector<SwitchRow> rows;
};

// The list of switches in its eleven sections, the last a product line without rows.
const std::vector<SwitchSection>& switchSections();

}  // namespace stowhaven

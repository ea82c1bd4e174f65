#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace stowhaven {

// The known places of tweaks and features, one row each, and what each type of place is
// archived as. The table is data: the list of archivable folders is made from it.
struct ArchivableFolderRow {
    enum class Condition { Always, IPhoneOnly, WithVoiceMemosApplication };

    // The name: this text, with "{}" filled in by the text of `nameKey` where both are given,
    // or the text of `nameKey` alone.
    const char* name;
    const char* nameKey;
    // Empty for a place no package owns.
    const char* packageName;
    std::int32_t type;
    // The place is the first of these that exists, or the last one when none does; a row has
    // one to three.
    std::array<const char*, 3> paths;
    bool asFile;
    bool showContent;
    bool showSubFolders;
    Condition condition = Condition::Always;
    // The last path of the row is a folder, though the others are files.
    bool lastPathIsFolder = false;
};

class ArchivableFolderTable {
public:
    static std::span<const ArchivableFolderRow> rows();

    // Whether PATH is one of the places the rows of TYPE name.
    static bool isPlaceOf(std::int32_t type, const std::string& path);
    // What a type's archive is named; a type without a name of its own gets
    // "Unknown-<the present date>", another name at each call.
    static std::string archiveName(std::int32_t type);
    // The icon resource of the type.
    static std::string iconName(std::int32_t type);
    // The settings key (before "_Backup" or "_Restore") of the items chosen by default;
    // none for most types.
    static std::optional<std::string> defaultKey(std::int32_t type);
};

}  // namespace stowhaven

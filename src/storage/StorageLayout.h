#pragma once

#include "platform/Date.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// Where sessions lie on a storage, the same on every engine:
//
//   <base>                                  the program's folder, "/Stowhaven" by default
//   <base>/<device name>                    the device directory, one per device
//   <device directory>/<stamp>.stowhvn      the history file of one session
//   <device directory>/<stamp>              the session directory, when it has bulk data
//   <session directory>/<KIND>              a data directory, one per kind of data
//
// The stamp is the session's date in the device's time zone, "yyyy-MM-dd_HH~mm~ss", which
// sorts as text in date order. Local storage keeps no device directory.
class StorageLayout {
public:
    static constexpr std::string_view kHistoryFileSuffix = ".stowhvn";
    static constexpr std::string_view kBaseDirectoryName = "Stowhaven";

    static std::string stamp(Date date);
    // Nothing for a text that is no stamp.
    static std::optional<Date> dateOfStamp(std::string_view stamp);
    static std::string historyFileName(Date date);
    // The date of a history file's name, every ".stowhvn" in it taken out first.
    static std::optional<Date> dateOfHistoryFile(std::string_view name);

    static std::string deviceDirectory(std::string_view base, std::string_view deviceName);
    static std::string sessionDirectory(std::string_view deviceDirectory, Date date);
    static std::string dataDirectory(std::string_view sessionDirectory, std::string_view kind);

    // The history files of a directory listing: the names that end in ".stowhvn" (a
    // case-sensitive test), in listing order.
    static std::vector<std::string> existingFiles(const std::vector<std::string>& listing);
    // The most recent session's history file: the last of the list, which no engine sorts.
    static std::optional<std::string> mostRecent(const std::vector<std::string>& existingFiles);
};

}  // namespace stowhaven

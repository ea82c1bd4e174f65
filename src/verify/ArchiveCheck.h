#pragma once

#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// Whether a fetched archive of a session would unpack in a restore: deciphered first when
// it is enciphered (with the built-in pass phrase, as the restore does), then listed member
// by member exactly as the restore lists it before it unpacks. Answers nothing for a sound
// archive, or the fault in a few words. The file is removed in either case.
std::optional<std::string> faultOfArchive(const std::string& archive);

// The same for an archive cut into PARTS, which stay as they are. A plain tar is listed
// where its parts lie; an enciphered or compressed one is first joined into the file JOINED,
// which goes after.
std::optional<std::string> faultOfArchiveParts(const std::vector<std::string>& parts, const std::string& joined);

}  // namespace stowhaven

#pragma once

#include <optional>
#include <string>

namespace stowhaven {

// Whether a fetched archive of a session would unpack in a restore: deciphered first when
// it is enciphered (with the built-in pass phrase, as the restore does), then listed member
// by member exactly as the restore lists it before it unpacks. Answers nothing for a sound
// archive, or the fault in a few words. The file is removed in either case.
std::optional<std::string> faultOfArchive(const std::string& archive);

}  // namespace stowhaven

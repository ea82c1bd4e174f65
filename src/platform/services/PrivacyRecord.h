#pragma once

#include <string>

namespace stowhaven {

// The owner's decisions on what the program may reach, as the device records them: a row
// of the `access` table of its privacy database, <var>/mobile/Library/TCC/TCC.db, per
// service ("kTCCServiceAddressBook", "kTCCServicePhotos") for the program's bundle
// identifier.
namespace PrivacyRecord {

inline constexpr const char* kClient = "com.larkmoor.stowhaven";

enum class Decision { None, Allowed, Refused };

// No file, no table or no row: nobody has decided yet.
Decision decisionFor(const char* service);
// Records the owner's yes, as the device does when the owner is asked.
bool recordGrant(const char* service, std::string* error);

}  // namespace PrivacyRecord

}  // namespace stowhaven

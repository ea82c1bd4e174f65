#pragma once

#include "platform/plist/PlistValue.h"
#include "restore/DataRestoreOperation.h"

#include <memory>

namespace stowhaven {

class RepositorySource;

// Puts the chosen sources of the session back into the package manager's two records of
// them: the "CydiaSources" of its settings file and its apt list, one line a source. The
// session's own copy of the settings gives the "Sections" entry; "LastUpdate" goes, so
// that the package manager reads its sources again, and apt-get updates its lists.
//
// A source whose line would hold a newline or another control character is left out of
// both records: the package manager writes its apt list from its settings.
class SourcesRestoreOperation final : public DataRestoreOperation {
public:
    void main() override;

private:
    void restore();
    // Adds the source to the device's list, to CYDIA_SOURCES and to the apt list.
    void restoreSource(const std::shared_ptr<RepositorySource>& source, PlistValue::Dictionary& cydiaSources);
};

}  // namespace stowhaven

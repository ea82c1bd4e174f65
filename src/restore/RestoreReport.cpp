#include "restore/RestoreReport.h"

#include "platform/Log.h"

namespace stowhaven {

RestoreReport& RestoreReport::shared() {
    static RestoreReport report;
    return report;
}

void RestoreReport::clear() { failures_.set({}); }

void RestoreReport::add(const std::string& what, const std::string& reason) {
    SH_LOG("{} is not restored: {}. Nothing of it was unpacked.", what, reason);
    failures_.with([&](std::vector<Failure>& failures) { failures.push_back({what, reason}); });
}

}  // namespace stowhaven

#pragma once

#include "items/Application.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace stowhaven {

// Finds the App Store applications of the device, in the layout its system keeps: the
// bundles with their data beside them before system version 8, the bundles and the data
// in containers apart from then on.
class ApplicationScan {
public:
    using Applications = std::vector<std::shared_ptr<Application>>;

    // Every application but Apple's own, measured, selected where the storage holds files,
    // and sorted by display name. The largest selected one becomes the Supervisor's largest
    // application and starts deselected. The applications of the session that the device
    // has (SESSION APPLICATIONS, by bundle identifier) take its paths. Given the applications
    // an earlier scan FOUND a moment ago, the list is made of copies of those, as they were
    // found and measured, instead of walking the device again.
    static Applications buildListOfApplications(
        const std::map<std::string, std::shared_ptr<Application>>& sessionApplications, const Applications& found = {});
};

}  // namespace stowhaven

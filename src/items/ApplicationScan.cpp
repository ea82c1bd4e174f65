#include "items/ApplicationScan.h"

#include "core/Supervisor.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "platform/plist/PlistCodec.h"

#include <algorithm>
#include <filesystem>
#include <optional>

namespace stowhaven {

namespace {

constexpr const char* kOldApplicationsFolder = "/var/mobile/Applications";
constexpr const char* kBundleContainersFolder = "/var/mobile/Containers/Bundle/Application";
constexpr const char* kSystemBundleContainersFolder = "/var/containers/Bundle/Application";

std::string bundlesFolder() {
    if (!Application::hasDataContainers()) return kOldApplicationsFolder;
    return FileManager::fileExists(DeviceRoot::path(kBundleContainersFolder)) ? kBundleContainersFolder
                                                                              : kSystemBundleContainersFolder;
}

// The device path of each bundle's Info.plist: in each folder of the bundles' folder, the
// first item that holds one.
std::vector<std::string> infoPlistsIn(const std::string& folder) {
    std::vector<std::string> plists;
    for (const std::string& entry :
         FileManager::contentsOfDirectory(DeviceRoot::path(folder)).value_or(std::vector<std::string>{})) {
        const std::string container = folder + "/" + entry;
        for (const std::string& item :
             FileManager::contentsOfDirectory(DeviceRoot::path(container)).value_or(std::vector<std::string>{})) {
            std::string plist = container + "/" + item;
            if (!plist.ends_with("Info.plist")) plist += "/Info.plist";
            if (FileManager::isRegularFile(DeviceRoot::path(plist))) {
                plists.push_back(plist);
                break;
            }
        }
    }
    return plists;
}

// The display name, else the bundle name, else the folder's name up to its first ".".
std::string displayNameOf(const PlistValue::Dictionary& info, const std::string& name) {
    if (const std::string* displayName = stringForKey(info, "CFBundleDisplayName")) return *displayName;
    if (const std::string* bundleName = stringForKey(info, "CFBundleName")) return *bundleName;
    return name.substr(0, name.find('.'));
}

// The icon named in the Info.plist, the "@2x" one first among several; failing a file of
// that name, the artwork beside the bundle.
std::optional<std::string> iconOf(const PlistValue::Dictionary& info, const std::string& homePath) {
    std::optional<std::string> icon;
    if (const std::string* file = stringForKey(info, "CFBundleIconFile")) {
        icon = *file;
    } else if (const PlistValue* files = valueForKey(info, "CFBundleIconFiles")) {
        std::vector<std::string> names;
        if (const std::string* single = files->asString()) names.push_back(*single);
        const auto collect = [&](const PlistValue& value) {
            if (const std::string* iconName = value.asString()) names.push_back(*iconName);
        };
        if (const auto* list = files->asArray()) std::for_each(list->begin(), list->end(), collect);
        if (const auto* map = files->asDictionary()) {
            for (const auto& [key, value] : *map) collect(value);
        }
        const auto retina = std::find_if(names.begin(), names.end(), [](const std::string& iconName) {
            return iconName.find("@2x") != std::string::npos;
        });
        if (retina != names.end())
            icon = *retina;
        else if (!names.empty())
            icon = names.front();
    }
    if (icon) icon = homePath + "/" + *icon;
    if (!icon || !FileManager::isRegularFile(DeviceRoot::path(*icon))) icon = homePath + "/../iTunesArtwork";
    return icon;
}

// Every application of the device but Apple's own, read from its Info.plist and measured;
// nothing when the bundles' folder can't be read.
std::optional<ApplicationScan::Applications> applicationsOnDevice() {
    const std::string folder = bundlesFolder();
    if (!FileManager::contentsOfDirectory(DeviceRoot::path(folder))) {
        SH_LOG("Couldn't get the content of <{}>", folder);
        return std::nullopt;
    }
    const std::vector<std::string> plists = infoPlistsIn(folder);
    SH_LOG("{} applications...", plists.size());
    const DataContainers containers = DataContainers::read();

    ApplicationScan::Applications applications;
    for (const std::string& plist : plists) {
        const auto info = PlistCodec::readFile(DeviceRoot::path(plist));
        const PlistValue::Dictionary fields =
            info && info->isDictionary() ? *info->asDictionary() : PlistValue::Dictionary{};
        const std::string* identifier = stringForKey(fields, "CFBundleIdentifier");
        if (identifier && identifier->starts_with("com.apple.")) {
            SH_LOG("Ignoring Apple's app <{}>...", *identifier);
            continue;
        }
        if (!identifier) SH_LOG("\tNo bundle id found in <{}>", plist);
        const std::string homePath = std::filesystem::path(plist).parent_path().string();
        std::string name = std::filesystem::path(homePath).filename().string();
        if (name.ends_with(".app")) name.resize(name.size() - 4);

        auto application = std::make_shared<Application>(name);
        application->setBundleIdentifier(identifier ? std::optional(*identifier) : std::nullopt);
        application->setHomePath(homePath);
        application->setDisplayName(displayNameOf(fields, name));
        application->setDocsAndLibsDirSizes(containers);
        application->setIconPath(iconOf(fields, homePath));
        applications.push_back(application);
    }
    return applications;
}

ApplicationScan::Applications copiesOf(const ApplicationScan::Applications& applications) {
    ApplicationScan::Applications copies;
    for (const auto& application : applications) copies.push_back(std::make_shared<Application>(*application));
    return copies;
}

}  // namespace

ApplicationScan::Applications ApplicationScan::buildListOfApplications(
    const std::map<std::string, std::shared_ptr<Application>>& sessionApplications, const Applications& found) {
    Supervisor& supervisor = Supervisor::shared();
    supervisor.notifyProgress(std::nullopt, Strings::localized("LOADING_APPLICATIONS"));
    auto applications = found.empty() ? applicationsOnDevice() : copiesOf(found);
    if (!applications) return {};
    Application::initializeDefaults();
    for (const auto& application : *applications) {
        if (supervisor.isCloudStorage()) {
            application->select();
        } else {
            application->deselect();
        }
        const auto largest = supervisor.largestApplication();
        if (application->isSelected() && (!largest || application->totalSize() > largest->totalSize())) {
            supervisor.setLargestApplication(application);
        }
        const auto& identifier = application->bundleIdentifier();
        if (!identifier) continue;
        if (const auto stored = sessionApplications.find(*identifier); stored != sessionApplications.end()) {
            stored->second->replacePathUsingApplication(*application);
        }
    }
    // The biggest application starts out not chosen.
    if (const auto largest = supervisor.largestApplication()) largest->deselect();
    sortByCompare(*applications);
    return *applications;
}

}  // namespace stowhaven

#include "items/Application.h"

#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "core/FileSizes.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "items/SelectionDefaults.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/Strings.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace stowhaven {

namespace {

constexpr std::int32_t kMegabytesUnit = 2;

// "DefaultApps_Backup" and "_Restore": entries "bundle id,documents,library" with "1" for
// a folder that is taken.
SelectionDefaults& defaultLists() {
    static SelectionDefaults lists("DefaultApps_Backup", "DefaultApps_Restore");
    return lists;
}

// The folders an entry of a default list takes, by bundle identifier: an entry of three
// pieces gives its two flags, any other only its first piece, with no flags.
std::optional<std::vector<std::string>> defaultEntryFor(bool backupSide, const std::string& bundleIdentifier,
                                                        bool& listed) {
    const auto entries = defaultLists().side(backupSide).names();
    listed = entries.has_value();
    if (!entries) return std::nullopt;
    for (const std::string& entry : *entries) {
        const std::vector<std::string> pieces = textutil::split(entry, ',');
        if (pieces.front() != bundleIdentifier) continue;
        if (pieces.size() == 3) return std::vector<std::string>{pieces[1], pieces[2]};
        return std::vector<std::string>{};
    }
    return std::nullopt;
}

// A size in megabytes in the largest unit that shows it as 1 or more, down to bytes.
std::pair<double, std::int32_t> inBestUnit(double megabytes) {
    double size = megabytes;
    std::int32_t unit = kMegabytesUnit;
    for (int step = 0; step < 2 && size != 0 && size < 1; ++step) {
        size *= 1024;
        --unit;
    }
    return {size, unit};
}

std::optional<Date> modificationDateOf(const std::optional<std::string>& devicePath) {
    if (!devicePath) return std::nullopt;
    const auto attributes = FileManager::attributesOfItem(DeviceRoot::path(*devicePath));
    if (!attributes) return std::nullopt;
    return Date::dateWithTimeIntervalSince1970(static_cast<double>(attributes->modificationTime));
}

double bytesOf(double size, std::int32_t unit) { return size * std::pow(1024.0, unit); }

// The archive keeps "installDate" as a number written by an integer call, and reads it
// as an object: a date where one stands, else the number as seconds since the reference date.
std::optional<Date> decodeInstallDate(KeyedUnarchiver& coder) {
    if (coder.containsNumberForKey("installDate")) return Date(coder.decodeDoubleForKey("installDate"));
    return coder.decodeDateForKey("installDate");
}

std::int64_t wholeSeconds(Date date) {
    const double seconds = date.timeIntervalSinceReferenceDate();
    if (!std::isfinite(seconds)) return 0;
    constexpr double kLimit = 9.2e18;  // within the 64-bit integers
    return static_cast<std::int64_t>(std::clamp(seconds, -kLimit, kLimit));
}

}  // namespace

Application::Application(std::string name) : SelectableItem(std::move(name)) {}

Application::Application(KeyedUnarchiver& coder)
    : SelectableItem(coder),
      documentsDirSizeUnit_(coder.decodeInt32ForKey("documentsDirSizeUnit")),
      libraryDirSizeUnit_(coder.decodeInt32ForKey("libraryDirSizeUnit")),
      displayName_(coder.decodeStringForKey("displayName")),
      iconPath_(coder.decodeStringForKey("iconPath")),
      homePath_(coder.decodeStringForKey("homePath")),
      libraryPath_(coder.decodeStringForKey("libraryPath")),
      documentPath_(coder.decodeStringForKey("documentPath")),
      bundleIdentifier_(coder.decodeStringForKey("bundleIdentifier")),
      installDate_(decodeInstallDate(coder)),
      documentsDirSize_(coder.decodeDoubleForKey("documentsDirSize")),
      libraryDirSize_(coder.decodeDoubleForKey("libraryDirSize")) {
    fDocumentsDir_ = documentsDirSize_ > 0;
    fLibraryDir_ = libraryDirSize_ > 0;
    totalBytes_ = bytesOfFolders();
}

std::shared_ptr<Codable> Application::initWithCoder(KeyedUnarchiver& coder) {
    return std::make_shared<Application>(coder);
}

void Application::encodeWithCoder(KeyedArchiver& coder) const {
    SelectableItem::encodeWithCoder(coder);
    coder.encodeInt32(documentsDirSizeUnit_, "documentsDirSizeUnit");
    coder.encodeInt32(libraryDirSizeUnit_, "libraryDirSizeUnit");
    coder.encodeObject(displayName_, "displayName");
    coder.encodeObject(iconPath_, "iconPath");
    coder.encodeObject(homePath_, "homePath");
    coder.encodeObject(libraryPath_, "libraryPath");
    coder.encodeObject(documentPath_, "documentPath");
    coder.encodeObject(bundleIdentifier_, "bundleIdentifier");
    if (installDate_) coder.encodeInt64(wholeSeconds(*installDate_), "installDate");
    coder.encodeDouble(documentsDirSize_, "documentsDirSize");
    coder.encodeDouble(libraryDirSize_, "libraryDirSize");
}

std::string Application::archiveName() const { return textutil::percentEncoded(name()) + ".tbz"; }

void Application::select() {
    setSelected(true);
    fDocumentsDir_ = fLibraryDir_ = true;
}

void Application::deselect() {
    setSelected(false);
    fDocumentsDir_ = fLibraryDir_ = false;
}

std::optional<std::string> Application::getAppId() const {
    const std::vector<std::string> components = textutil::split(homePath_.value_or(""), '/');
    if (components.size() < 2) {
        SH_LOG("Can't process <{}>", homePath_.value_or("(null)"));
        return std::nullopt;
    }
    return components[components.size() - 2];
}

void Application::replacePathUsingApplication(const Application& installed) {
    SH_LOG("{}", description());
    homePath_ = installed.homePath_;
    iconPath_ = installed.iconPath_;
    documentPath_ = installed.documentPath_;
    bool isDirectory = false;
    fInstalled_ = homePath_ && FileManager::fileExists(DeviceRoot::path(*homePath_), isDirectory) && isDirectory;
    SH_LOG("=> {}", description());
}

// With no container holding the bundle or its preferences, the last one of the list is
// taken: that is how it has always been, and it stays so.
void Application::findDocsAndLibsDirs(const DataContainers& dataContainers) {
    const auto container = dataContainers.containerOf(name(), bundleIdentifier_.value_or(""));
    if (!container) {
        SH_LOG("Can't find <Documents> or <Library> directories for <{}>", name());
        return;
    }
    documentPath_ = *container + "/Documents";
    libraryPath_ = *container + "/Library";
}

// Older systems keep the data beside the bundle; the paths are the home path with
// "../Documents" and "../Library" put straight after it, as they always were.
void Application::setDocsAndLibsDirSizes(const DataContainers& dataContainers) {
    if (hasDataContainers()) {
        findDocsAndLibsDirs(dataContainers);
    } else {
        documentPath_ = homePath_.value_or("") + "../Documents";
        libraryPath_ = homePath_.value_or("") + "../Library";
    }
    const auto measure = [](const std::optional<std::string>& path, double& size, std::int32_t& unit) {
        if (!path) {
            size = kUnmeasuredDirSize;
        } else {
            std::tie(size, unit) = inBestUnit(FileSizes::getFileSizeAtPath(DeviceRoot::path(*path), std::nullopt));
        }
        // A folder that wasn't found counts nothing from here on.
        if (!(size > 0)) size = 0;
    };
    measure(documentPath_, documentsDirSize_, documentsDirSizeUnit_);
    measure(libraryPath_, libraryDirSize_, libraryDirSizeUnit_);
    totalBytes_ = bytesOfFolders();

    installDate_ = modificationDateOf(homePath_);
    if (!installDate_) installDate_ = modificationDateOf(documentPath_);
    if (!installDate_) installDate_ = modificationDateOf(libraryPath_);
    fInstalled_ = installDate_.has_value();
    if (!installDate_) installDate_ = Platform::current().clock().date();
}

double Application::totalSize() {
    if (documentsDirSize_ < 0 || libraryDirSize_ < 0) {
        setDocsAndLibsDirSizes(DataContainers::read());
    }
    return totalBytes_ / FileSizes::kBytesPerMegabyte;
}

std::string Application::detailString() const {
    std::string size = "0Mb";
    if (isSelected()) {
        const double megabytes = totalBytes_ / FileSizes::kBytesPerMegabyte;
        const auto [shown, unit] = inBestUnit(megabytes);
        size = textutil::decimalText(shown) + (megabytes == 0 ? "Mb" : unitToString(unit));
    }
    std::string detail =
        fmt::format("{} (Docs:{:.3f}{}, Library:{:.3f}{})", size, documentsDirSize_,
                    unitToString(documentsDirSizeUnit_), libraryDirSize_, unitToString(libraryDirSizeUnit_));
    if (!fInstalled_) {
        detail += " | " + Strings::localized(gAutoScanAppStoreAppsEnabled ? "APP_NOT_INSTALLED" : "APP_NOT_SCANNED");
    }
    return detail;
}

void Application::applyDefaultEntry(bool backupSide) {
    bool listed = false;
    const auto entry = defaultEntryFor(backupSide, bundleIdentifier_.value_or(""), listed);
    if (backupSide) {
        if (!listed) return;
        select();
        if (!entry) deselect();
    } else {
        deselect();
        if (entry) select();
    }
    if (entry && entry->size() == 2) {
        fDocumentsDir_ = (*entry)[0] == "1";
        fLibraryDir_ = (*entry)[1] == "1";
    }
}

void Application::selectIfBackupDefault() { applyDefaultEntry(true); }

void Application::selectIfRestoreDefault() { applyDefaultEntry(false); }

void Application::initializeDefaults() { defaultLists().reset(); }

std::string Application::unitToString(std::int32_t unit) {
    static constexpr std::array<const char*, 5> kUnits = {"b", "Kb", "Mb", "Gb", "Tb"};
    return unit >= 0 && unit < static_cast<std::int32_t>(kUnits.size()) ? kUnits[static_cast<std::size_t>(unit)] : "b";
}

std::int32_t Application::stringToUnit(std::string_view unit) {
    if (unit.empty()) return 0;
    switch (unit.front()) {
        case 'K':
            return 1;
        case 'M':
            return 2;
        case 'G':
            return 3;
        case 'T':
            return 4;
        default:
            return 0;
    }
}

bool Application::hasDataContainers() {
    const std::string& version = Supervisor::shared().deviceSystemVersion();
    int major = 0;
    std::from_chars(version.data(), version.data() + version.size(), major);
    return major >= 8;
}

double Application::bytesOfFolders() const {
    return bytesOf(documentsDirSize_, documentsDirSizeUnit_) + bytesOf(libraryDirSize_, libraryDirSizeUnit_);
}

}  // namespace stowhaven

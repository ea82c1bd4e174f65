#include "items/Application.h"

#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "core/Text.h"

#include <algorithm>
#include <cmath>

namespace stowhaven {

namespace {

constexpr double kBytesPerMegabyte = 1048576.0;

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

double Application::totalSize() const { return totalBytes_ / kBytesPerMegabyte; }

double Application::bytesOfFolders() const {
    return bytesOf(documentsDirSize_, documentsDirSizeUnit_) + bytesOf(libraryDirSize_, libraryDirSizeUnit_);
}

}  // namespace stowhaven

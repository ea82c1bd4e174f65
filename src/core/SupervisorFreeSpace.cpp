#include "core/Supervisor.h"

#include "core/FileSizes.h"
#include "core/ProcessFlags.h"
#include "core/Text.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "platform/TemporaryDirectory.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <limits>

namespace stowhaven {

namespace {

// The size of the largest data set when there is none to weigh.
constexpr double kNoDataSetSize = -32768;
constexpr const char* kNoDataSetName = "N/A";

struct DataSetEntry {
    StockDataSet set;
    const char* name;
};

// In the order they are weighed: on equal sizes the earlier one stays the largest.
constexpr std::array<DataSetEntry, 10> kDataSets = {{
    {StockDataSet::Calendar, "Calendar data"},
    {StockDataSet::Chat, "Messages data"},
    {StockDataSet::Health, "Health data"},
    {StockDataSet::Phone, "Phone data"},
    {StockDataSet::Videos, "Videos"},
    {StockDataSet::Contacts, "Contacts data"},
    {StockDataSet::Notes, "Notes data"},
    {StockDataSet::Maps, "Maps data"},
    {StockDataSet::Photos, "Photos"},
    {StockDataSet::Safari, "Safari data"},
}};

std::string lowercased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// Cut to a whole number of megabytes that a 32-bit integer holds.
double wholeMegabytes(double megabytes) {
    constexpr double kLowest = std::numeric_limits<std::int32_t>::min();
    constexpr double kHighest = std::numeric_limits<std::int32_t>::max();
    return std::trunc(std::clamp(megabytes, kLowest, kHighest));
}

}  // namespace

void Supervisor::refreshFreeSpace() {
    if (freeSpace_ != 0.0) return;
    const auto attributes = FileManager::attributesOfFileSystem(TemporaryDirectory::path());
    if (!attributes) return;
    freeSpace_ = static_cast<double>(attributes->freeSize) / FileSizes::kBytesPerMegabyte;
    SH_LOG("FreeSpace: {}Mb", freeSpace_.load());
}

std::shared_ptr<Application> Supervisor::largestApplication() const {
    std::lock_guard lock(mutex_);
    return largestApplication_;
}

void Supervisor::setLargestApplication(std::shared_ptr<Application> application) {
    std::lock_guard lock(mutex_);
    largestApplication_ = std::move(application);
}

void Supervisor::setDeviceDataSets(DataSetSizesProvider provider) {
    std::lock_guard lock(mutex_);
    deviceDataSets_ = std::move(provider);
}

void Supervisor::setSessionDataSets(DataSetSizesProvider provider) {
    std::lock_guard lock(mutex_);
    sessionDataSets_ = std::move(provider);
}

std::shared_ptr<const DataSetSizes> Supervisor::dataSets(bool backupDirection) const {
    DataSetSizesProvider provider;
    {
        std::lock_guard lock(mutex_);
        provider = backupDirection ? deviceDataSets_ : sessionDataSets_;
    }
    return provider ? provider() : nullptr;
}

DataSet Supervisor::findLargestDataSet() const {
    const std::shared_ptr<Application> application = largestApplication();
    if (!application) return {kNoDataSetName, kNoDataSetSize};
    DataSet largest = gIsBackupMode ? DataSet{application->displayName(), application->totalSize()}
                                    : DataSet{kNoDataSetName, kNoDataSetSize};
    const std::shared_ptr<const DataSetSizes> source = dataSets(gIsBackupMode);
    if (!source) return largest;
    for (const DataSetEntry& entry : kDataSets) {
        const double size = source->dataSize(entry.set);
        if (source->hasData(entry.set) && size > largest.size) largest = {entry.name, size};
    }
    return largest;
}

double Supervisor::engineFreeSpace() const {
    const auto engine = currentStorageEngine();
    return engine ? engine->freeSpace() : 0.0;
}

bool Supervisor::hasSystemFreeSpaceAvailability() const { return findLargestDataSet().size < freeSpace(); }

bool Supervisor::hasCloudFreeSpaceAvailability() const { return findLargestDataSet().size < engineFreeSpace(); }

bool Supervisor::hasValidFreeSpace() {
    if (isStorageAddressbook() || !(findLargestDataSet().size > 0.0)) return true;
    if (!hasSystemFreeSpaceAvailability()) {
        displayNotEnoughRoomMessage();
        return false;
    }
    // Only the engine's test can be switched off; the device's own always holds.
    if (!gFreeSpaceCheckEnabled || !gIsBackupMode) return true;
    if (hasCloudFreeSpaceAvailability()) return true;
    displayNotEnoughRoomOnCloudMessage();
    return false;
}

void Supervisor::displayNotEnoughRoomMessage() {
    const DataSet largest = findLargestDataSet();
    const double free = freeSpace();
    SH_LOG("{}:{:.3f}Mb | local.freeSpace:{:.3f}Mb", largest.name, largest.size, free);
    const std::string operation = gIsBackupMode ? "archive" : lowercased(Strings::localized("RESTORE_TEXT"));
    showAlert(Strings::localized("WARNING"),
              Strings::format("NO_ENOUGH_SPACE", operation, largest.name, textutil::decimalText(largest.size),
                              textutil::decimalText(free), textutil::decimalText(largest.size)));
}

void Supervisor::displayNotEnoughRoomOnCloudMessage() {
    const DataSet largest = findLargestDataSet();
    const double free = engineFreeSpace();
    const std::string engineName = storageEngineName();
    SH_LOG("{}:{:.3f}Mb | {}.freeSpace:{:.3f}Mb", largest.name, largest.size, engineName, free);
    const std::shared_ptr<const DataSetSizes> device = dataSets(true);
    const double backupTotalSize = device ? device->backupTotalSize() : 0.0;
    showAlert(Strings::localized("WARNING"),
              free > 0.0
                  ? Strings::format("NO_ENOUGH_SPACE_ON_CLOUD", largest.name, textutil::decimalText(largest.size),
                                    textutil::decimalText(free), engineName)
                  : Strings::format("NO_FREE_SPACE_ON_CLOUD", textutil::decimalText(backupTotalSize), engineName));
}

double Supervisor::uploadLimit() const {
    if (isStorageLocal()) return wholeMegabytes(freeSpace());
    const auto engine = currentStorageEngine();
    return engine ? engine->fileSizeUploadLimit() : 0;
}

bool Supervisor::isFileWithinUploadLimit(double size, bool displayAlert, const std::optional<std::string>& name) {
    if (isStorageAddressbook() || size < uploadLimit()) return true;
    if (displayAlert) {
        showAlert(Strings::localized("UPLOAD_LIMIT_WARNING_TITLE"),
                  Strings::format("UPLOAD_LIMIT_WARNING_MESSAGE", name.value_or("[N/A]"), textutil::decimalText(size)));
    }
    return false;
}

}  // namespace stowhaven

// The readers of the package manager's files that the load and the sources restore read,
// on any bytes: a property list is taken as the package manager's settings (its sources
// and sections), any other text as the output of the package scan and as the apt list of
// sources.
//
// Beyond not failing: a package read from the scan is stored as a session line that reads
// back as the same package; every package lands in one section; a source read from the
// settings archives so that it reads back the same; and a line added to the apt list is
// found in it afterwards, so that a second restore doesn't add it again.

#include "FuzzSupport.h"
#include "core/CydiaFile.h"
#include "core/PackageScan.h"
#include "core/PackageSection.h"
#include "items/DeviceItems.h"
#include "platform/plist/PlistCodec.h"
#include "restore/AptSourceList.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace stowhaven;

constexpr std::string_view kSourceLine = "deb http://apt.example.org/ ./";

bool looksLikePlist(std::string_view bytes) {
    return bytes.starts_with("bplist00") || bytes.starts_with("<?xml") || bytes.starts_with("<plist");
}

void checkStoredLineReadsBack(const CydiaFile& package) {
    const std::string stored = package.backupData();
    const CydiaFile reread(stored);
    fuzz::expect(reread.packageName().has_value(), "a stored package reads back as a package");
    // A missing version is stored, and read back, as "(null)".
    fuzz::expect(!package.version() || reread.isEqual(package),
                 "a stored package reads back with its identifier and version");
    fuzz::expect(reread.backupData() == stored, "a stored package reads back the same");
}

void checkScan(std::string_view output) {
    std::vector<std::shared_ptr<CydiaFile>> packages;
    for (const std::string& line : PackageScan::linesOf(output)) {
        fuzz::expect(!line.empty() && line.find('\n') == std::string::npos, "the scan is read a line at a time");
        (void)PackageScan::parse(line);
        auto package = std::make_shared<CydiaFile>(line);
        if (!package->packageName()) continue;
        checkStoredLineReadsBack(*package);
        for (const char* system : {"8.1.2", "10", "", "4.2.1.1.1"}) (void)package->isFirmwareCompatible(system);
        packages.push_back(std::move(package));
    }
    const auto sections = PackageSection::sectionsOf(packages);
    const std::size_t grouped = std::accumulate(sections.begin(), sections.end(), std::size_t{0},
                                                [](std::size_t sum, const auto& section) {
                                                    return sum + section->packages().size();
                                                });
    fuzz::expect(grouped == packages.size(), "every package stands in one section");
}

void checkAptList(std::string_view list) {
    for (const std::string& line : PackageScan::linesOf(list)) {
        fuzz::expect(AptSourceList::holds(list, line), "the list holds each of its lines");
    }
    const std::string extended = AptSourceList::withLine(std::string(list), kSourceLine);
    fuzz::expect(extended.starts_with(list) && AptSourceList::holds(extended, kSourceLine),
                 "a line added to the list is found in it, after what was there");
}

void checkSourceArchivesBack(const std::shared_ptr<RepositorySource>& source) {
    const auto archive = KeyedArchiver::archivedData(source);
    if (!archive) return;
    const auto root = KeyedUnarchiver::unarchiveObjectWithData(*archive, fuzz::classesForFuzzing());
    const auto reread = root ? root->object<RepositorySource>() : nullptr;
    fuzz::expect(reread != nullptr, "an archived source reads back");
    fuzz::expect(reread->name() == source->name() && reread->link() == source->link() &&
                     reread->distribution() == source->distribution() && reread->type() == source->type() &&
                     reread->sections() == source->sections(),
                 "an archived source reads back the same");
}

void checkSettings(std::string_view bytes) {
    const auto settings = PlistCodec::parse(bytes);
    const auto* entries = settings ? settings->asDictionary() : nullptr;
    const PlistValue* sources = entries ? valueForKey(*entries, "CydiaSources") : nullptr;
    if (sources == nullptr || !sources->isDictionary()) return;
    for (const auto& source : DeviceItems::sourcesIn(*sources->asDictionary())) checkSourceArchivesBack(source);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes = fuzz::bytesOf(data, size);
    fuzz::useFuzzingDevice();
    if (looksLikePlist(bytes)) {
        checkSettings(bytes);
    } else {
        checkScan(bytes);
        checkAptList(bytes);
    }
    return 0;
}

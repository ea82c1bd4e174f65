#include "verify/CategoryCheck.h"

#include "core/FileSizes.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/FileManager.h"
#include "restore/StorageFetch.h"
#include "storage/StorageHelperProtocol.h"
#include "verify/ArchiveCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace stowhaven {

namespace {

// An index lists at most a thousand names of a dozen characters.
constexpr std::uint64_t kLargestIndex = 64 * 1024;

std::string partName(const std::string& kind, std::size_t position) { return fmt::format("{}-{:03}", kind, position); }

// The part names the index lists; a fault when it can't be had or read.
std::optional<std::vector<std::string>> indexedParts(StorageHelperProtocol& engine, Date date, const std::string& kind,
                                                     std::string& fault) {
    const std::string name = kind + ".idx";
    const auto index = fetchSessionFile(engine, name, date, std::nullopt);
    if (!index || !FileManager::isRegularFile(*index)) {
        fault = fmt::format("its index <{}> is missing", name);
        return std::nullopt;
    }
    const bool tooLarge = FileManager::sizeOfItem(*index) > kLargestIndex;
    const auto text = tooLarge ? std::nullopt : FileManager::contentsOfFile(*index);
    FileManager::removeItem(*index);
    if (!text) {
        fault = fmt::format("its index <{}> can't be read as one", name);
        return std::nullopt;
    }
    std::vector<std::string> parts = textutil::split(*text, '\n');
    std::erase(parts, "");
    if (parts.empty()) fault = fmt::format("its index <{}> names no part", name);
    return parts.empty() ? std::nullopt : std::optional(std::move(parts));
}

// A kind's stored files where they can be read: in place on an engine that keeps its files
// on the device, else fetched into the temporary folder. The fetched copies go with it.
class StoredFiles {
public:
    StoredFiles(StorageHelperProtocol& engine, Date date, std::string kind)
        : engine_(engine), inPlace_(dynamic_cast<StoredFileReading*>(&engine)), date_(date), kind_(std::move(kind)) {}
    ~StoredFiles() {
        for (const std::string& copy : fetched_) FileManager::removeItem(copy);
    }
    StoredFiles(const StoredFiles&) = delete;
    StoredFiles& operator=(const StoredFiles&) = delete;

    // The file NAME of the kind's folder; nothing when it isn't stored.
    std::optional<std::string> file(const std::string& name) {
        if (inPlace_) return inPlace_->storedFilePath(name, date_, kind_);
        auto copy = fetchSessionFile(engine_, name, date_, kind_);
        if (copy) fetched_.push_back(*copy);
        return copy && FileManager::isRegularFile(*copy) ? copy : std::nullopt;
    }

private:
    StorageHelperProtocol& engine_;
    StoredFileReading* inPlace_;
    Date date_;
    std::string kind_;
    std::vector<std::string> fetched_;
};

// The parts the index names, in turn, where they can be read; the fault when one isn't
// stored, is empty or stands out of order.
std::optional<std::vector<std::string>> partFiles(StoredFiles& stored, const std::string& kind,
                                                  const std::vector<std::string>& parts,
                                                  const CategoryCheck::Progress& progress, std::string& fault) {
    std::vector<std::string> files;
    for (std::size_t position = 0; position < parts.size(); ++position) {
        const std::string expected = partName(kind, position);
        // The restore joins the parts in the order of their names, whatever the index says.
        if (parts[position] != expected) {
            fault = fmt::format("its index names <{}> where <{}> belongs", parts[position], expected);
            return std::nullopt;
        }
        const auto part = stored.file(expected);
        if (!part) {
            fault = fmt::format("its part <{}> is missing", expected);
            return std::nullopt;
        }
        if (FileManager::sizeOfItem(*part) == 0) {
            fault = fmt::format("its part <{}> is empty", expected);
            return std::nullopt;
        }
        files.push_back(*part);
        if (progress) progress(position + 1, parts.size());
    }
    return files;
}

}  // namespace

CategoryCheck::Outcome CategoryCheck::run(StorageHelperProtocol& engine, Date date, const std::string& kind,
                                          const Progress& progress) {
    std::string fault;
    const auto parts = indexedParts(engine, date, kind, fault);
    if (!parts) return {fault, {}};
    StoredFiles stored(engine, date, kind);
    const auto files = partFiles(stored, kind, *parts, progress, fault);
    if (!files) return {fault, {}};
    // A part stored beyond the index's last would be joined in by the restore.
    if (const std::string next = partName(kind, parts->size()); stored.file(next)) {
        return {fmt::format("its index leaves out the stored part <{}>", next), {}};
    }
    std::uint64_t size = 0;
    for (const std::string& file : *files) size += FileManager::sizeOfItem(file);
    const std::string joined = Supervisor::shared().getTemporaryFileName(true) + ".joined";
    if (auto archiveFault = faultOfArchiveParts(*files, joined)) return {"its joined parts: " + *archiveFault, {}};
    return {std::nullopt, fmt::format("{} part(s), {:.3f}Mb", parts->size(),
                                      static_cast<double>(size) / FileSizes::kBytesPerMegabyte)};
}

}  // namespace stowhaven

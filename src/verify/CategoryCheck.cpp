#include "verify/CategoryCheck.h"

#include "core/FileSizes.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/FileManager.h"
#include "restore/StorageFetch.h"
#include "verify/ArchiveCheck.h"
#include "verify/VerifyCommands.h"

#include <fmt/format.h>

#include <algorithm>

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

// Appends the parts, in turn, to JOINED; answers the bytes joined, or the fault.
std::optional<std::uint64_t> joinParts(StorageHelperProtocol& engine, Date date, const std::string& kind,
                                       const std::vector<std::string>& parts, const std::string& joined,
                                       const CategoryCheck::Progress& progress, std::string& fault) {
    Supervisor& supervisor = Supervisor::shared();
    std::uint64_t joinedSize = 0;
    for (std::size_t position = 0; position < parts.size(); ++position) {
        const std::string expected = partName(kind, position);
        // The restore joins the parts in the order of their names, whatever the index says.
        if (parts[position] != expected) {
            fault = fmt::format("its index names <{}> where <{}> belongs", parts[position], expected);
            return std::nullopt;
        }
        const auto part = fetchSessionFile(engine, expected, date, kind);
        if (!part || !FileManager::isRegularFile(*part)) {
            fault = fmt::format("its part <{}> is missing", expected);
            return std::nullopt;
        }
        const std::uint64_t size = FileManager::sizeOfItem(*part);
        supervisor.systemExecute(VerifyCommands::appendPart(*part, joined));
        joinedSize += size;
        if (size == 0 || FileManager::sizeOfItem(joined) != joinedSize) {
            FileManager::removeItem(*part);
            fault = size == 0 ? fmt::format("its part <{}> is empty", expected)
                              : "its parts couldn't be joined (is the temporary folder full?)";
            return std::nullopt;
        }
        if (progress) progress(position + 1, parts.size());
    }
    return joinedSize;
}

}  // namespace

CategoryCheck::Outcome CategoryCheck::run(StorageHelperProtocol& engine, Date date, const std::string& kind,
                                          const Progress& progress) {
    std::string fault;
    const auto parts = indexedParts(engine, date, kind, fault);
    if (!parts) return {fault, {}};
    const std::string joined = Supervisor::shared().getTemporaryFileName(true) + ".joined";
    const auto size = joinParts(engine, date, kind, *parts, joined, progress, fault);
    if (!size) {
        FileManager::removeItem(joined);
        return {fault, {}};
    }
    // A part stored beyond the index's last would be joined in by the restore.
    const std::string next = partName(kind, parts->size());
    if (const auto extra = fetchSessionFile(engine, next, date, kind)) {
        FileManager::removeItem(*extra);
        FileManager::removeItem(joined);
        return {fmt::format("its index leaves out the stored part <{}>", next), {}};
    }
    if (auto archiveFault = faultOfArchive(joined)) return {"its joined parts: " + *archiveFault, {}};
    return {std::nullopt, fmt::format("{} part(s), {:.3f}Mb", parts->size(),
                                      static_cast<double>(*size) / FileSizes::kBytesPerMegabyte)};
}

}  // namespace stowhaven

#include "verify/ArchiveCheck.h"

#include "archive/ArchiveKind.h"
#include "archive/FileCipher.h"
#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"
#include "platform/FileManager.h"
#include "restore/ArchiveListing.h"
#include "verify/VerifyCommands.h"

#include <cstdint>

namespace stowhaven {

namespace {

constexpr const char* kNotATar = "doesn't list cleanly as a tar archive (damaged or cut short)";

std::optional<std::string> faultOfFile(const std::string& archive) {
    if (FileManager::sizeOfItem(archive) == 0) return "empty";
    if (FileCipher::isEnciphered(archive)) {
        CydiaFileManager::decryptFileAtPath(archive);
        if (FileCipher::isEnciphered(archive)) {
            return "doesn't decipher (another key, a damaged archive or a full temporary folder)";
        }
    }
    if (!listArchiveMembers(archive)) return kNotATar;
    return std::nullopt;
}

}  // namespace

std::optional<std::string> faultOfArchive(const std::string& archive) {
    auto fault = faultOfFile(archive);
    FileManager::removeItem(archive);
    return fault;
}

std::optional<std::string> faultOfArchiveParts(const std::vector<std::string>& parts, const std::string& joined) {
    if (!FileCipher::isEnciphered(parts.front()) && archiveKindOf(parts.front()) == ArchiveKind::PlainTar) {
        return listJoinedTarMembers(parts) ? std::nullopt : std::optional<std::string>(kNotATar);
    }
    std::uint64_t joinedSize = 0;
    for (const std::string& part : parts) {
        Supervisor::shared().systemExecute(VerifyCommands::appendPart(part, joined));
        joinedSize += FileManager::sizeOfItem(part);
        if (FileManager::sizeOfItem(joined) != joinedSize) {
            FileManager::removeItem(joined);
            return "couldn't be written out whole (is the temporary folder full?)";
        }
    }
    return faultOfArchive(joined);
}

}  // namespace stowhaven

#include "verify/ArchiveCheck.h"

#include "archive/FileCipher.h"
#include "core/CydiaFileManager.h"
#include "platform/FileManager.h"
#include "restore/ArchiveListing.h"

namespace stowhaven {

namespace {

std::optional<std::string> faultOfFile(const std::string& archive) {
    if (FileManager::sizeOfItem(archive) == 0) return "empty";
    if (FileCipher::isEnciphered(archive)) {
        CydiaFileManager::decryptFileAtPath(archive);
        if (FileCipher::isEnciphered(archive)) {
            return "doesn't decipher (another key, a damaged archive or a full temporary folder)";
        }
    }
    if (!listArchiveMembers(archive)) return "doesn't list cleanly as a tar archive (damaged or cut short)";
    return std::nullopt;
}

}  // namespace

std::optional<std::string> faultOfArchive(const std::string& archive) {
    auto fault = faultOfFile(archive);
    FileManager::removeItem(archive);
    return fault;
}

}  // namespace stowhaven

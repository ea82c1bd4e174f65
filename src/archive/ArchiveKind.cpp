#include "archive/ArchiveKind.h"

#include "archive/TarListing.h"
#include "platform/FileManager.h"

#include <string_view>

namespace stowhaven {

namespace {

constexpr std::size_t kTarBlock = 512;
// "BZh", the block size from '1' to '9', then the magic of a first block or, for an empty
// stream, of the stream's end.
constexpr std::size_t kBzip2Header = 10;
constexpr std::string_view kBzip2BlockMagic = "\x31\x41\x59\x26\x53\x59";
constexpr std::string_view kBzip2EndMagic = "\x17\x72\x45\x38\x50\x90";

bool isBzip2Header(std::string_view head) {
    if (head.size() < kBzip2Header || !head.starts_with("BZh") || head[3] < '1' || head[3] > '9') return false;
    const std::string_view magic = head.substr(4, kBzip2BlockMagic.size());
    return magic == kBzip2BlockMagic || magic == kBzip2EndMagic;
}

}  // namespace

ArchiveKind archiveKindOf(const std::string& path) {
    const auto head = FileManager::headOfFile(path, kTarBlock);
    if (!head) return ArchiveKind::Unknown;
    if (head->size() == kTarBlock && TarListing::isHeaderBlock(*head)) return ArchiveKind::PlainTar;
    return isBzip2Header(*head) ? ArchiveKind::Bzip2 : ArchiveKind::Unknown;
}

}  // namespace stowhaven

// The tar reader on any bytes, as archives from storage and old notes reach it, and the
// reader of what tar itself lists. Beyond not failing: what a listing says lies within the
// archive's bytes, a file reads as the same bytes in memory do, an archive with members is
// taken for plain tar whatever its first bytes spell, and a restore places no member of it
// outside the places it owns.

#include "FuzzSupport.h"
#include "archive/ArchiveKind.h"
#include "archive/TarListing.h"
#include "platform/DeviceRoot.h"
#include "restore/ArchiveListing.h"
#include "restore/ExtractionPlan.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace stowhaven;
using Member = TarListing::Member;
using Type = TarListing::Type;

constexpr std::uint64_t kBlock = 512;

void checkMembersLieInArchive(const std::vector<Member>& members, std::string_view archive) {
    std::uint64_t previousEnd = 0;
    for (const Member& member : members) {
        fuzz::expect(!member.name.empty(), "every member has a name");
        const bool link = member.type == Type::SymbolicLink || member.type == Type::HardLink;
        fuzz::expect(link == !member.linkTarget.empty(), "links, and only links, have a target");
        fuzz::expect(member.dataOffset % kBlock == 0 && member.dataOffset >= previousEnd + kBlock,
                     "a member's data starts on a block after its header");
        fuzz::expect(member.dataOffset <= archive.size() && member.size <= archive.size() - member.dataOffset,
                     "a member's data lies within the archive");
        previousEnd = member.dataOffset + member.size;
    }
}

bool sameMember(const Member& left, const Member& right) {
    return left.name == right.name && left.type == right.type && left.linkTarget == right.linkTarget &&
           left.size == right.size && left.dataOffset == right.dataOffset &&
           left.modificationTime == right.modificationTime;
}

// Also taken for plain tar when there is something to list, whatever its first bytes spell.
void checkFileReadsTheSame(const std::vector<Member>& members, std::string_view archive) {
    const std::string path = fuzz::writtenToDevice("archive.tar", archive);
    fuzz::expect(members.empty() || archiveKindOf(path) == ArchiveKind::PlainTar,
                 "an archive with members is taken for plain tar");
    const auto fromFile = TarListing::read(path);
    fuzz::expect(fromFile && fromFile->size() == members.size(), "a file lists as its bytes do");
    for (std::size_t index = 0; index < members.size(); ++index) {
        fuzz::expect(sameMember((*fromFile)[index], members[index]), "a file lists as its bytes do");
    }
}

bool isNormalAbsolute(std::string_view path) {
    return path.starts_with('/') && !path.ends_with('/') && path.find("//") == std::string_view::npos &&
           path.find("/./") == std::string_view::npos && path.find("/../") == std::string_view::npos &&
           !path.ends_with("/.") && !path.ends_with("/..");
}

bool isAtOrBelowOneOf(const std::string& path, const std::vector<std::string>& places) {
    for (const std::string& place : places) {
        const std::string folder = DeviceRoot::path(place);
        if (path == folder || (path.starts_with(folder) && path[folder.size()] == '/')) return true;
    }
    return false;
}

// On the empty fuzzing device every link is one the archive makes, so whatever is placed
// must name, as it stands, a place below those owned.
void checkPlacement(const std::vector<Member>& members, const std::vector<std::string>& owned,
                    const std::string& target, int strip) {
    ExtractionPlan plan(owned, target, strip);
    for (const Member& member : members) {
        std::string reason;
        const auto landing = plan.place(member, reason);
        if (!landing || landing->path.empty()) continue;
        fuzz::expect(isNormalAbsolute(landing->path), "a landing is a plain absolute path");
        fuzz::expect(isAtOrBelowOneOf(landing->path, owned), "a member lands only in an owned place");
        fuzz::expect(member.name.find('\n') == std::string::npos, "no name with a line break is unpacked");
    }
    std::string reason;
    (void)plan.linksStayWithin(reason);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes = fuzz::bytesOf(data, size);
    fuzz::useFuzzingDevice();
    if (const auto counted = membersInTarOutput(bytes)) {
        fuzz::expect(*counted < bytes.size(), "tar's listing counts one member a line");
    }
    const auto members = TarListing::readBytes(bytes);
    if (!members) return 0;
    checkMembersLieInArchive(*members, bytes);
    checkFileReadsTheSame(*members, bytes);
    checkPlacement(*members, {"/var/mobile/Library/Notes", "/var/mobile/Library/Preferences"}, "/", 0);
    checkPlacement(*members, {"/var/mobile/Library/Notes"}, "/var/mobile/Library", 2);
    return 0;
}

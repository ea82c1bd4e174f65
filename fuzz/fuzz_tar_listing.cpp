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

#include <array>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
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
void checkFileReadsTheSame(const std::vector<Member>& members, const std::string& path) {
    fuzz::expect(members.empty() || archiveKindOf(path) == ArchiveKind::PlainTar,
                 "an archive with members is taken for plain tar");
    const auto fromFile = TarListing::read(path);
    fuzz::expect(fromFile && fromFile->size() == members.size(), "a file lists as its bytes do");
    for (std::size_t index = 0; index < members.size(); ++index) {
        fuzz::expect(sameMember((*fromFile)[index], members[index]), "a file lists as its bytes do");
    }
}

// The names `tar -tf --quoting-style=escape` printed in the C locale, one a line, and
// whether tar read the archive through; nothing when it didn't.
std::optional<std::vector<std::string>> namesListedByTar(const std::string& path) {
    FILE* pipe = popen(("LC_ALL=C tar -tf '" + path + "' --quoting-style=escape 2>/dev/null").c_str(), "r");
    if (pipe == nullptr) return std::nullopt;
    std::string output;
    std::array<char, 4096> buffer{};
    for (std::size_t got; (got = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) output.append(buffer.data(), got);
    if (pclose(pipe) != 0) return std::nullopt;
    std::vector<std::string> names;
    std::string name;
    for (std::size_t at = 0; at < output.size(); ++at) {
        if (output[at] == '\n') {
            names.push_back(std::move(name));
            name.clear();
        } else if (output[at] != '\\' || at + 1 == output.size()) {
            name += output[at];
        } else if (at + 3 < output.size() && std::isdigit(static_cast<unsigned char>(output[at + 1]))) {
            name += static_cast<char>(std::stoi(output.substr(at + 1, 3), nullptr, 8));
            at += 3;
        } else {
            static constexpr std::string_view kEscaped = "abfnrtv", kMeant = "\a\b\f\n\r\t\v";
            const std::size_t letter = kEscaped.find(output[++at]);
            name += letter == std::string_view::npos ? output[at] : kMeant[letter];
        }
    }
    return names;
}

// With STOWHAVEN_FUZZ_AGAINST_TAR set, the host's tar lists every archive the listing
// takes: where tar reads it through with as many members, the restore unpacks it, so tar
// must read the very names that the restore judged. Too slow for the fuzzing loop:
// scripts/fuzz.sh has the corpus read so once the fuzzing is over.
void checkAgainstTar(const std::vector<Member>& members, const std::string& path) {
    static const bool againstTar = std::getenv("STOWHAVEN_FUZZ_AGAINST_TAR") != nullptr;
    if (!againstTar) return;
    const auto listed = namesListedByTar(path);
    if (!listed || listed->size() != members.size()) return;
    for (std::size_t index = 0; index < members.size(); ++index) {
        fuzz::expect((*listed)[index] == members[index].name, "tar reads the names the listing judged");
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
    const std::string path = fuzz::writtenToDevice("archive.tar", bytes);
    checkFileReadsTheSame(*members, path);
    checkAgainstTar(*members, path);
    checkPlacement(*members, {"/var/mobile/Library/Notes", "/var/mobile/Library/Preferences"}, "/", 0);
    checkPlacement(*members, {"/var/mobile/Library/Notes"}, "/var/mobile/Library", 2);
    return 0;
}

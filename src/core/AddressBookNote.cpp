#include "core/AddressBookNote.h"

#include "archive/Base64.h"
#include "archive/FileCipher.h"
#include "archive/TarListing.h"
#include "archive/Zlib.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/TemporaryDirectory.h"
#include "platform/plist/PlistCodec.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

namespace stowhaven {

namespace {

constexpr std::string_view kOldFormatMark = "begin-base64 644 ";
// "Salted__" in Base64, the start of what the file cipher writes.
constexpr std::string_view kEncipheredMark = "U2FsdGVkX1";
// The working name of a note being deciphered, in the temporary folder.
constexpr const char* kEncodedNote = "cydiaApps.uue";
// The members of an old note's archive that are read; nothing else in it is looked at.
constexpr std::string_view kOldPackageList = "var/mobile/cydiaApps.txt";
constexpr std::string_view kOldSpringboardSettings = "tmp/com.apple.springboard.plist";
// Far beyond any real package list: an old archive that unpacks to more is refused.
constexpr std::size_t kLargestOldArchive = 64 * 1024 * 1024;

std::string temporaryPath(std::string_view name) { return TemporaryDirectory::path() + "/" + std::string(name); }

bool writeNote(const std::string& path, const std::string& note) {
    std::string error;
    if (FileManager::writeFile(path, note, &error, 0600)) return true;
    SH_LOG("Couldn't write to <{}>. Error: {}", path, error);
    return false;
}

// "NOTE:text", or "NOTE;parameters:text"; property names are not case-sensitive.
bool isNoteProperty(std::string_view line) {
    if (line.size() < 5 || line.find(':') == std::string_view::npos) return false;
    const bool named = std::equal(line.begin(), line.begin() + 4, "NOTE",
                                  [](char a, char b) { return std::toupper(static_cast<unsigned char>(a)) == b; });
    return named && (line[4] == ':' || line[4] == ';');
}

// The Base64 body of a "begin-base64" text: the lines after the first, up to "====".
std::optional<std::string> base64Body(std::string_view note, std::string& error) {
    const std::size_t body = note.find('\n');
    for (std::size_t start = body; start != std::string_view::npos; start = note.find('\n', start + 1)) {
        if (textutil::trimmed(note.substr(start + 1, note.find('\n', start + 1) - start - 1)) != "====") continue;
        auto bytes = Base64::decode(note.substr(body, start - body));
        if (!bytes) error = "the note's Base64 is damaged";
        return bytes;
    }
    error = "the note has no end line";
    return std::nullopt;
}

// A member's name as tar extracts it: a leading "./" makes no difference.
bool isMemberNamed(const TarListing::Member& member, std::string_view name) {
    std::string_view stored = member.name;
    if (stored.starts_with("./")) stored.remove_prefix(2);
    return member.type == TarListing::Type::File && stored == name;
}

// The last plain file of that name, as the one tar would leave.
const TarListing::Member* memberNamed(const std::vector<TarListing::Member>& members, std::string_view name) {
    const auto found = std::find_if(members.rbegin(), members.rend(),
                                    [&](const TarListing::Member& member) { return isMemberNamed(member, name); });
    return found == members.rend() ? nullptr : &*found;
}

}  // namespace

bool AddressBookNote::isOldFormat(std::string_view note) { return note.starts_with(kOldFormatMark); }

bool AddressBookNote::isEnciphered(std::string_view note) { return note.starts_with(kEncipheredMark); }

std::optional<std::string> AddressBookNote::deciphered(const std::string& note) {
    const std::string path = temporaryPath(kEncodedNote);
    if (!writeNote(path, note)) return std::nullopt;
    FileCipher::decryptFileAtPath(path, Supervisor::shared().getTemporaryFileName(false));
    std::string error;
    auto text = FileManager::contentsOfFile(path, &error);
    FileManager::removeItem(path);
    if (!text) {
        SH_LOG("Couldn't read from <{}>. Error: {}", path, error);
        return std::nullopt;
    }
    // The cipher leaves the file as it was when the pass phrase doesn't fit.
    if (*text == note) {
        SH_LOG("Couldn't decipher the note of {} characters", note.size());
        return std::nullopt;
    }
    return text;
}

std::optional<std::string> AddressBookNote::historyText(const std::string& note) {
    return isEnciphered(note) ? deciphered(note) : note;
}

// Read in memory from end to end: the archive is a stranger's, and none of it is written
// to disk, where its members could land on the folders the program runs its tools from.
std::optional<AddressBookNote::OldFormatContents> AddressBookNote::expandOldFormat(const std::string& note) {
    std::string error;
    std::optional<std::string> archive;
    std::optional<std::vector<TarListing::Member>> members;
    if (const auto packed = base64Body(note, error)) {
        archive = Zlib::gunzip(*packed, kLargestOldArchive);
        if (!archive) error = "the note's archive can't be unpacked";
    }
    if (archive) members = TarListing::readBytes(*archive, &error);
    const TarListing::Member* list = members ? memberNamed(*members, kOldPackageList) : nullptr;
    if (list == nullptr) {
        if (members) error = "the note's archive has no package list";
        SH_LOG("Unable to load description from <{}> | Error: {}", kOldPackageList, error);
        return std::nullopt;
    }
    auto bytesOf = [&](const TarListing::Member& member) { return archive->substr(member.dataOffset, member.size); };
    PlistValue::Dictionary springboard;
    if (const TarListing::Member* settings = memberNamed(*members, kOldSpringboardSettings)) {
        const auto value = PlistCodec::parse(bytesOf(*settings));
        if (value && value->isDictionary()) springboard = *value->asDictionary();
    }
    return OldFormatContents{bytesOf(*list),
                             Date::dateWithTimeIntervalSince1970(static_cast<double>(list->modificationTime)),
                             std::move(springboard)};
}

std::string AddressBookNote::vCardOf(std::string_view note) {
    // A colon in a property's value is escaped in a vCard of version 3.
    return fmt::format(
        "BEGIN:VCARD\nVERSION:3.0\nN:Stow;Haven;\nFN:Haven Stow\nORG:Larkmoor, Inc.\n"
        "URL;type=HOMEPAGE;type=pref:{}\nNOTE:{}\nEND:VCARD",
        textutil::replacingAll(kUserGuideURL, ":", "\\:"), note);
}

std::optional<std::string> AddressBookNote::noteOfVCard(std::string_view vCard) {
    // Lines folded by RFC 6350 go on after a line break with a blank or a tab.
    std::string unfolded;
    for (std::size_t index = 0; index < vCard.size(); ++index) {
        const bool lineBreak =
            vCard[index] == '\n' || (vCard[index] == '\r' && index + 1 < vCard.size() && vCard[index + 1] == '\n');
        if (!lineBreak) {
            unfolded += vCard[index];
            continue;
        }
        const std::size_t next = index + (vCard[index] == '\r' ? 2 : 1);
        if (next < vCard.size() && (vCard[next] == ' ' || vCard[next] == '\t')) {
            index = next;  // the fold and its blank go
        } else {
            unfolded += '\n';
            index = next - 1;
        }
    }
    std::size_t start = 0;
    while (start < unfolded.size()) {
        const std::size_t end = std::min(unfolded.find('\n', start), unfolded.size());
        const std::string_view line(unfolded.data() + start, end - start);
        if (isNoteProperty(line)) return std::string(line.substr(line.find(':') + 1));
        start = end + 1;
    }
    return std::nullopt;
}

}  // namespace stowhaven

#include "core/AddressBookNote.h"

#include "archive/FileCipher.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/ShellQuote.h"
#include "platform/TemporaryDirectory.h"
#include "platform/plist/PlistCodec.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>

namespace stowhaven {

namespace {

constexpr std::string_view kOldFormatMark = "begin-base64 644 ";
// "Salted__" in Base64, the start of what the file cipher writes.
constexpr std::string_view kEncipheredMark = "U2FsdGVkX1";
// The old note's working names in the temporary folder; the archive is named relative
// to the folder the commands start in, which is that folder.
constexpr const char* kEncodedNote = "cydiaApps.uue";
constexpr const char* kOldArchive = "cydiaApps.tbz";
constexpr const char* kOldPackageList = "/var/mobile/cydiaApps.txt";
constexpr const char* kOldSpringboardSettings = "/tmp/com.apple.springboard.plist";
// The folders an old archive unpacks into.
constexpr std::array<const char*, 3> kOldArchiveFolders = {"Applications", "tmp", "var"};

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

std::optional<AddressBookNote::OldFormatContents> AddressBookNote::expandOldFormat(const std::string& note) {
    const std::string folder = TemporaryDirectory::path();
    const std::string encoded = temporaryPath(kEncodedNote);
    if (!writeNote(encoded, note)) return std::nullopt;
    Supervisor::shared().systemExecute(fmt::format(R"(uudecode -o "{}" "{}" ; tar -C "{}" -xzf {})", kOldArchive,
                                                   ShellQuote::inDoubleQuotes(encoded),
                                                   ShellQuote::inDoubleQuotes(folder), kOldArchive));
    FileManager::removeItem(encoded);
    FileManager::removeItem(temporaryPath(kOldArchive));

    const std::string listPath = folder + kOldPackageList;
    std::string error;
    const auto list = FileManager::contentsOfFile(listPath, &error);
    const auto attributes = FileManager::attributesOfItem(listPath);
    std::optional<OldFormatContents> contents;
    if (list && attributes) {
        const auto springboard = PlistCodec::readFile(folder + kOldSpringboardSettings);
        contents = OldFormatContents{
            *list, Date::dateWithTimeIntervalSince1970(static_cast<double>(attributes->modificationTime)),
            springboard && springboard->isDictionary() ? *springboard->asDictionary() : PlistValue::Dictionary{}};
    } else {
        SH_LOG("Unable to load description from <{}> | Error: {}", listPath, error);
    }
    for (const char* unpacked : kOldArchiveFolders) FileManager::removeItem(temporaryPath(unpacked));
    return contents;
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

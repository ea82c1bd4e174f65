#include "cli/HistoryViewCommand.h"

#include "archive/HistoryText.h"
#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "cli/ArchiveJson.h"
#include "cli/SessionReport.h"
#include "core/AddressBookNote.h"
#include "core/ModelClasses.h"
#include "core/SessionHistory.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/FileManager.h"
#include "platform/plist/PlistCodec.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

namespace stowhaven {

namespace {

constexpr std::string_view kVCardStart = "BEGIN:VCARD";
// Larger than any history text whose archive the reader would take.
constexpr std::uintmax_t kLargestFile = 64 * 1024 * 1024;

// What a file holds: its sessions as the program reads them, and the archive they were
// read from, none for an old note, which holds no archive.
struct Contents {
    SessionHistory::Sessions sessions;
    std::optional<PlistValue> archive;
};

Contents contentsOf(const std::string& file) {
    std::string text = textutil::trimmed(file);
    bool isNote = false;
    if (text.starts_with(kVCardStart)) {
        const auto note = AddressBookNote::noteOfVCard(text);
        if (!note) return {};
        text = textutil::trimmed(*note);
        isNote = true;
    }
    if (AddressBookNote::isOldFormat(text)) return {SessionHistory::fromNote(text), std::nullopt};
    // Only notes are enciphered.
    isNote = isNote || AddressBookNote::isEnciphered(text);
    const auto history = AddressBookNote::historyText(text);
    const auto archive = history ? HistoryText::archiveIn(*history) : std::nullopt;
    const auto root = archive ? KeyedUnarchiver::unarchiveObjectWithData(*archive, modelClasses()) : std::nullopt;
    if (!root) return {};
    // Only a note holds an array of sessions; a history file holds one.
    isNote = isNote || root->isArray();
    return {isNote ? SessionHistory::noteSessionsOf(*root) : SessionHistory::sessionsOf(*root),
            PlistCodec::parse(*archive)};
}

// The archive as it stands in the file, or the sessions archived anew where there is none.
void printJson(const Contents& contents, std::ostream& out) {
    nlohmann::json list = nlohmann::json::array();
    if (contents.archive) {
        nlohmann::json root = archiveAsJson(*contents.archive);
        list = root.is_array() ? std::move(root) : nlohmann::json::array({std::move(root)});
    } else {
        for (const auto& session : contents.sessions) {
            const auto archive = KeyedArchiver::archivedPlist(session);
            list.push_back(archive ? archiveAsJson(*archive) : nlohmann::json());
        }
    }
    out << list.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

}  // namespace

int HistoryViewCommand::run(const std::string& file, bool asJson, std::ostream& out, std::ostream& errors) {
    if (const auto attributes = FileManager::attributesOfItem(file); attributes && attributes->size > kLargestFile) {
        fmt::print(errors, "stowhaven: <{}> is too large to be a backup history ({} bytes)\n", file, attributes->size);
        return 1;
    }
    std::string error;
    const auto contents = FileManager::contentsOfFile(file, &error);
    if (!contents) {
        fmt::print(errors, "stowhaven: can't read <{}>: {}\n", file, error);
        return 1;
    }
    // A session reads its data sets only as a file engine's; so does this reading,
    // whatever the device works with, without changing the setting.
    Supervisor& supervisor = Supervisor::shared();
    const StorageType storage = supervisor.currentStorageType();
    if (!supervisor.isCloudStorage()) supervisor.setCurrentStorageType(StorageType::Local);
    const Contents found = contentsOf(*contents);
    supervisor.setCurrentStorageType(storage);

    if (found.sessions.empty()) {
        fmt::print(errors,
                   "stowhaven: <{}> holds no backup history that can be read: it is damaged, or not a "
                   "history file, note or vCard of the program\n",
                   file);
        return 1;
    }
    if (asJson) {
        printJson(found, out);
    } else {
        printSessionReport(found.sessions, out);
    }
    return 0;
}

}  // namespace stowhaven

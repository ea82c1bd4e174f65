#include "restore/ArchiveListing.h"

#include "archive/ArchiveKind.h"
#include "core/Supervisor.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/ShellQuote.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace stowhaven {

namespace {

// What follows tar's listing only when tar read the whole archive and the list was written.
constexpr std::string_view kListedMark = "\nListed\n";

std::optional<std::vector<TarListing::Member>> readMembers(const std::string& archive, std::string& error) {
    switch (archiveKindOf(archive)) {
        case ArchiveKind::PlainTar:
            return TarListing::read(archive, &error);
        case ArchiveKind::Bzip2: {
            Supervisor& supervisor = Supervisor::shared();
            const std::string plain = supervisor.getTemporaryFileName(true) + ".tar";
            supervisor.systemExecute(
                fmt::format("bzip2 -dc {} > {}", ShellQuote::quoted(archive), ShellQuote::quoted(plain)));
            auto members = TarListing::read(plain, &error);
            FileManager::removeItem(plain);
            return members;
        }
        case ArchiveKind::Unknown:
            break;
    }
    error = "neither a tar archive nor a bzip2 stream";
    return std::nullopt;
}

// How many members tar itself reads: from the archive, or from its parts joined through a pipe.
std::optional<std::size_t> countedByTar(const std::vector<std::string>& parts) {
    Supervisor& supervisor = Supervisor::shared();
    const std::string list = supervisor.getTemporaryFileName(true) + ".list";
    std::string reading = "tar -tf " + ShellQuote::quoted(parts.front());
    if (parts.size() > 1) {
        reading = "cat";
        for (const std::string& part : parts) reading += " " + ShellQuote::quoted(part);
        reading += " | tar -tf -";
    }
    supervisor.systemExecute(
        fmt::format("{0} --quoting-style=escape > {1} && echo Listed >> {1}", reading, ShellQuote::quoted(list)));
    const auto text = FileManager::contentsOfFile(list);
    FileManager::removeItem(list);
    return text ? membersInTarOutput(*text) : std::nullopt;
}

// The listing stands only when tar read as many members (COUNTED) as it holds.
std::optional<std::vector<TarListing::Member>> confirmedByTar(std::vector<TarListing::Member> members,
                                                              std::optional<std::size_t> counted,
                                                              const std::string& archive) {
    if (!counted) {
        SH_LOG("tar couldn't list <{}> in full. Nothing is restored from it", archive);
        return std::nullopt;
    }
    if (*counted != members.size()) {
        SH_LOG("tar reads {} member(s) in <{}> where its listing holds {}. Nothing is restored from it", *counted,
               archive, members.size());
        return std::nullopt;
    }
    return members;
}

}  // namespace

std::optional<std::size_t> membersInTarOutput(std::string_view output) {
    if (output == kListedMark.substr(1)) return 0;
    if (!output.ends_with(kListedMark)) return std::nullopt;
    return static_cast<std::size_t>(std::count(output.begin(), output.end(), '\n')) - 1;
}

std::optional<std::vector<TarListing::Member>> listArchiveMembers(const std::string& archive) {
    std::string error;
    const auto members = readMembers(archive, error);
    if (!members) {
        SH_LOG("Couldn't read <{}>: {}. Nothing is restored from it", archive, error);
        return std::nullopt;
    }
    return confirmedByTar(std::move(*members), countedByTar({archive}), archive);
}

std::optional<std::vector<TarListing::Member>> listJoinedTarMembers(const std::vector<std::string>& parts) {
    if (parts.empty() || archiveKindOf(parts.front()) != ArchiveKind::PlainTar) {
        SH_LOG("<{}> doesn't start a plain tar archive. Nothing is restored from it",
               parts.empty() ? "" : parts.front());
        return std::nullopt;
    }
    // tar reads every byte through its pipe first, so that the headers are then read from memory.
    const auto counted = countedByTar(parts);
    std::string error;
    auto members = TarListing::readJoined(parts, &error);
    if (!members) {
        SH_LOG("Couldn't read the archive of <{}>...: {}. Nothing is restored from it", parts.front(), error);
        return std::nullopt;
    }
    return confirmedByTar(std::move(*members), counted, parts.front());
}

}  // namespace stowhaven

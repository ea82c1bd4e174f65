#include "cli/SessionReport.h"

#include "core/CydiaFile.h"
#include "core/Text.h"
#include "items/Application.h"
#include "items/ArchivableFolder.h"
#include "items/PhotoVideoAlbum.h"
#include "items/PreferenceFile.h"
#include "items/RepositorySource.h"
#include "items/SHSHBlob.h"
#include "items/WebClip.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <array>

namespace stowhaven {

namespace {

using textutil::orNull;

std::string yesNo(bool value) { return value ? "yes" : "no"; }

template <typename List>
std::size_t countOf(const std::optional<List>& list) {
    return list ? list->size() : 0;
}

void heading(std::ostream& out, std::string_view title, std::size_t count) {
    fmt::print(out, "  {} ({})\n", title, count);
}

void printPackages(BackupSession& session, std::ostream& out) {
    std::vector<CydiaFile> packages;
    for (const std::string& line : textutil::split(session.rawData().value_or(""), '\n')) {
        if (line.empty()) continue;
        CydiaFile package(line);
        if (package.packageName()) packages.push_back(std::move(package));
    }
    heading(out, "Packages", packages.size());
    for (const CydiaFile& package : packages) {
        fmt::print(out, "    {}  {}  {}  [{}]\n", orNull(package.name()), orNull(package.packageName()),
                   orNull(package.version()), orNull(package.sectionName()));
    }
}

void printFiles(std::string_view title, const std::optional<BackupSession::FileData>& files, std::ostream& out) {
    heading(out, title, countOf(files));
    if (!files) return;
    for (const auto& [path, content] : *files) {
        if (const auto* bytes = content.asData()) {
            fmt::print(out, "    {}  (in the history, {} bytes)\n", path, bytes->size());
        } else if (const auto* entries = content.asDictionary()) {
            fmt::print(out, "    {}  (in the history, {} keys)\n", path, entries->size());
        } else {
            fmt::print(out, "    {}  (in the session's folder)\n", path);
        }
    }
}

void printItems(BackupSession& session, std::ostream& out) {
    heading(out, "Sources", countOf(session.repositorySources()));
    for (const auto& source : session.repositorySources().value_or(BackupSession::SourceList{})) {
        fmt::print(out, "    {}  ({})\n", source->debSourceAsString(), source->name());
    }
    printFiles("Preference files", session.preferencesData(), out);
    printFiles("SpringBoard files", session.springBoardData(), out);
    heading(out, "Applications", countOf(session.applications()));
    for (const auto& application : session.applications().value_or(BackupSession::ApplicationList{})) {
        fmt::print(out, "    {} ({})  Documents {:.3f}{}, Library {:.3f}{}\n", application->displayName(),
                   orNull(application->bundleIdentifier()), application->documentsDirSize(),
                   Application::unitToString(application->documentsDirSizeUnit()), application->libraryDirSize(),
                   Application::unitToString(application->libraryDirSizeUnit()));
    }
    heading(out, "Web clips", countOf(session.webclips()));
    for (const auto& clip : session.webclips().value_or(BackupSession::WebClipList{})) {
        fmt::print(out, "    {}  ({})\n", clip->displayName(), clip->name());
    }
    heading(out, "SHSH blobs", countOf(session.SHSHBlobs()));
    for (const auto& blob : session.SHSHBlobs().value_or(BackupSession::BlobList{})) {
        fmt::print(out, "    chip {}, {}\n", orNull(blob->chipId()), orNull(blob->deviceType()));
    }
    heading(out, "Folders", countOf(session.archivableFolders()));
    for (const auto& folder : session.archivableFolders().value_or(BackupSession::FolderList{})) {
        std::vector<std::string> contents;
        for (const auto& item : folder->contentItems()) contents.push_back(item->name());
        contents.insert(contents.end(), folder->contentPaths().begin(), folder->contentPaths().end());
        fmt::print(out, "    {} (type {}, {}): {}\n", folder->name(), folder->folderType(), folder->dataFolderPath(),
                   contents.empty() ? "the whole place" : fmt::format("{}", fmt::join(contents, ", ")));
    }
    heading(out, "Albums", countOf(session.photoVideoAlbums()));
    for (const auto& album : session.photoVideoAlbums().value_or(BackupSession::AlbumList{})) {
        fmt::print(out, "    {}: {} photos ({:.3f} Mb), {} videos ({:.3f} Mb)\n", album->name(), album->photos().size(),
                   album->photoSize(), album->videos().size(), album->videoSize());
    }
}

void printDataSets(const BackupSession& session, std::ostream& out) {
    fmt::print(out, "  Data sets\n");
    for (const StockDataSet set : kStockDataSets) {
        fmt::print(out, "    {:<10}{:<5}{:.3f} Mb\n", stockDataSetName(set), yesNo(session.hasData(set)),
                   session.dataSize(set));
    }
    fmt::print(out, "  Application data indexed  {}\n", yesNo(session.hasAppDataIndexed()));
    fmt::print(out, "  Total size  {:.3f} Mb\n", session.backupTotalSize());
}

void printSession(BackupSession& session, std::ostream& out) {
    fmt::print(out, "  Date         {}\n", session.sessionDate() ? session.sessionDate()->description() : "(null)");
    fmt::print(out, "  Description  {}\n", orNull(session.quickDescription()));
    fmt::print(out, "  Device       {} ({})\n", orNull(session.deviceName()), orNull(session.deviceFirmware()));
    fmt::print(out, "  Version      {}\n", orNull(session.version()));
    fmt::print(out, "  Encrypted    {}\n", yesNo(session.isEncrypted()));
    printPackages(session, out);
    printItems(session, out);
    printDataSets(session, out);
}

}  // namespace

void printSessionReport(const SessionHistory::Sessions& sessions, std::ostream& out) {
    for (std::size_t index = 0; index < sessions.size(); ++index) {
        if (index > 0) out << '\n';
        fmt::print(out, "Session {} of {}: {}\n", index + 1, sessions.size(), orNull(sessions[index]->title()));
        printSession(*sessions[index], out);
    }
}

}  // namespace stowhaven

#include "verify/SessionCheck.h"

#include "archive/StringCipher.h"
#include "core/Text.h"
#include "platform/FileManager.h"
#include "restore/StorageFetch.h"
#include "storage/StorageLayout.h"
#include "verify/ArchiveCheck.h"
#include "verify/CategoryCheck.h"
#include "verify/DebCheck.h"
#include "verify/HistoryFiles.h"
#include "verify/SessionContents.h"

#include <fmt/format.h>

#include <vector>

namespace stowhaven {

namespace {

struct Context {
    StorageHelperProtocol& engine;
    VerifyReport& report;
    const SessionCheck::Progress& progress;
    Date date;
    std::string stamp;
};

void checkKey(const Context& context, const BackupSession& session, const std::optional<std::string>& key) {
    if (!session.isEncrypted()) return;
    if (key) {
        if (session.isValidEncryptionKey(*key)) {
            context.report.sound(context.stamp, "key", "the key given");
        } else {
            context.report.fault(context.stamp, "key", "the key given is not the session's");
        }
        return;
    }
    if (StringCipher::decrypt(*session.encryptionKey())) {
        context.report.sound(context.stamp, "key", "the key the session keeps");
    } else {
        context.report.fault(context.stamp, "key", "the key the session keeps doesn't decipher");
    }
}

void checkKinds(const Context& context, const std::vector<std::string>& kinds) {
    for (const std::string& kind : kinds) {
        const std::string item = textutil::firstLetterUppered(kind) + " data";
        context.progress(item, std::nullopt);
        const auto outcome =
            CategoryCheck::run(context.engine, context.date, kind, [&](std::size_t done, std::size_t parts) {
                context.progress(item, static_cast<double>(done) / static_cast<double>(parts));
            });
        if (outcome.fault) {
            context.report.fault(context.stamp, item, *outcome.fault);
        } else {
            context.report.sound(context.stamp, item, outcome.detail);
        }
    }
}

std::optional<std::string> fetched(const Context& context, const SessionContents::File& file) {
    context.progress(file.item, std::nullopt);
    const auto directory = file.directory.empty() ? std::nullopt : std::optional(file.directory);
    auto path = fetchSessionFile(context.engine, file.name, context.date, directory);
    if (path && !FileManager::isRegularFile(*path)) return std::nullopt;
    return path;
}

void checkArchives(const Context& context, const std::vector<SessionContents::File>& archives) {
    for (const auto& archive : archives) {
        const auto path = fetched(context, archive);
        const auto fault = path ? faultOfArchive(*path) : fmt::format("its archive <{}> is missing", archive.name);
        if (fault) {
            context.report.fault(context.stamp, archive.item, *fault);
        } else {
            context.report.sound(context.stamp, archive.item);
        }
    }
}

// A session doesn't say whether its backup captured .deb files: with none of them stored,
// it didn't, and the restore installs through apt-get; with some, each one missing is a
// package the restore from .deb files can't install.
void checkDebs(const Context& context, const SessionContents& contents) {
    std::vector<const SessionContents::File*> missing;
    std::size_t stored = 0;
    for (const auto& deb : contents.debs) {
        const auto path = fetched(context, deb);
        if (!path) {
            missing.push_back(&deb);
            continue;
        }
        ++stored;
        if (const auto fault = faultOfDeb(*path)) {
            context.report.fault(context.stamp, deb.item, fmt::format("<{}> is {}", deb.name, *fault));
        } else {
            context.report.sound(context.stamp, deb.item, deb.name);
        }
    }
    if (stored == 0) {
        if (!contents.debs.empty()) context.report.sound(context.stamp, "packages", "no .deb file captured");
        return;
    }
    for (const auto* deb : missing) {
        context.report.fault(context.stamp, deb->item, fmt::format("its .deb <{}> is missing", deb->name));
    }
    for (const std::string& name : contents.unnamedPackages) {
        context.report.fault(context.stamp, "package " + name, "its identifier can name no .deb file");
    }
}

}  // namespace

void SessionCheck::run(const std::string& historyName, const std::optional<std::string>& fetched,
                       const std::optional<std::string>& key) {
    const auto date = StorageLayout::dateOfHistoryFile(historyName);
    const std::string stamp = date ? StorageLayout::stamp(*date) : historyName;
    progress_("history", std::nullopt);
    if (!fetched || !date) {
        report_.fault(stamp, "history", fmt::format("<{}> couldn't be fetched", historyName));
        return;
    }
    const auto decoded = HistoryFiles::decode(*fetched, historyName);
    if (const auto* fault = std::get_if<std::string>(&decoded)) {
        report_.fault(stamp, "history", fmt::format("<{}> {}", historyName, *fault));
        return;
    }
    const auto& session = *std::get<std::shared_ptr<BackupSession>>(decoded);
    report_.sound(stamp, "history", fmt::format("\"{}\"", session.title().value_or("")));
    const Context context{engine_, report_, progress_, *date, stamp};
    checkKey(context, session, key);
    const SessionContents contents = contentsOf(session);
    checkKinds(context, contents.kinds);
    checkArchives(context, contents.archives);
    checkDebs(context, contents);
}

}  // namespace stowhaven

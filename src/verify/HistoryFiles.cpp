#include "verify/HistoryFiles.h"

#include "archive/HistoryText.h"
#include "core/ModelClasses.h"
#include "platform/FileManager.h"
#include "platform/TemporaryDirectory.h"
#include "storage/AbstractStorageHelper.h"
#include "storage/StorageLayout.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <set>

namespace stowhaven {

namespace {

// Base64 of a deflated archive: never much longer than the largest archive itself.
constexpr std::uint64_t kLargestHistoryText = 2 * HistoryText::kMaximumArchiveSize;

// Stands in for the catalogue while the engine fetches history files: it claims to know
// every session but those asked for, so that only those are fetched, and keeps where they
// landed instead of reading them in.
class HistoryFileCollector final : public SessionHistoryReceiver {
public:
    explicit HistoryFileCollector(const std::vector<std::string>& names) : wanted_(names.begin(), names.end()) {}

    bool hasBackupSessionDatedOn(Date date) override { return !wanted_.contains(StorageLayout::historyFileName(date)); }
    void takeHistoryFile(const std::string& path) override {
        const std::string name = std::filesystem::path(path).filename().string();
        if (wanted_.contains(name)) {
            fetched_[name] = path;
        } else {
            FileManager::removeItem(path);
        }
    }
    const std::map<std::string, std::string>& fetched() const { return fetched_; }

private:
    std::set<std::string> wanted_;
    std::map<std::string, std::string> fetched_;
};

// The catalogue takes the engine's history files again once the fetch is over.
class ReceiverSwap {
public:
    explicit ReceiverSwap(std::shared_ptr<SessionHistoryReceiver> receiver)
        : saved_(AbstractStorageHelper::sessionHistoryReceiver()) {
        AbstractStorageHelper::setSessionHistoryReceiver(std::move(receiver));
    }
    ~ReceiverSwap() { AbstractStorageHelper::setSessionHistoryReceiver(saved_); }
    ReceiverSwap(const ReceiverSwap&) = delete;
    ReceiverSwap& operator=(const ReceiverSwap&) = delete;

private:
    std::shared_ptr<SessionHistoryReceiver> saved_;
};

}  // namespace

std::vector<std::string> HistoryFiles::listed(StorageHelperProtocol& engine) {
    engine.setSuccessSelector(nullptr, nullptr);
    // Lists the device's history files and fetches the newest, which the fetch takes again.
    engine.loadMostRecentBackupSession();
    std::vector<std::string> names = engine.existingFiles();
    // Names come from the storage's listing: only those that are a stamp's history file name
    // go on, or into a path.
    std::erase_if(names, [](const std::string& name) {
        const auto date = StorageLayout::dateOfHistoryFile(name);
        return !date || StorageLayout::historyFileName(*date) != name;
    });
    for (const std::string& name : names) FileManager::removeItem(TemporaryDirectory::path() + "/" + name);
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

std::map<std::string, std::string> HistoryFiles::fetch(StorageHelperProtocol& engine,
                                                       const std::vector<std::string>& names) {
    const auto collector = std::make_shared<HistoryFileCollector>(names);
    {
        ReceiverSwap swap(collector);
        engine.retrieveRestOfBackupHistory();
    }
    return collector->fetched();
}

HistoryFiles::Decoded HistoryFiles::decode(const std::string& path, const std::string& name) {
    const bool tooLarge = FileManager::sizeOfItem(path) > kLargestHistoryText;
    const auto text = tooLarge ? std::nullopt : FileManager::contentsOfFile(path);
    FileManager::removeItem(path);
    if (!text) return std::string(tooLarge ? "too large to be a history" : "can't be read");
    const auto root = HistoryText::decode(*text, modelClasses());
    if (!root) return std::string("doesn't decode (damaged Base64, zlib stream or archive)");
    auto session = root->object<BackupSession>();
    if (!session) return std::string("holds no session");
    const auto date = StorageLayout::dateOfHistoryFile(name);
    if (!session->sessionDate() || !date ||
        StorageLayout::stamp(*session->sessionDate()) != StorageLayout::stamp(*date)) {
        return std::string("holds a session of another date than its name");
    }
    return session;
}

}  // namespace stowhaven

#pragma once

#include "platform/Date.h"
#include "storage/AbstractStorageHelper.h"
#include "storage/StorageHelperProtocol.h"
#include "storage/StorageType.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace stowhaven {

class BackupSession;

// What the engines of the cloud services with an account share. Such an engine starts when
// it becomes current: the account and its folders proved, the listings read; when it can't,
// it leaves its error and gives way to local storage for this run. Each request begins with
// no error and ends by its hook; the failures of its steps are the engine's error.
class CloudStorageHelper : public AbstractStorageHelper,
                           public ConnectionOrientedStorageHelperProtocol,
                           public FileRefPreloading {
public:
    // Starts as when made, and the engine becomes current; without success it gives way.
    void connect() override;
    // Starts anew; without success it gives way.
    void flushCache() override;
    // The walk posts "BACKUP_HISTORY_LOADED" itself; without one, once the history was
    // walked or when there is none, it is posted all the same.
    void retrieveRestOfBackupHistory() override;
    // Transfers show their own banner.
    void showProgressOnView() override {}
    void hideProgress() override {}

protected:
    CloudStorageHelper(std::unique_ptr<AbstractStorageWrapper> wrapper, StorageType type);

    // The account and its folders proved, the listings read; false with the error.
    virtual bool start() = 0;
    // The opening of every start: the service usable (no PROBLEM), a network, a linked
    // account; false with the error that tells which is missing.
    bool canStart(const std::optional<std::string>& problem, bool accountLinked, const std::string& serviceName);
    // The first two of them, for a service whose account is proved otherwise.
    bool canReachService(const std::optional<std::string>& problem);
    // Leaves the error that no account of SERVICENAME is linked; false.
    bool failWithNoAccountLinked(const std::string& serviceName);
    void fallBackToLocalStorage();
    // The notifications that tell the screens how a login ended, and the error when the
    // service refused it without a word.
    struct LogInNotices {
        const char* failed;
        const char* succeeded;
        const char* refused;
    };
    // After a login's code exchange, and the tokens' error when it failed: starts, and tells
    // the screens, which then read the storage anew. Nothing on success, otherwise the error.
    std::optional<std::string> connectAfterLogIn(bool exchanged, const std::optional<std::string>& exchangeError,
                                                 const LogInNotices& notices);

    // A request begins with no error; it ends by its outcome.
    void beginRequest();
    void finish(bool succeeded, const HookObject& object = {});
    // Leaves MESSAGE as the engine's error, logged; false.
    bool failWith(const std::string& message);

    // The temporary folder's file for NAME, which must be one clean name.
    std::optional<std::string> temporaryPathOf(const std::string& name);
    // The date of the session to delete; none, with the error and the failure hook run,
    // without one.
    std::optional<Date> dateOfSessionToDelete(const std::shared_ptr<BackupSession>& session);
    // Whether TO, a name the user gives a device folder, is one clean name; false with the
    // error and the failure hook run.
    bool canRenameDeviceFolderTo(const std::string& to);
    // The device folder FROM is listed as TO once the service renamed it.
    void listDeviceFolderRenamed(const std::string& from, const std::string& to);
    // Fetches the newest of the history files listed into the temporary folder; nothing
    // without one.
    void fetchNewestHistoryFile();
    // For a service that addresses files by id: fetches the session's file FILENAME into the
    // temporary folder by FETCHBYID, with the id that FINDID gives, and hands it to the success
    // hook, which stays for the next file of the same request. FINDID runs once the ids of the
    // session of DATE are read (preloadFileRefUsingDate), which they are first when another
    // session's were read last.
    void loadSessionFile(const std::string& fileName, Date date,
                         const std::function<std::optional<std::string>()>& findId,
                         const std::function<std::optional<std::string>(const std::string& id)>& fetchById);
    // The session whose ids were read last, by its stamp; forgotten when they may be stale.
    void notePrefetchedSession(const std::string& stamp);
    bool isPrefetchedSession(const std::string& stamp);
    void forgetPrefetchedSession();
    // Writes the session's history text to its file in the temporary folder and hands the
    // file to UPLOAD; the file is then removed, and listed as existing when it was sent.
    bool storeHistoryFile(const std::string& historyText, Date date,
                          const std::function<bool(const std::string& path)>& upload);

private:
    const StorageType type_;
    std::atomic<bool> fBackupHistoryLoaded_{false};
    std::mutex prefetchedMutex_;
    std::optional<std::string> prefetchedStamp_;
};

}  // namespace stowhaven

#pragma once

#include "core/BackupSession.h"
#include "flows/HistoryScreen.h"
#include "flows/HistoryWork.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace stowhaven {

// The sessions of this device on the current storage, newest first: the user picks the one
// that a restore will use, deletes one, or copies one from the address book to Dropbox.
// Made with create(); used on the main queue. Engine calls run on a background queue and
// answer on the main queue; isWaiting() tells when one is under way.
class BackupSessionsViewController : public std::enable_shared_from_this<BackupSessionsViewController> {
public:
    using Sessions = std::vector<std::shared_ptr<BackupSession>>;

    enum Tag : int {
        kDeleteSession = 2001,
        kUploadToDropbox = 2002,
        kUploadedToDropbox = 2003,
    };

    static std::shared_ptr<BackupSessionsViewController> create(std::shared_ptr<HistoryScreen> screen);

    // Fetches the history files not read yet, then shows the list with the current session
    // chosen.
    void viewDidAppear();
    void selectRow(std::size_t row);
    // Asks first; on yes deleteBackupSession().
    void askToDeleteSelected();
    void deleteBackupSession();
    // Only from the address book, for a session not copied yet.
    bool canUploadToDropbox() const;
    // Asks first; on yes uploadToDropbox().
    void askToUploadToDropbox();
    void uploadToDropbox();
    // The chosen session becomes the current one, if it isn't; the main screen is told
    // what changed.
    void viewWillDisappear();

    const Sessions& listBackupSessions() const { return listBackupSessions_; }
    std::shared_ptr<BackupSession> selectedBackupSession() const { return selectedBackupSession_; }
    bool isWaiting() const { return waiting_.any(); }
    bool isClosed() const { return closed_; }

    // "Backed up on 2024-05-01 @ 10:00:00", then "12 packages, 3 Apple apps data & 2 apps",
    // the title and the description.
    static std::vector<std::string> summaryOf(const BackupSession& session);
    // The session's date as the view shows it.
    static std::string dateOf(const BackupSession& session);

private:
    explicit BackupSessionsViewController(std::shared_ptr<HistoryScreen> screen) : screen_(std::move(screen)) {}

    void refreshListBackupSessions();
    void handleBackupHistoryLoaded();
    void selectActiveBackupSession();
    void handleDeletedBackupSession(const std::shared_ptr<BackupSession>& deleted);
    void proceedWithUpload();
    void handleUploadToDropboxDone(const std::string& engineName);
    void handleUploadToDropboxFailed();
    std::optional<std::size_t> rowOf(const std::shared_ptr<BackupSession>& session) const;

    std::shared_ptr<HistoryScreen> screen_;
    Sessions listBackupSessions_;
    std::shared_ptr<BackupSession> selectedBackupSession_;
    bool fNeedReload_ = false;
    bool closed_ = false;
    // The session on its way to Dropbox, and whether its upload has ended either way.
    std::shared_ptr<BackupSession> uploading_;
    bool uploadEnded_ = true;
    history::Waiting waiting_;
};

}  // namespace stowhaven

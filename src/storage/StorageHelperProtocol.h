#pragma once

#include "platform/Date.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace stowhaven {

class BackupSession;

// What a request's success hook is handed: nothing, a local path (a fetched file) or a
// list of names (a listing).
using HookObject = std::variant<std::monostate, std::string, std::vector<std::string>>;
using SuccessHook = std::function<void(const HookObject& object)>;
using FailureHook = std::function<void()>;

// What every storage engine offers the rest of the system. Operations are called on a
// background thread and return when they are done; each reports through the hooks set
// for it beforehand with setSuccessSelector(), which hold for one request and are
// cleared when read, and leaves its error text for hasError().
//
// The layout on storage (base, device, history, session and data directories) is that of
// StorageLayout.
class StorageHelperProtocol {
public:
    virtual ~StorageHelperProtocol() = default;

    // The hooks of the next request; empty ones run the request without hooks.
    virtual void setSuccessSelector(SuccessHook onSuccess, FailureHook onFailure) = 0;
    virtual bool hasError() const = 0;
    // The engine's last error, in the text the user sees; none after a success.
    virtual std::optional<std::string> errorMessage() const = 0;

    // Drops the listings, so that the next use reads the storage again.
    virtual void flushCache() = 0;
    // Forgets the engine's cached state, credentials where the engine keeps them.
    virtual void resetAll() = 0;

    // The device directories on the storage, into availableDeviceBackups().
    virtual void loadAvailableDeviceBackups() = 0;
    // A device's directory listing, handed to the success hook.
    virtual void loadBackupDetailsForDevice(const std::string& deviceName) = 0;
    // Fetches the newest history file of this device into the temporary folder.
    virtual void loadMostRecentBackupSession() = 0;
    // Takes in the history files of this device that aren't known yet.
    virtual void retrieveRestOfBackupHistory() = 0;
    // Fetches <session directory>/<sub-directory>/<name> into the temporary folder and hands
    // its local path to the success hook.
    virtual void loadFile(const std::string& name, Date date, const std::optional<std::string>& subDirectory) = 0;

    virtual void createDirectoryDated(Date date) = 0;
    // A data directory in the session directory.
    virtual void createDirectory(const std::string& directory, Date date) = 0;
    // Stores <stamp>.stowhvn and lists it in existingFiles().
    virtual void uploadBackupHistory(const std::string& historyText, Date date) = 0;
    // Stores the file under its own name in the data directory, or in the session
    // directory without one; returns when the transfer has ended.
    virtual void uploadFile(const std::string& path, Date date, const std::optional<std::string>& directory) = 0;
    // The history file and the session directory of the session.
    virtual void deleteBackupSession(const std::shared_ptr<BackupSession>& session) = 0;
    // A whole device directory.
    virtual void deleteBackupForDeviceId(const std::string& deviceName) = 0;
    // Renames a device directory, both named relative to the base directory.
    virtual void moveFromPath(const std::string& from, const std::string& to) = 0;

    // The room left on the storage as the engine reports it; the unit is the engine's own
    // (megabytes for most).
    virtual double freeSpace() = 0;
    virtual void refreshFreeSpace() = 0;
    // The largest file the engine takes, in megabytes.
    virtual std::int32_t fileSizeUploadLimit() = 0;

    // The transfer banner.
    virtual void showProgressOnView() = 0;
    virtual void hideProgress() = 0;

    // The names of this device's history files, in listing order: the last is the newest.
    virtual std::vector<std::string> existingFiles() const = 0;
    // Takes a history file that didn't read out of existingFiles(), so that the next
    // loadMostRecentBackupSession() fetches the one before it; it stays out of the list,
    // listings included, until the next flushCache().
    virtual void dropDamagedHistoryFile(const std::string& name) = 0;
    // The names of the device directories on the storage.
    virtual std::vector<std::string> availableDeviceBackups() const = 0;
};

// The operations of engines that talk to a service with a session of its own.
class ConnectionOrientedStorageHelperProtocol : public virtual StorageHelperProtocol {
public:
    // With a valid session, makes sure the engine is current and its listing ready;
    // otherwise starts the login.
    virtual void connect() = 0;
    virtual void disconnect() = 0;
    // False whenever there is no network, whatever the stored session says.
    virtual bool isLoggedIn() = 0;
    // What the settings show of the account.
    virtual std::string accountName() = 0;
};

// Optional operations, each its own interface, since callers ask whether an engine
// answers to one: answersTo<DefaultBackupDetailsLoading>(engine).

// Lists this device's directory into existingFiles() again.
class DefaultBackupDetailsLoading {
public:
    virtual ~DefaultBackupDetailsLoading() = default;
    virtual void loadDefaultBackupDetails() = 0;
};

// Copies within the storage, both paths relative to the base directory.
class StorageCopying {
public:
    virtual ~StorageCopying() = default;
    virtual void copyFromPath(const std::string& from, const std::string& to) = 0;
};

// Engines that address files by id fetch the ids of a session's files before a restore.
class FileRefPreloading {
public:
    virtual ~FileRefPreloading() = default;
    virtual void preloadFileRefUsingDate(Date date) = 0;
};

// Engines that keep their files on the device itself, where a stored file can be read in place.
class StoredFileReading {
public:
    virtual ~StoredFileReading() = default;
    // The path of a session's stored file, or nothing when no plain file (not a link) is stored there.
    virtual std::optional<std::string> storedFilePath(const std::string& name, Date date,
                                                      const std::optional<std::string>& subDirectory) = 0;
};

// Engines that connect in the background once made; the start waits until the engine
// is ready or has an error.
class BackgroundInitialization {
public:
    virtual ~BackgroundInitialization() = default;
    virtual bool isInitialized() = 0;
};

// Engines whose link is made on a login screen of the service's own, which the main
// screen finishes when it appears again.
class LoginCompletion {
public:
    virtual ~LoginCompletion() = default;
    virtual void loginControllerDidLogin() = 0;
    virtual void loginControllerDidCancel() = 0;
};

// The engine as one of the optional interfaces, or nothing when it doesn't answer to it.
template <typename Optional>
Optional* answersTo(const std::shared_ptr<StorageHelperProtocol>& engine) {
    return dynamic_cast<Optional*>(engine.get());
}

}  // namespace stowhaven

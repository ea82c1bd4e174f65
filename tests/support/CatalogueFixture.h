#pragma once

#include "archive/HistoryText.h"
#include "core/CydiaFileManager.h"
#include "core/ProcessFlags.h"
#include "platform/FileManager.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/StorageLayout.h"
#include "storage/local/LocalStorageHelper.h"
#include "support/SandboxDevice.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace stowhaven::test {

// The catalogue on a sandbox device of the test's own, whose commands run, with local
// storage in its usual place and the package scan on.
class CatalogueFixture : public ::testing::Test {
protected:
    CatalogueFixture() : scope_(device_.root()) {
        scope_.services.shell.runsCommands = true;
        gAutoScanPkgEnabled = true;
        LocalStorageHelper::settleStoragePath();
        engine_ = LocalStorageHelper::createLocalStorageHelper();
        dataLoaded_ = NotificationCenter::defaultCenter().addObserver("DATA_LOADED", nullptr,
                                                                      [this](const Notification&) { ++loads_; });
    }
    ~CatalogueFixture() override { NotificationCenter::defaultCenter().removeObserver(dataLoaded_); }

    static CydiaFileManager& manager() { return CydiaFileManager::shared(); }

    // A session of that date (seconds since 2001) holding the package lines.
    static std::shared_ptr<BackupSession> sessionOf(double date, const std::string& rawData) {
        auto session = std::make_shared<BackupSession>();
        session->setSessionDate(Date(date));
        session->setRawData(rawData);
        session->setNbPackages(1);
        return session;
    }

    // Its history file in the storage folder; answers the file's name.
    static std::string store(const std::shared_ptr<BackupSession>& session) {
        const std::string name = StorageLayout::historyFileName(*session->sessionDate());
        FileManager::writeFile(localStoragePath() + "/" + name, *HistoryText::encode(ArchiveValue(session)));
        return name;
    }

    static bool isStored(const std::string& name) { return FileManager::fileExists(localStoragePath() + "/" + name); }

    // The commands on record that begin so.
    std::vector<std::string> commandsStartingWith(const std::string& start) const {
        std::vector<std::string> found;
        for (const std::string& command : scope_.services.shell.commands) {
            if (command.starts_with(start)) found.push_back(command);
        }
        return found;
    }

    SandboxDevice device_{"minimal"};
    SupervisorScope scope_;
    std::shared_ptr<LocalStorageHelper> engine_;
    std::atomic<int> loads_{0};

private:
    NotificationCenter::ObserverToken dataLoaded_{};
};

}  // namespace stowhaven::test

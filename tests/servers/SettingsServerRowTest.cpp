// The FTP row of the settings screen, against a real FTP server on 127.0.0.1.

#include "flows/SettingsViewController.h"
#include "platform/Strings.h"
#include "storage/ServerLogin.h"
#include "storage/ftp/FTPHelper.h"
#include "storage/local/LocalStorageHelper.h"
#include "support/FtpServer.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

using Tap = SettingsViewController::TapResult;

constexpr std::size_t kFtpRow = 2;

// Without a login the row asks for one; once logged in and in use it asks before logging
// out, and the logout goes back to local storage.
TEST(SettingsServerRowTest, TheServerInUseAsksBeforeLoggingOutAndOneWithoutALoginAsksForIt) {
    STOWHAVEN_SKIP_WITHOUT_FTP_SERVER();
    test::SupervisorScope scope;
    LocalStorageHelper::settleStoragePath();
    LocalStorageHelper::createLocalStorageHelper();
    test::FtpServer server;
    const auto settings = SettingsViewController::create();
    auto& alerts = scope.screens.alerts->alerts;

    EXPECT_EQ(settings->tapEngineRow(kFtpRow), Tap::LoginNeeded);
    EXPECT_TRUE(scope.supervisor().isStorageLocal());

    const FtpAccount account = server.account();
    ASSERT_EQ(ServerLogin::logIn(
                  StorageType::FTP, kFTPSettings,
                  ServerCredentials{account.host, std::to_string(account.port), account.login, account.password, ""}),
              std::nullopt);
    EXPECT_TRUE(settings->engineRows()[kFtpRow].highlighted);
    EXPECT_EQ(settings->tapEngineRow(kFtpRow), Tap::Asked);
    ASSERT_EQ(alerts.back().title, Strings::localized("CLOUD_LOGOUT_TITLE"));
    scope.screens.alerts->dismissLast(0);
    EXPECT_TRUE(scope.supervisor().isStorageFTP()) << "No keeps the login";

    settings->tapEngineRow(kFtpRow);
    scope.screens.alerts->dismissLast(1);
    scope.serveMainQueue();
    EXPECT_TRUE(scope.supervisor().isStorageLocal());
    EXPECT_FALSE(settings->engineRows()[kFtpRow].highlighted);
    EXPECT_EQ(settings->tapEngineRow(kFtpRow), Tap::LoginNeeded);
    EXPECT_FALSE(settings->storageChanged()) << "back where the screen opened";
}

}  // namespace
}  // namespace stowhaven

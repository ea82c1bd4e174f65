#pragma once

#include "servers/StorageEngineContract.h"
#include "storage/ServerCredentials.h"
#include "storage/ftp/FTPHelper.h"
#include "support/FtpServer.h"
#include "support/SupervisorScope.h"

#include <memory>
#include <string>

namespace stowhaven {

// The FTP engine on a test server of its own, stored as the current storage.
class FtpEngineUnderTest final : public EngineUnderTest {
public:
    explicit FtpEngineUnderTest(test::SupervisorScope& scope, const test::FtpServerOptions& options = {})
        : server_(options) {
        const FtpAccount account = server_.account();
        ServerCredentials{account.host, std::to_string(account.port), account.login, account.password, ""}
            .storeAsCurrent(kFTPSettings);
        scope.supervisor().setStorageToFTP();
    }
    std::shared_ptr<StorageHelperProtocol> start() override { return FTPHelper::createFTPHelper(); }

private:
    test::FtpServer server_;
};

}  // namespace stowhaven

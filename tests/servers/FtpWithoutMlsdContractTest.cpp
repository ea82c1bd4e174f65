// The FTP engine keeps the whole storage contract on a server that doesn't know MLSD and
// lists folders only with LIST, as older and embedded servers do.

#include "servers/FtpEngineUnderTest.h"
#include "servers/StorageEngineContract.h"
#include "support/FtpServer.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

INSTANTIATE_TEST_SUITE_P(FtpWithoutMlsd, StorageEngineContractTest,
                         ::testing::Values(EngineKind{"FtpWithoutMlsd",
                                                      [](test::SupervisorScope& scope) {
                                                          return std::make_unique<FtpEngineUnderTest>(
                                                              scope, test::FtpServerOptions{.withoutMlsd = true});
                                                      },
                                                      test::FtpServer::isAvailable}),
                         engineKindName);

}  // namespace
}  // namespace stowhaven

#pragma once

// What the tests of a cloud engine on its service's emulator share. ENGINE is the service as a
// login leaves it, an EngineUnderTest with the `emulator` it runs on and the `Helper` class of
// the engine; each test has it on a device of its own:
//
//     class BoxEngine final : public EngineUnderTest {
//     public:
//         using Helper = BoxHelper;
//         ...
//         test::BoxEmulator emulator;
//     };
//     INSTANTIATE_TEST_SUITE_P(Box, StorageEngineContractTest, ::testing::Values(cloudEngineKind<BoxEngine>("Box")),
//                              engineKindName);
//     class BoxEngineTest : public CloudEngineTest<BoxEngine> {};

#include "servers/StorageEngineContract.h"

#include "platform/FileManager.h"
#include "platform/TemporaryDirectory.h"
#include "support/FolderSnapshot.h"
#include "support/ServiceEmulator.h"
#include "support/StorageRequest.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// ENGINE's part in the storage contract, under NAME.
template <class Engine>
EngineKind cloudEngineKind(const char* name) {
    return {name,
            [](test::SupervisorScope& scope) -> std::unique_ptr<EngineUnderTest> {
                return std::make_unique<Engine>(scope);
            },
            test::ServiceEmulator::isAvailable};
}

template <class Engine>
class CloudEngineTest : public ::testing::Test {
protected:
    using Helper = typename Engine::Helper;

    void SetUp() override {
        if (!test::ServiceEmulator::isAvailable()) GTEST_SKIP() << "the service emulators of the tests need /usr/bin/python3";
        storage_ = std::make_unique<Engine>(scope_);
    }

    auto& emulator() { return storage_->emulator; }
    Supervisor& supervisor() { return scope_.supervisor(); }

    // The engine as a start of the program makes it.
    std::shared_ptr<Helper> start() {
        engine_ = std::dynamic_pointer_cast<Helper>(storage_->start());
        return engine_;
    }
    test::RequestOutcome request(const std::function<void()>& operation) {
        return test::request(*engine_, operation, patience_);
    }
    bool succeeds(const std::function<void()>& operation) { return request(operation).succeeded; }
    std::string error() const { return engine_->errorMessage().value_or("no error"); }

    // A session as a backup stores it: its folder, the data folders NOTES and PHOTOS each
    // holding one part ("NOTES-001" of "the NOTES"), then its history file.
    void storeSession(Date date, const std::string& history) {
        ASSERT_TRUE(succeeds([&] { engine_->createDirectoryDated(date); })) << error();
        for (const std::string kind : {"NOTES", "PHOTOS"}) {
            ASSERT_TRUE(succeeds([&] { engine_->createDirectory(kind, date); })) << error();
            const std::string part = temporaryFile(kind + "-001", "the " + kind);
            ASSERT_TRUE(succeeds([&] { engine_->uploadFile(part, date, kind); })) << error();
            FileManager::removeItem(part);
        }
        ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory(history, date); })) << error();
    }

    // Every file of the device root now either lies in the temporary folder or was there
    // BEFORE; and none holds HOSTILEBYTES, when given.
    void expectNothingWrittenOutsideTheTemporaryFolder(const std::map<std::string, std::string>& before,
                                                       const std::optional<std::string>& hostileBytes = std::nullopt) {
        const std::string temporary = TemporaryDirectory::path().substr(scope_.path("/").size());
        for (const auto& [path, contents] : test::snapshot(scope_.path("/"))) {
            EXPECT_TRUE(path.starts_with(temporary) || before.contains(path)) << path << " was written";
            if (hostileBytes) {
                EXPECT_NE(contents, *hostileBytes) << path;
            }
        }
    }

    // Where an engine's error tells what was wrong with a reply: at its start, or somewhere in
    // a longer report of the request.
    enum class Told { AtTheStart, InTheReport };

    // A listing of the device's sessions that is no JSON, too large or nested too deep fails
    // the request, and the error tells what was wrong.
    void expectBrokenRepliesRefused(const std::string& listingPath, Told told = Told::AtTheStart) {
        const struct {
            const char* fault;
            const char* message;
        } broken[] = {{"malformed_json", "The reply is no JSON"},
                      {"huge_json", "The reply is larger than"},
                      {"deep_json", "The reply is nested too deep"}};
        for (const auto& reply : broken) {
            emulator().injectFault(reply.fault, 1, listingPath);
            const auto details = request([&] { engine_->loadBackupDetailsForDevice(supervisor().deviceName()); });
            EXPECT_TRUE(details.failed) << reply.fault;
            const std::string::size_type at = error().find(reply.message);
            EXPECT_TRUE(told == Told::AtTheStart ? at == 0 : at != std::string::npos) << reply.fault << ": " << error();
        }
    }

    test::SupervisorScope scope_;
    std::unique_ptr<Engine> storage_;
    std::shared_ptr<Helper> engine_;
    // How long a request may serve the main queue, where an engine's retries run.
    std::chrono::duration<double> patience_ = std::chrono::seconds(0);
};

}  // namespace stowhaven

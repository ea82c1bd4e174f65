#pragma once

// What every storage engine must do, as a suite run against each engine on its real storage
// (StorageEngineContractTest.cpp). An engine joins from its own test file:
//
//     INSTANTIATE_TEST_SUITE_P(Dropbox, StorageEngineContractTest,
//                              ::testing::Values(EngineKind{"Dropbox", makeDropboxEngine, isAvailable}),
//                              engineKindName);

#include "platform/FileManager.h"
#include "platform/TemporaryDirectory.h"
#include "storage/StorageHelperProtocol.h"
#include "support/StorageRequest.h"
#include "support/SupervisorScope.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

// One engine on a storage of the test's own, made anew as at each start of the program.
class EngineUnderTest {
public:
    virtual ~EngineUnderTest() = default;
    virtual std::shared_ptr<StorageHelperProtocol> start() = 0;
};

// A file of the temporary folder, as the backup leaves one to send.
inline std::string temporaryFile(const std::string& name, const std::string& bytes) {
    const std::string path = TemporaryDirectory::path() + "/" + name;
    FileManager::writeFile(path, bytes);
    return path;
}

struct EngineKind {
    const char* name;
    std::function<std::unique_ptr<EngineUnderTest>(test::SupervisorScope&)> make;
    std::function<bool()> isAvailable = [] { return true; };
};

inline void PrintTo(const EngineKind& kind, std::ostream* out) { *out << kind.name; }

inline std::string engineKindName(const ::testing::TestParamInfo<EngineKind>& info) { return info.param.name; }

class StorageEngineContractTest : public ::testing::TestWithParam<EngineKind> {
protected:
    void SetUp() override {
        if (!GetParam().isAvailable()) GTEST_SKIP() << GetParam().name << "'s test server isn't installed";
        storage_ = GetParam().make(scope_);
        engine_ = storage_->start();
        ASSERT_TRUE(engine_) << "the engine starts";
        ASSERT_FALSE(engine_->hasError()) << *engine_->errorMessage();
    }

    static std::optional<std::string> fetched(const test::RequestOutcome& outcome) {
        const auto* path = std::get_if<std::string>(&outcome.object);
        return path ? FileManager::contentsOfFile(*path) : std::nullopt;
    }

    bool succeeds(const std::function<void()>& operation) { return test::request(*engine_, operation).succeeded; }

    // A session stored as the backup stores one: its folders, a data part, its index and
    // its history file.
    void storeSession(Date date, const std::string& history) {
        ASSERT_TRUE(succeeds([&] { engine_->createDirectoryDated(date); }));
        ASSERT_TRUE(succeeds([&] { engine_->createDirectory("NOTES", date); }));
        const std::string part = temporaryFile("NOTES-001", "the notes of " + history);
        ASSERT_TRUE(succeeds([&] { engine_->uploadFile(part, date, std::string("NOTES")); }));
        const std::string index = temporaryFile("NOTES.idx", "NOTES-001\n");
        ASSERT_TRUE(succeeds([&] { engine_->uploadFile(index, date, std::nullopt); }));
        ASSERT_TRUE(succeeds([&] { engine_->uploadBackupHistory(history, date); }));
    }

    // The engine as the next start makes it, the newest history file fetched.
    void restart() {
        engine_ = storage_->start();
        engine_->loadMostRecentBackupSession();
    }

    test::SupervisorScope scope_;
    std::unique_ptr<EngineUnderTest> storage_;
    std::shared_ptr<StorageHelperProtocol> engine_;
};

}  // namespace stowhaven

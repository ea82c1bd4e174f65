#pragma once

#include "storage/StorageEngines.h"
#include "support/NullStorageEngine.h"

#include <memory>
#include <string>
#include <vector>

namespace stowhaven::test {

// An engine with the free space and upload limit a test gives it, which notes each flush
// of its cache in a log shared with other engines.
class FakeStorageEngine final : public NullStorageEngine {
public:
    explicit FakeStorageEngine(std::string name, std::shared_ptr<std::vector<std::string>> flushLog = nullptr)
        : name_(std::move(name)), flushLog_(std::move(flushLog)) {}

    void flushCache() override {
        if (flushLog_) flushLog_->push_back(name_);
    }
    double freeSpace() override { return space; }
    std::int32_t fileSizeUploadLimit() override { return uploadLimit; }

    // Registers an engine of TYPE and makes it, as an engine does when it becomes current.
    static std::shared_ptr<FakeStorageEngine> install(StorageType type, std::string name = "fake",
                                                      std::shared_ptr<std::vector<std::string>> flushLog = nullptr) {
        auto engine = std::make_shared<FakeStorageEngine>(std::move(name), std::move(flushLog));
        StorageEngines::registerFactory(type, [engine] { return engine; });
        StorageEngines::create(type);
        return engine;
    }

    double space = 0;
    std::int32_t uploadLimit = 0;

private:
    std::string name_;
    std::shared_ptr<std::vector<std::string>> flushLog_;
};

}  // namespace stowhaven::test

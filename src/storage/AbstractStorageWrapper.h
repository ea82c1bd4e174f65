#pragma once

#include <mutex>
#include <optional>
#include <string>

namespace stowhaven {

// The service side of a network engine: its requests, credentials and progress texts.
// What all wrappers share is the engine's last error, in the text the user sees; none
// means no error.
class AbstractStorageWrapper {
public:
    virtual ~AbstractStorageWrapper() = default;

    std::optional<std::string> errorMessage() const {
        std::lock_guard lock(mutex_);
        return errorMessage_;
    }
    void setErrorMessage(std::optional<std::string> message) {
        std::lock_guard lock(mutex_);
        errorMessage_ = std::move(message);
    }

private:
    mutable std::mutex mutex_;
    std::optional<std::string> errorMessage_;
};

}  // namespace stowhaven

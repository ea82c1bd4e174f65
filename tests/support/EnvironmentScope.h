#pragma once

#include <cstdlib>
#include <map>
#include <optional>
#include <string>

namespace stowhaven::test {

// Variables of the test process's environment set for the object's life, then put back as
// they were.
class EnvironmentScope {
public:
    EnvironmentScope() = default;
    EnvironmentScope(const EnvironmentScope&) = delete;
    EnvironmentScope& operator=(const EnvironmentScope&) = delete;
    ~EnvironmentScope() {
        for (const auto& [name, before] : before_) {
            if (before) {
                ::setenv(name.c_str(), before->c_str(), 1);
            } else {
                ::unsetenv(name.c_str());
            }
        }
    }

    void set(const std::string& name, const std::string& value) {
        if (!before_.contains(name)) {
            const char* current = std::getenv(name.c_str());
            before_[name] = current ? std::optional<std::string>(current) : std::nullopt;
        }
        ::setenv(name.c_str(), value.c_str(), 1);
    }

private:
    std::map<std::string, std::optional<std::string>> before_;
};

}  // namespace stowhaven::test

#pragma once

#include "support/EnvironmentScope.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace stowhaven::test {

// The variables that point the program at a service's emulator (its hosts, the made-up app
// credentials), with their values; each emulator's fixture lists its own.
class ServiceVariables {
public:
    explicit ServiceVariables(std::vector<std::pair<std::string, std::string>> variables)
        : variables_(std::move(variables)) {}

    // "NAME=value NAME=value ": the prefix of SandboxDevice::run.
    std::string prefix() const {
        std::string prefix;
        for (const auto& [name, value] : variables_) prefix += name + "=" + value + " ";
        return prefix;
    }
    // The same variables set in this process, until the object goes.
    void exportAll() {
        auto& scope = exported_.emplace();
        for (const auto& [name, value] : variables_) scope.set(name, value);
    }

private:
    std::vector<std::pair<std::string, std::string>> variables_;
    std::optional<EnvironmentScope> exported_;
};

}  // namespace stowhaven::test

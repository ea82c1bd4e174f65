#pragma once

#include "support/SandboxDevice.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <map>
#include <string>

namespace stowhaven::test {

// Album name -> its entry of `items --json`.
inline std::map<std::string, nlohmann::json> albumsOf(const SandboxDevice& device) {
    const auto items = device.run("items --json");
    EXPECT_EQ(items.status, 0) << items.errors;
    std::map<std::string, nlohmann::json> albums;
    const nlohmann::json listed = nlohmann::json::parse(items.output);
    for (const auto& album : listed["albums"]) {
        albums[album["name"].get<std::string>()] = album;
    }
    return albums;
}

}  // namespace stowhaven::test

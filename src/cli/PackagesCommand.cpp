#include "cli/PackagesCommand.h"

#include "core/PackageScan.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace stowhaven {

namespace {

nlohmann::json toJson(const ScanLine& package) {
    return {{"name", package.name},
            {"package", package.identifier},
            {"version", package.version},
            {"maintainer", package.maintainer},
            {"section", package.section},
            {"depends", package.depends},
            {"status", package.status}};
}

void printTable(const std::vector<ScanLine>& packages, std::ostream& out) {
    std::size_t identifierWidth = 7, versionWidth = 7;
    for (const ScanLine& package : packages) {
        identifierWidth = std::max(identifierWidth, package.identifier.size());
        versionWidth = std::max(versionWidth, package.version.size());
    }
    fmt::print(out, "{:<{}}  {:<{}}  {}\n", "PACKAGE", identifierWidth, "VERSION", versionWidth, "NAME");
    for (const ScanLine& package : packages) {
        fmt::print(out, "{:<{}}  {:<{}}  {}\n", package.identifier, identifierWidth, package.version, versionWidth,
                   package.name);
    }
    fmt::print(out, "{} package(s)\n", packages.size());
}

}  // namespace

int PackagesCommand::run(bool asJson, std::ostream& out, std::ostream& errors) {
    const auto lines = PackageScan::lines();
    if (!lines) {
        errors << "stowhaven: the package database couldn't be read\n";
        return 1;
    }
    std::vector<ScanLine> packages;
    for (const std::string& line : *lines) {
        if (auto package = PackageScan::parse(line)) packages.push_back(std::move(*package));
    }
    if (asJson) {
        nlohmann::json list = nlohmann::json::array();
        for (const ScanLine& package : packages) list.push_back(toJson(package));
        out << list.dump(2) << '\n';
    } else {
        printTable(packages, out);
    }
    return 0;
}

}  // namespace stowhaven

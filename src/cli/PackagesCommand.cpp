#include "cli/PackagesCommand.h"

#include "core/PackageScan.h"
#include "core/PackageSection.h"
#include "platform/DeviceFacts.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <nlohmann/json.hpp>

#include <algorithm>

namespace stowhaven {

namespace {

using Sections = std::vector<std::shared_ptr<PackageSection>>;

// The device's packages that the system handles, by section.
Sections catalogue(const std::vector<std::string>& scanLines) {
    PackageSection::Packages packages;
    for (const std::string& line : scanLines) {
        auto package = std::make_shared<CydiaFile>(line);
        if (package->packageName()) packages.push_back(std::move(package));
    }
    return PackageSection::sectionsOf(packages);
}

nlohmann::json nullable(const std::optional<std::string>& value) { return value ? nlohmann::json(*value) : nullptr; }

nlohmann::json toJson(const CydiaFile& package, const std::string& deviceVersion) {
    return {{"name", nullable(package.name())},
            {"packageName", nullable(package.packageName())},
            {"version", nullable(package.version())},
            {"maintainerName", nullable(package.maintainerName())},
            {"sectionName", nullable(package.sectionName())},
            {"dependsList", package.dependsList() ? nlohmann::json(*package.dependsList()) : nullptr},
            {"firmwareSpecs", nullable(package.firmwareSpecs())},
            {"firmwareCompatible", package.isFirmwareCompatible(deviceVersion)}};
}

void printJson(const Sections& sections, const std::string& deviceVersion, std::ostream& out) {
    nlohmann::json list = nlohmann::json::array();
    for (const auto& section : sections) {
        for (const auto& package : section->packages()) list.push_back(toJson(*package, deviceVersion));
    }
    out << list.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

std::string orDash(const std::optional<std::string>& value) { return value.value_or("-"); }

// A line of the table, cell by cell.
using Row = std::vector<std::string>;

Row headings() { return {"NAME", "PACKAGE", "VERSION", "MAINTAINER", "FIRMWARE OK", "DEPENDS"}; }

Row rowOf(const CydiaFile& package, const std::string& deviceVersion) {
    const std::string firmware = fmt::format("{}, {}", package.isFirmwareCompatible(deviceVersion) ? "yes" : "no",
                                             package.firmwareSpecs().value_or("none stated"));
    const std::string depends =
        package.dependsList() ? fmt::format("{}", fmt::join(*package.dependsList(), ", ")) : "-";
    return {orDash(package.name()),
            orDash(package.packageName()),
            orDash(package.version()),
            orDash(package.maintainerName()),
            firmware,
            depends};
}

// The last cell isn't padded.
std::string formatted(const Row& row, const std::vector<std::size_t>& widths) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
        line += fmt::format("  {:<{}}", row[i], i + 1 < row.size() ? widths[i] : 0);
    }
    return line;
}

void printText(const Sections& sections, const std::string& deviceVersion, std::ostream& out) {
    std::vector<std::vector<Row>> rowsBySection;
    std::vector<std::size_t> widths(headings().size());
    std::size_t count = 0;
    const auto widen = [&](const Row& row) {
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    };
    widen(headings());
    for (const auto& section : sections) {
        std::vector<Row>& rows = rowsBySection.emplace_back();
        for (const auto& package : section->packages()) widen(rows.emplace_back(rowOf(*package, deviceVersion)));
        count += rows.size();
    }

    fmt::print(out, "{}\n", formatted(headings(), widths));
    for (std::size_t i = 0; i < sections.size(); ++i) {
        fmt::print(out, "\n{} ({})\n", sections[i]->name(), rowsBySection[i].size());
        for (const Row& row : rowsBySection[i]) fmt::print(out, "{}\n", formatted(row, widths));
    }
    fmt::print(out, "\n{} package(s) in {} section(s); firmware checked against system {}\n", count, sections.size(),
               deviceVersion);
}

}  // namespace

int PackagesCommand::run(bool asJson, std::ostream& out, std::ostream& errors) {
    const auto lines = PackageScan::lines();
    if (!lines) {
        errors << "stowhaven: the package database couldn't be read\n";
        return 1;
    }
    const Sections sections = catalogue(*lines);
    const std::string deviceVersion = DeviceFactsReader::read().systemVersion;
    if (asJson) {
        printJson(sections, deviceVersion, out);
    } else {
        printText(sections, deviceVersion, out);
    }
    return 0;
}

}  // namespace stowhaven

#include "backup/PackageRepackReport.h"

#include "platform/dispatch/Monitored.h"

namespace stowhaven {

namespace {

Monitored<std::vector<std::string>>& lines() {
    static Monitored<std::vector<std::string>> shared;
    return shared;
}

}  // namespace

void PackageRepackReport::add(std::string line) {
    lines().with([&line](std::vector<std::string>& all) { all.push_back(std::move(line)); });
}

std::vector<std::string> PackageRepackReport::take() {
    return lines().with([](std::vector<std::string>& all) { return std::exchange(all, {}); });
}

}  // namespace stowhaven

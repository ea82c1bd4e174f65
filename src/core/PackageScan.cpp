#include "core/PackageScan.h"

#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/ShellQuote.h"
#include "platform/TemporaryDirectory.h"

namespace stowhaven {

std::string PackageScan::command(const std::string& output) {
    return "dpkg-query -W -f='${name}\t${Package}\t${Version}\t${Maintainer}\t${Section}\t${Depends}\t${status}\n' > " +
           ShellQuote::path(output);
}

std::optional<std::vector<std::string>> PackageScan::lines() {
    const std::string file = TemporaryDirectory::path() + "/cydiaApps.txt";
    Platform::current().shell().systemExecute(command(file));
    if (!FileManager::isRegularFile(file)) {
        SH_LOG("Couldn't read <{}>!", file);
        return std::nullopt;
    }
    std::string error;
    const auto text = FileManager::contentsOfFile(file, &error);
    FileManager::removeItem(file);
    if (!text) {
        SH_LOG("Unable to load description from <{}>", file);
        return std::nullopt;
    }
    auto result = linesOf(*text);
    SH_LOG("# current pkg(s): {}", result.size());
    return result;
}

std::vector<std::string> PackageScan::linesOf(std::string_view output) {
    std::vector<std::string> result;
    std::size_t start = 0;
    while (start < output.size()) {
        const auto end = output.find('\n', start);
        const auto stop = end == std::string_view::npos ? output.size() : end;
        if (stop > start) result.emplace_back(output.substr(start, stop - start));
        start = stop + 1;
    }
    return result;
}

std::optional<ScanLine> PackageScan::parse(const std::string& line) {
    std::vector<std::string> fields;
    std::size_t start = 0;
    for (auto tab = line.find('\t'); tab != std::string::npos; tab = line.find('\t', start)) {
        fields.push_back(line.substr(start, tab - start));
        start = tab + 1;
    }
    fields.push_back(line.substr(start));
    if (fields.size() < 7) return std::nullopt;
    return ScanLine{fields[0], fields[1], fields[2], fields[3], fields[4], fields[5], fields[6]};
}

}  // namespace stowhaven

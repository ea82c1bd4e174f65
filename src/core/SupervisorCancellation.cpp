#include "core/Supervisor.h"

#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/ShellQuote.h"
#include "platform/dispatch/NotificationCenter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

namespace stowhaven {

namespace {

// The lines of a process listing's file, split at "\n"; nothing when it can't be read.
std::optional<std::vector<std::string>> linesOf(const std::string& path) {
    const auto text = FileManager::contentsOfFile(path);
    if (!text) return std::nullopt;
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (true) {
        const std::size_t end = text->find('\n', start);
        lines.push_back(text->substr(start, end - start));
        if (end == std::string::npos) return lines;
        start = end + 1;
    }
}

// The listing's lines stand unquoted in command lines: only process numbers may, and the
// empty line that ends the listing.
bool isProcessNumberOrEmpty(const std::string& line) {
    return std::all_of(line.begin(), line.end(), [](char c) { return std::isdigit(static_cast<unsigned char>(c)); });
}

}  // namespace

void Supervisor::handleProgressCanceled() {
    fCanceled_ = true;
    // The job's tools go first, so that none writes into the temporary folder once swept.
    Platform::current().shell().stopRunningCommands();
    removeTemporaryFiles();
    removeTemporaryFolders();
    NotificationCenter::defaultCenter().post("OPERATION_CANCELED");
}

void Supervisor::cancelChildProcesses() {
    const std::string listing = getTemporaryFileName(true);
    systemExecute("sudo ps -ax | \\grep Stowhaven_ | awk '{print $2}' > " + ShellQuote::path(listing));
    const auto references = linesOf(listing);
    if (!references) return;
    const std::string& reference = references->front();
    if (reference.empty() || !isProcessNumberOrEmpty(reference)) {
        SH_LOG("Refusing process number <{}>", reference);
        return;
    }

    systemExecute(
        fmt::format("sudo ps -ax | \\grep {} | awk '{{print $2}}' > {}", reference, ShellQuote::path(listing)));
    for (const std::string& line : linesOf(listing).value_or(std::vector<std::string>{})) {
        if (line == reference) continue;
        if (!isProcessNumberOrEmpty(line)) {
            SH_LOG("Refusing process number <{}>", line);
            continue;
        }
        // The listing is of the whole machine, so on a copy of a device it may name the
        // commands of another program: nothing is killed there.
        Platform::current().shell().executeOnRunningSystem("kill -9 " + line);
    }
}

}  // namespace stowhaven

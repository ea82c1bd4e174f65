#include "core/TemporarySweep.h"

#include "platform/FileManager.h"
#include "platform/JobLock.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/ShellQuote.h"
#include "platform/TemporaryDirectory.h"

#include <array>
#include <cctype>
#include <string_view>

namespace stowhaven {

namespace {

std::string_view extensionOf(std::string_view name) {
    const auto dot = name.rfind('.');
    return dot == std::string_view::npos || dot == 0 ? std::string_view() : name.substr(dot + 1);
}

bool removeMatching(const std::function<bool(const std::string& name)>& matches) {
    const std::string folder = TemporaryDirectory::path();
    std::string error;
    const auto names = FileManager::contentsOfDirectory(folder, &error);
    if (!names) {
        SH_LOG("{}", error);
        return false;
    }
    for (const std::string& name : *names) {
        if (!matches(name)) continue;
        const std::string path = folder + "/" + name;
        if (!FileManager::removeItem(path)) SH_LOG("Can't delete <{}>", path);
    }
    return true;
}

// The temporary folder holds the working files of a job that another program may be running
// now: while one runs, the folder is left as it is.
void unlessAnotherProgramsJobRuns(const std::function<void()>& sweep) {
    if (const auto running = JobLock::unlessAnotherProcessRunsAJob(sweep)) {
        SH_LOG("Leaving <{}> as it is: {}", TemporaryDirectory::path(), *running);
    }
}

}  // namespace

bool TemporarySweep::isSweptName(const std::string& name) {
    constexpr std::array<std::string_view, 7> kExtensions = {"txt", "zip", "tar", "tbz", "idx", "stowhvn", "deb"};
    if (name.empty()) return false;
    if (std::isdigit(static_cast<unsigned char>(name.front()))) return true;
    const std::string_view extension = extensionOf(name);
    for (std::string_view swept : kExtensions) {
        if (extension == swept) return true;
    }
    return name.starts_with("pkg") || name.find('-') != std::string::npos;
}

std::string TemporarySweep::shellSweepCommand(const std::string& folder) {
    return "cd \"" + ShellQuote::inDoubleQuotes(folder) + "\"; rm *-[0-9]*";
}

bool TemporarySweep::removeTemporaryFilesMatching(const std::function<bool(const std::string& name)>& matches) {
    bool listed = false;
    unlessAnotherProgramsJobRuns([&] { listed = removeMatching(matches); });
    return listed;
}

void TemporarySweep::removeTemporaryFiles() {
    unlessAnotherProgramsJobRuns([] {
        if (removeMatching(isSweptName)) {
            Platform::current().shell().systemExecute(shellSweepCommand(TemporaryDirectory::path()));
        }
    });
}

void TemporarySweep::removeTemporaryFolders() {
    unlessAnotherProgramsJobRuns([] {
        const std::string folder = TemporaryDirectory::path();
        for (const char* name : {"debs", "Photos", "Videos"}) {
            const std::string path = folder + "/" + name;
            if (!FileManager::fileExists(path)) {
                SH_LOG("Can't find <{}>", path);
            } else if (!FileManager::removeItem(path)) {
                SH_LOG("Can't delete <{}>", path);
            }
        }
    });
}

}  // namespace stowhaven

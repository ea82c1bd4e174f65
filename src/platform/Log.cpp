#include "platform/Log.h"

#include "platform/PrintableOutput.h"

#include <syslog.h>

#include <cstdio>
#include <mutex>

namespace stowhaven {

namespace {

std::mutex gLogMutex;
bool gVerbose = false;
Log::Capture gCapture;

// Keeps "Class::method" out of a compiler signature such as
// "std::map<int, int> stowhaven::Class::method(int) const"; a lambda logs as the
// function it stands in.
std::string_view shortFunctionName(std::string_view signature) {
    const auto open = signature.find('(');
    std::string_view head = signature.substr(0, open);
    const auto space = head.rfind(' ');
    if (space != std::string_view::npos) head.remove_prefix(space + 1);
    for (std::string_view scope : {"stowhaven::", "{anonymous}::"}) {
        if (head.starts_with(scope)) head.remove_prefix(scope.size());
    }
    return head;
}

}  // namespace

std::string Log::prefix(const std::source_location& where) {
    return fmt::format("{} [L:{}] ", shortFunctionName(where.function_name()), where.line());
}

void Log::write(const std::source_location& where, std::string_view message) {
    // Log lines name files and packages from outside, and reach a terminal with --verbose.
    const std::string line = PrintableOutput::printable(prefix(where) + std::string(message));
    std::lock_guard lock(gLogMutex);
    syslog(LOG_NOTICE, "%s", line.c_str());
    if (gVerbose) std::fprintf(stderr, "%s\n", line.c_str());
    if (gCapture) gCapture(line);
}

void Log::setVerbose(bool verbose) {
    std::lock_guard lock(gLogMutex);
    gVerbose = verbose;
}

void Log::setCapture(Capture capture) {
    std::lock_guard lock(gLogMutex);
    gCapture = std::move(capture);
}

}  // namespace stowhaven

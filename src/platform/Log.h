#pragma once

#include <fmt/format.h>

#include <functional>
#include <source_location>
#include <string>
#include <string_view>

namespace stowhaven {

// The one logging call of the system. Every line carries the "%s [L:%d] " prefix of the
// calling function and line; there are no levels. Lines go to the system log, to stderr
// when verbose, and to any capture that tests install.
class Log {
public:
    using Capture = std::function<void(std::string_view line)>;

    static void write(const std::source_location& where, std::string_view message);

    static void setVerbose(bool verbose);
    // Replaces the capture; an empty function removes it.
    static void setCapture(Capture capture);

    // "Supervisor::init [L:42] " for a call from Supervisor::init at line 42.
    static std::string prefix(const std::source_location& where);
};

}  // namespace stowhaven

#define SH_LOG(...) ::stowhaven::Log::write(std::source_location::current(), ::fmt::format(__VA_ARGS__))

#include "cli/OpenCommand.h"

#include "platform/FileManager.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <filesystem>

namespace stowhaven {

namespace {

constexpr const char* kSourceApplication = "the command line";

}  // namespace

int OpenCommand::run(StowhavenAppDelegate& delegate, const std::string& target, std::ostream& out,
                     std::ostream& errors) {
    if (target == StowhavenAppDelegate::kAutobackupURL) {
        delegate.openURL(target, kSourceApplication);
        out << "Automatic backup is on for this run; the stored setting is unchanged.\n";
        return 0;
    }
    if (target.find("://") != std::string::npos) {
        fmt::print(errors, "stowhaven: <{}> is no URL of the program's: it takes {} and files\n", target,
                   StowhavenAppDelegate::kAutobackupURL);
        return 2;
    }
    if (!FileManager::isRegularFile(target)) {
        fmt::print(errors, "stowhaven: <{}> is no file\n", target);
        return 2;
    }
    const std::string path = std::filesystem::absolute(target).lexically_normal().string();
    delegate.openURL("file://" + path, kSourceApplication);
    fmt::print(out, "Held for import: {}\n", path);
    return 0;
}

}  // namespace stowhaven

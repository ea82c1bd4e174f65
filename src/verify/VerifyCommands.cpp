#include "verify/VerifyCommands.h"

#include "platform/ShellQuote.h"

#include <fmt/format.h>

namespace stowhaven {

std::string VerifyCommands::appendPart(const std::string& part, const std::string& joined) {
    return fmt::format("cat {} >> {}", ShellQuote::quoted(part), ShellQuote::quoted(joined));
}

std::string VerifyCommands::checkDeb(const std::string& deb, const std::string& mark) {
    return fmt::format("dpkg-deb --info {0} > /dev/null && dpkg-deb --fsys-tarfile {0} > /dev/null && echo Whole > {1}",
                       ShellQuote::quoted(deb), ShellQuote::quoted(mark));
}

std::string VerifyCommands::markRun(const std::string& mark) { return fmt::format(": > {}", ShellQuote::quoted(mark)); }

}  // namespace stowhaven

#include "backup/PackageRepack.h"

#include "backup/PackageRepackRecord.h"
#include "backup/PackageRepackTree.h"
#include "core/SessionDebName.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/ShellQuote.h"

#include <fmt/format.h>

namespace stowhaven {

namespace {

constexpr const char* kArchitecture = "iphoneos-arm";

PackageRepack::Outcome refused(std::string reason) {
    PackageRepack::Outcome outcome;
    outcome.reason = std::move(reason);
    return outcome;
}

// What dpkg-deb said last, for the reason of a refusal.
std::string lastLineOf(const std::optional<std::string>& text) {
    const std::string trimmed = textutil::trimmed(text.value_or(""));
    const std::size_t lineStart = trimmed.rfind('\n');
    return trimmed.empty() ? "dpkg-deb made no file"
                           : trimmed.substr(lineStart == std::string::npos ? 0 : lineStart + 1);
}

}  // namespace

std::string PackageRepack::packCommand(const std::string& tree, const std::string& deb, const std::string& log) {
    return fmt::format("dpkg-deb -b {} {} 1> {} 2>&1", ShellQuote::quoted(tree), ShellQuote::quoted(deb),
                       ShellQuote::quoted(log));
}

PackageRepack::Outcome PackageRepack::repack(const std::string& identifier, const std::string& folder,
                                             const std::string& workFolder) {
    std::string reason;
    const auto record = PackageRepackRecord::read(identifier, &reason);
    if (!record) return refused(reason);
    // The capture keeps the device's architecture only; a repack does the same.
    if (record->architecture != kArchitecture) return refused("its architecture is " + record->architecture);

    const std::string tree = workFolder + "/" + identifier;
    FileManager::removeItem(tree);
    PackageRepackTree::Outcome built = PackageRepackTree::build(*record, tree);
    Outcome outcome;
    if (built.refusal) {
        outcome = refused(*built.refusal);
    } else {
        Supervisor& supervisor = Supervisor::shared();
        const std::string deb = folder + "/" + sessionDebName(identifier, record->version);
        const std::string log = supervisor.getTemporaryFileName(false);
        supervisor.systemExecute(packCommand(tree, deb, log));
        // dpkg-deb's word is the file it leaves.
        if (FileManager::sizeOfItem(deb) > 0) {
            outcome.result = built.missing.empty() ? Result::Whole : Result::Partial;
            outcome.debPath = deb;
            outcome.missing = std::move(built.missing);
        } else {
            outcome = refused(lastLineOf(FileManager::contentsOfFile(log)));
        }
        FileManager::removeItem(log);
    }
    std::string error;
    if (!FileManager::removeItem(tree, &error)) SH_LOG("{}", error);
    return outcome;
}

std::string PackageRepack::describe(const std::string& identifier, const Outcome& outcome) {
    switch (outcome.result) {
        case Result::Whole:
            return fmt::format("Repacked <{}> from the device: no repository served it", identifier);
        case Result::Partial:
            return fmt::format("Repacked <{}> from the device without what it no longer has: {}", identifier,
                               textutil::joined(outcome.missing, ", "));
        case Result::Refused:
            break;
    }
    return fmt::format("Couldn't repack <{}> from the device: {}", identifier, outcome.reason);
}

}  // namespace stowhaven

#pragma once

#include <CLI/CLI.hpp>

#include <memory>
#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

class StorageHelperProtocol;

// "stowhaven verify [--session STAMP | --all] [--key-file FILE] [--json]": reads sessions
// from the current storage, whatever the engine, and tells item by item whether a restore
// would find each of them whole: the history, the key, each kind's index and parts, each
// application and folder archive and each captured .deb. It writes nothing on the device
// or the storage, only in the program's temporary folder, emptied after. Without --session
// or --all, the newest session. Exits 0 when all is sound, 1 for a fault or no session to
// verify, 2 for a usage error.
class VerifyCommand {
public:
    void add(CLI::App& app);
    bool parsed() const { return command_->parsed(); }
    int run(std::ostream& out, std::ostream& errors) const;

private:
    // The chosen sessions checked one by one into the report; the exit status.
    int verifySessions(const std::shared_ptr<StorageHelperProtocol>& engine, const std::optional<std::string>& key,
                       std::ostream& out, std::ostream& errors) const;

    CLI::App* command_ = nullptr;
    std::optional<std::string> session_;
    bool all_ = false;
    std::optional<std::string> keyFile_;
    bool asJson_ = false;
};

}  // namespace stowhaven

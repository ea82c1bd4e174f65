#include "cli/VerifyCommand.h"

#include "cli/CatalogueLoad.h"
#include "cli/JobRequest.h"
#include "cli/ProgressBar.h"
#include "core/AlertPresenter.h"
#include "core/Supervisor.h"
#include "platform/Log.h"
#include "platform/PrintableOutput.h"
#include "platform/Terminal.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/MainQueue.h"
#include "storage/StorageHelperProtocol.h"
#include "storage/StorageLayout.h"
#include "verify/HistoryFiles.h"
#include "verify/SessionCheck.h"
#include "verify/ToolsRunning.h"
#include "verify/VerifyReport.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <atomic>
#include <chrono>

namespace stowhaven {

namespace {

constexpr int kUsageError = 2;
// No verification takes this long; one that does is left to end with the program.
constexpr std::chrono::hours kLongestVerification{24};

// Whether two ISO 8601 times in UTC ("2024-05-01T08:00:00.250Z") name the same second: a
// history file's name keeps the session's time to the second.
bool isSameSecond(const std::string& left, const std::string& right) {
    constexpr std::size_t kToTheSecond = 19;
    return left.size() > kToTheSecond && right.size() > kToTheSecond && left.ends_with('Z') && right.ends_with('Z') &&
           left.compare(0, kToTheSecond, right, 0, kToTheSecond) == 0;
}

// The history files to verify among those listed (oldest first): the one named by SESSION
// (its stamp, or its date as the history lists it), all of them, or the newest; nothing for
// a session that isn't there.
std::optional<std::vector<std::string>> chosen(const std::vector<std::string>& listed,
                                               const std::optional<std::string>& session, bool all) {
    if (all) return listed;
    if (!session) return listed.empty() ? listed : std::vector<std::string>{listed.back()};
    const auto named = std::find_if(listed.begin(), listed.end(), [&session](const std::string& name) {
        const auto date = StorageLayout::dateOfHistoryFile(name);
        return date && (StorageLayout::stamp(*date) == *session || isSameSecond(date->iso8601(), *session));
    });
    if (named == listed.end()) return std::nullopt;
    return std::vector<std::string>{*named};
}

// The progress of the item in hand on standard error: on a terminal one line redrawn in
// place, blanked before each line of the report so that the two never share a line.
class VerifyProgress {
public:
    explicit VerifyProgress(std::ostream& errors)
        : errors_(errors), inPlace_(Terminal::isStandardErrorATerminal()), width_(Terminal::standardErrorWidth()) {}

    void show(const std::string& stamp, const std::string& item, std::optional<double> fraction) {
        if (!bar_) bar_.emplace(errors_, inPlace_, width_);
        bar_->setText(fmt::format("Verifying {} {}", stamp, item));
        if (fraction) bar_->setFraction(*fraction);
    }
    void clear() {
        if (!bar_) return;
        bar_.reset();
        if (!inPlace_) return;
        PrintableOutput::returnToLineStart(errors_);
        errors_ << std::string(width_ > 0 ? width_ - 1 : 0, ' ');
        PrintableOutput::returnToLineStart(errors_);
        errors_ << std::flush;
    }

private:
    std::ostream& errors_;
    bool inPlace_;
    std::size_t width_;
    std::optional<ProgressBar> bar_;
};

// The engine reports each file it can't fetch as an alert; verification looks for files
// that may well be missing (the part after the last one), and the report says what a
// missing file means, so the engine's words go to the log.
class AlertsToLog final : public AlertPresenter {
public:
    void present(const Alert& alert, Answered onAnswer) override {
        SH_LOG("{}: {}", alert.title, alert.message);
        if (onAnswer) onAnswer({});
    }
};

}  // namespace

void VerifyCommand::add(CLI::App& app) {
    command_ = app.add_subcommand(
        "verify", "Check that the newest session (or another, or all) on the current storage would restore whole");
    auto* session = command_->add_option(
        "--session", session_, "The session's stamp (2024-05-01_10~00~00) or its date as the history lists it");
    auto* all = command_->add_flag("--all", all_, "Every session of this device on the storage");
    session->excludes(all);
    command_->add_option("--key-file", keyFile_,
                         "A file whose first line is the key (or set STOWHAVEN_KEY; without either, the key the "
                         "session keeps)");
    command_->add_flag("--json", asJson_, "One JSON object a line, the summary last");
}

int VerifyCommand::verifySessions(const std::shared_ptr<StorageHelperProtocol>& engine,
                                  const std::optional<std::string>& key, std::ostream& out,
                                  std::ostream& errors) const {
    const std::string engineName = Supervisor::shared().storageEngineName();
    const auto sessions = chosen(HistoryFiles::listed(*engine), session_, all_);
    if (!sessions) {
        fmt::print(errors, "stowhaven: no session {} on {} (see stowhaven history)\n", session_.value_or(""),
                   engineName);
        return kUsageError;
    }
    if (sessions->empty()) {
        fmt::print(errors, "stowhaven: there is no session to verify on {}\n", engineName);
        return 1;
    }
    const auto fetched = HistoryFiles::fetch(*engine, *sessions);
    VerifyProgress progress(errors);
    VerifyReport report(out, asJson_, {[&progress] { progress.clear(); }, deviceToolsRun});
    for (const std::string& name : *sessions) {
        const auto date = StorageLayout::dateOfHistoryFile(name);
        if (auto* preloading = answersTo<FileRefPreloading>(engine); preloading && date) {
            preloading->preloadFileRefUsingDate(*date);
        }
        const auto local = fetched.find(name);
        SessionCheck check(*engine, report, [&](const std::string& item, std::optional<double> fraction) {
            progress.show(date ? StorageLayout::stamp(*date) : name, item, fraction);
        });
        check.run(name, local != fetched.end() ? std::optional(local->second) : std::nullopt, key);
    }
    report.summary(sessions->size());
    return report.allSound() ? 0 : 1;
}

int VerifyCommand::run(std::ostream& out, std::ostream& errors) const {
    const auto presets = JobRequest{{}, keyFile_}.presets(errors);
    if (!presets) return kUsageError;
    Supervisor& supervisor = Supervisor::shared();
    startStorageEngine();
    const auto engine = supervisor.currentStorageEngine();
    if (!engine || supervisor.isStorageAddressbook()) {
        fmt::print(errors, "stowhaven: {} keeps no archives to verify\n", supervisor.storageEngineName());
        return kUsageError;
    }
    AlertPresenter::setShared(std::make_shared<AlertsToLog>());
    // The engine is asked from a background thread, as every job asks it, while the main
    // queue serves its retries and the signals.
    std::atomic<int> status = -1;
    GlobalQueue::get(GlobalQueue::Priority::Default).async([&] {
        // Set once the work's own state is gone: the main thread goes on as soon as it is.
        status = verifySessions(engine, presets->key, out, errors);
    });
    MainQueue::shared().runUntil([&status] { return status.load() >= 0; }, kLongestVerification);
    supervisor.removeTemporaryFiles();
    return status.load() >= 0 ? status.load() : 1;
}

}  // namespace stowhaven

// The catalogue's full load on large sandbox devices, beside the one dpkg-query command
// that it runs: 1,000, 2,500 and 5,000 generated packages, each device with 300 App Store
// applications and 2,000 tweak preference files. Targets: the load takes at most the time
// of its dpkg-query command plus 150 ms, and grows linearly with the packages; a summary
// after the report works both out from the measured times.
//
// The devices are made by scripts/make-device in a folder of the benchmark's own, once per
// size and before any timing, and removed at the end. Commands run through the host shell
// on the device root only, never on the host's own package database or /var/mobile.

#include "core/CydiaFileManager.h"
#include "core/PackageScan.h"
#include "core/ProcessFlags.h"
#include "core/Supervisor.h"
#include "platform/DeviceRoot.h"
#include "platform/Platform.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/dispatch/NotificationCenter.h"
#include "storage/local/LocalStorageHelper.h"

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

constexpr int kApplications = 300;
constexpr int kPreferenceFiles = 2000;
constexpr double kTargetMarginMs = 150;
constexpr std::chrono::seconds kLoadTimeout{300};
constexpr const char* kScanBenchmark = "BM_DpkgQueryScan";
constexpr const char* kLoadBenchmark = "BM_LoadPackages";

// The benchmark's own folder and the large devices in it, each made on first use.
class BulkDevices {
public:
    BulkDevices() {
        std::string pattern = (std::filesystem::temp_directory_path() / "stowhaven-load-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no benchmark folder at " + pattern);
        folder_ = pattern;
    }
    ~BulkDevices() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    BulkDevices(const BulkDevices&) = delete;
    BulkDevices& operator=(const BulkDevices&) = delete;

    const std::string& folder() const { return folder_; }

    // The root of the device with this many generated packages; nothing when it can't be made.
    std::optional<std::string> root(int packages) {
        if (const auto made = roots_.find(packages); made != roots_.end()) return made->second;
        const std::string root = fmt::format("{}/device-{}", folder_, packages);
        // The builder's summary line goes to the error stream, away from the report.
        const std::string command = fmt::format(
            "{0}/scripts/make-device {1} --description {0}/tests/fixtures/devices/minimal.json --bulk-packages {2} "
            "--bulk-applications {3} --bulk-preferences {4} 1>&2",
            STOWHAVEN_SOURCE_DIR, root, packages, kApplications, kPreferenceFiles);
        if (std::system(command.c_str()) != 0) return std::nullopt;
        return roots_[packages] = root;
    }

private:
    std::string folder_;
    std::map<int, std::string> roots_;
};

void serveMainQueue() {
    while (MainQueue::shared().runOnce() > 0) {
    }
}

// Makes the device of the benchmark's size the current one, with a fresh Supervisor and
// catalogue on their next use; false, with the benchmark skipped, when it can't.
bool enterDevice(benchmark::State& state, BulkDevices& devices) {
    const auto root = devices.root(static_cast<int>(state.range(0)));
    if (!root) {
        state.SkipWithError("the device couldn't be made");
        return false;
    }
    serveMainQueue();
    CydiaFileManager::resetForTesting();
    Supervisor::resetForTesting();
    if (!DeviceRoot::set(*root)) {
        state.SkipWithError("the device's folder can't be a device root");
        return false;
    }
    return true;
}

// The settings of a full load: every scan of the device on, local storage with no session.
void prepareFullLoad() {
    for (auto* flag : {&gAutoScanPkgEnabled, &gAutoScanAppStoreAppsEnabled, &gAutoScanStockAppsEnabled,
                       &gAutoScanOtherOptionsEnabled}) {
        flag->store(true);
    }
    Supervisor::shared().setStorageToLocal();
    LocalStorageHelper::settleStoragePath();
    LocalStorageHelper::createLocalStorageHelper();
}

// Starts the load and serves the main queue until the load posts "DATA_LOADED"; false when
// it doesn't in time.
bool loadUntilDataLoaded() {
    NotificationCenter& center = NotificationCenter::defaultCenter();
    bool loaded = false;
    // On the main queue, so that runUntil() sees the end as soon as the block has run.
    const auto observer =
        center.addObserver("DATA_LOADED", &MainQueue::shared(), [&](const Notification&) { loaded = true; });
    CydiaFileManager::shared().loadPackages();
    const bool ended = MainQueue::shared().runUntil([&] { return loaded; }, kLoadTimeout);
    center.removeObserver(observer);
    return ended;
}

double lineCount(const std::string& path) {
    std::ifstream file(path);
    return static_cast<double>(std::count(std::istreambuf_iterator<char>(file), {}, '\n'));
}

void dpkgQueryScan(benchmark::State& state, BulkDevices& devices) {
    if (!enterDevice(state, devices)) return;
    const std::string output = devices.folder() + "/scan.txt";
    for (auto _ : state) Platform::current().shell().systemExecute(PackageScan::command(output));
    state.counters["packages"] = lineCount(output);
}

void loadPackages(benchmark::State& state, BulkDevices& devices) {
    if (!enterDevice(state, devices)) return;
    prepareFullLoad();
    for (auto _ : state) {
        // The load only fills empty lists: each time a fresh catalogue, for a whole first load.
        state.PauseTiming();
        serveMainQueue();
        CydiaFileManager::resetForTesting();
        CydiaFileManager::shared();  // its making is no part of the load
        state.ResumeTiming();
        if (!loadUntilDataLoaded()) {
            state.SkipWithError("the load didn't post DATA_LOADED in time");
            break;
        }
    }
    CydiaFileManager& catalogue = CydiaFileManager::shared();
    state.counters["packages"] = static_cast<double>(catalogue.currentPackages().size());
    state.counters["applications"] = static_cast<double>(catalogue.currentApplications().size());
    state.counters["preference files"] = static_cast<double>(catalogue.currentPreferencesFiles().size());
}

// The report that the command line chose, then a summary of the targets, on the error
// stream so that a JSON or CSV report stays whole.
class TargetSummaryReporter final : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& context) override {
        report_->SetOutputStream(&GetOutputStream());
        report_->SetErrorStream(&GetErrorStream());
        return report_->ReportContext(context);
    }

    void ReportRuns(const std::vector<Run>& runs) override {
        report_->ReportRuns(runs);
        for (const Run& run : runs) {
            // With repetitions the mean comes after the single runs and takes their place.
            if (run.error_occurred || (run.run_type == Run::RT_Aggregate && run.aggregate_name != "mean")) continue;
            Measures& measures = sizes_[std::stoi(run.run_name.args)];
            const bool isScan = run.run_name.function_name == kScanBenchmark;
            (isScan ? measures.scanMs : measures.loadMs) = run.GetAdjustedRealTime();
        }
    }

    void Finalize() override {
        report_->Finalize();
        GetOutputStream().flush();
        printSummary(GetErrorStream());
    }

private:
    struct Measures {
        std::optional<double> scanMs;
        std::optional<double> loadMs;
    };

    void printSummary(std::ostream& out) const {
        out << fmt::format("\nTarget: {} within {} + {:g} ms, and linear in the packages\n", kLoadBenchmark,
                           kScanBenchmark, kTargetMarginMs);
        out << fmt::format("{:>18}  {:>14}  {:>15}  {:>12}  {}\n", "generated packages", "dpkg-query ms",
                           "loadPackages ms", "over scan ms", "target");
        for (const auto& [size, measures] : sizes_) {
            if (!measures.scanMs || !measures.loadMs) continue;
            const double overScan = *measures.loadMs - *measures.scanMs;
            out << fmt::format("{:>18}  {:>14.1f}  {:>15.1f}  {:>12.1f}  {}\n", size, *measures.scanMs,
                               *measures.loadMs, overScan, overScan <= kTargetMarginMs ? "met" : "MISSED");
        }
        printGrowth(out);
    }

    // Linear growth shows as the same cost per package from one size to the next.
    void printGrowth(std::ostream& out) const {
        std::optional<std::pair<int, double>> previous;  // the size and its load time
        std::string steps;
        for (const auto& [size, measures] : sizes_) {
            if (!measures.loadMs) continue;
            if (previous) {
                const double perThousand = (*measures.loadMs - previous->second) * 1000 / (size - previous->first);
                steps += fmt::format("  {} -> {}: {:.1f} ms", previous->first, size, perThousand);
            }
            previous = {size, *measures.loadMs};
        }
        if (!steps.empty()) out << fmt::format("{} per 1,000 more packages:{}\n", kLoadBenchmark, steps);
    }

    BenchmarkReporter* report_ = benchmark::CreateDefaultDisplayReporter();
    std::map<int, Measures> sizes_;  // by size: the number of generated packages
};

using SizedBenchmark = void (*)(benchmark::State&, BulkDevices&);

// Three times on each size: one load is long enough to time on its own.
void registerOnEachSize(const char* name, SizedBenchmark run, BulkDevices& devices) {
    benchmark::RegisterBenchmark(name, [run, &devices](benchmark::State& state) { run(state, devices); })
        ->Arg(1000)
        ->Arg(2500)
        ->Arg(5000)
        ->Iterations(3)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
}

}  // namespace
}  // namespace stowhaven

int main(int argc, char** argv) {
    using namespace stowhaven;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    MainQueue::shared().bindToCurrentThread();

    BulkDevices devices;
    registerOnEachSize(kScanBenchmark, dpkgQueryScan, devices);
    registerOnEachSize(kLoadBenchmark, loadPackages, devices);
    TargetSummaryReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);

    // Nothing may still work on the devices when they go.
    serveMainQueue();
    CydiaFileManager::resetForTesting();
    Supervisor::resetForTesting();
    benchmark::Shutdown();
    return 0;
}

// The whole job on one data category of 1 GiB, the notes (2,048 files of 256 KiB in 16
// folders and eight of 64 MiB), to local storage: the program's backup, verify and restore,
// each beside a plain shell script that runs the same tools on the same files, round after
// round in one run, the two sides taking turns to go first. Before each run the disk is
// synced and the page cache dropped (hence as root), so that neither side pays for the
// other's writes or gains from its reads. Targets: the backup and the restore take at most
// 1.10 times the script's time with a peak memory under 64 MiB; verify at most 1.2 times
// `cat | tar -t` of the joined parts.
//
// The peak memory is the kernel's accounting of the program's process as wait4 reports it:
// the largest of the program's own peak, that of any tool it waited for and the benchmark's
// own few MiB (a process started by vfork carries its parent's), so it can only overstate
// the program's own.
//
// The device is made by scripts/make-device in a folder of the benchmark's own and removed at
// the end; it holds the tools a jailbroken device keeps, so that the start installs none.
// Usage: category_job_benchmark [ROUNDS], 7 by default.

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

extern char** environ;

namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t kLargeFileBytes = 64ULL << 20;
constexpr int kLargeFiles = 8;
constexpr std::uintmax_t kSmallFileBytes = 256ULL << 10;
constexpr int kFolders = 16;
constexpr int kSmallFilesPerFolder = 128;
constexpr std::uintmax_t kCategoryBytes =
    kLargeFiles * kLargeFileBytes + kFolders * kSmallFilesPerFolder * kSmallFileBytes;
constexpr double kPeakMemoryGoalMiB = 64;
constexpr std::size_t kBlockBytes = 1 << 20;

// Device paths of the benchmark's device.
constexpr const char* kNotes = "/var/mobile/Library/Notes";
constexpr const char* kStorage = "/var/mobile/Library/Preferences/Stowhaven";
constexpr const char* kScriptWork = "/var/tmp/script";
constexpr const char* kScriptStorage = "/var/mobile/Library/Preferences/ScriptStorage";
// The tools the start installs where a device lacks them.
constexpr const char* kDeviceTools[] = {"/sbin/ifconfig", "/usr/bin/gawk", "/bin/mv", "/usr/bin/openssl",
                                        "/usr/bin/find"};

struct Run {
    bool succeeded = false;
    double seconds = 0;
    double peakMiB = 0;
};

// Writes out what is waiting for the disk and drops the clean page cache: each run starts
// from the same state, reading its files from the disk, whatever ran before it. Without
// the drop, the time of the writes swings by a factor of two from run to run here.
void settleDisk() {
    sync();
    std::ofstream("/proc/sys/vm/drop_caches") << "1\n";
}

// Runs ARGUMENTS with nothing on the terminal, from a settled disk.
Run timed(const std::vector<std::string>& arguments) {
    settleDisk();
    std::vector<char*> argv;
    for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const int descriptor : {0, 1, 2}) {
        posix_spawn_file_actions_addopen(&actions, descriptor, "/dev/null", descriptor == 0 ? O_RDONLY : O_WRONLY, 0);
    }
    const auto start = std::chrono::steady_clock::now();
    pid_t child = -1;
    const int spawned = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) return {};
    int status = 0;
    rusage usage{};
    while (wait4(child, &status, 0, &usage) < 0) {
        if (errno != EINTR) return {};
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return {WIFEXITED(status) && WEXITSTATUS(status) == 0, seconds, static_cast<double>(usage.ru_maxrss) / 1024};
}

// A shell script run with its own positional arguments, never spliced into its text.
std::vector<std::string> script(const std::string& text, const std::vector<std::string>& arguments) {
    std::vector<std::string> command{"/bin/sh", "-c", "set -e; " + text, "script"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

std::uintmax_t bytesBelow(const fs::path& folder) {
    std::uintmax_t bytes = 0;
    std::error_code ignored;
    for (const auto& entry : fs::recursive_directory_iterator(folder, ignored)) {
        if (entry.is_regular_file(ignored)) bytes += entry.file_size(ignored);
    }
    return bytes;
}

void removeContents(const fs::path& folder) {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(folder, ignored)) fs::remove_all(entry.path(), ignored);
}

// The benchmark's device in a folder of its own, with the category's data and the program
// set to back up that category alone to local storage.
class BenchDevice {
public:
    BenchDevice() {
        std::string pattern = (fs::temp_directory_path() / "stowhaven-job-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no benchmark folder at " + pattern);
        folder_ = pattern;
        root_ = folder_ / "device";
        const std::string make =
            fmt::format("{0}/scripts/make-device {1} --description {0}/tests/fixtures/devices/minimal.json",
                        STOWHAVEN_SOURCE_DIR, root_.string());
        if (std::system(make.c_str()) != 0) throw std::runtime_error("the device couldn't be made");
        for (const char* tool : kDeviceTools) writeFile(path(tool), "");
        writeCategory();
        for (const char* folder : {kScriptWork, kScriptStorage}) fs::create_directories(path(folder));
        for (const std::vector<std::string>& arguments :
             {std::vector<std::string>{"settings", "LocalStoragePath", path(kStorage)},
              {"settings", "AutoScanPkgEnabled", "true"},
              {"settings", "AutoScanStockAppsEnabled", "true"},
              {"select", "stock-apps", "--only", "Notes", "--save-default"}}) {
            if (!program(arguments).succeeded) throw std::runtime_error("the program couldn't be set up");
        }
    }
    ~BenchDevice() {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }
    BenchDevice(const BenchDevice&) = delete;
    BenchDevice& operator=(const BenchDevice&) = delete;

    std::string path(const std::string& devicePath) const { return root_.string() + devicePath; }
    const fs::path& root() const { return root_; }

    Run program(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {STOWHAVEN_PROGRAM, "--root", root_.string()});
        return timed(arguments);
    }

    // The folder of the newest session in storage.
    fs::path newestSession() const {
        std::vector<fs::path> sessions;
        for (const auto& entry : fs::directory_iterator(path(kStorage))) {
            if (entry.is_directory()) sessions.push_back(entry.path());
        }
        if (sessions.empty()) throw std::runtime_error("no session in storage");
        return *std::max_element(sessions.begin(), sessions.end());
    }

private:
    static void writeFile(const std::string& path, std::string_view bytes) {
        fs::create_directories(fs::path(path).parent_path());
        std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }

    // Incompressible bytes, written from a block of 1 MiB so that the benchmark itself stays
    // small: its peak would otherwise show in that of every process it starts.
    void writeCategory() const {
        std::string block(kBlockBytes, '\0');
        std::mt19937_64 generator(42);
        for (std::size_t offset = 0; offset < block.size(); offset += 8) {
            const std::uint64_t word = generator();
            std::copy_n(reinterpret_cast<const char*>(&word), 8, block.data() + offset);
        }
        const std::string notes = path(kNotes);
        for (int file = 1; file <= kLargeFiles; ++file) {
            const std::string name = fmt::format("{}/attachment-{}.bin", notes, file);
            fs::create_directories(fs::path(name).parent_path());
            std::ofstream out(name, std::ios::binary);
            for (std::uintmax_t written = 0; written < kLargeFileBytes; written += kBlockBytes) {
                out.write(block.data(), static_cast<std::streamsize>(block.size()));
            }
        }
        for (int folder = 1; folder <= kFolders; ++folder) {
            for (int file = 0; file < kSmallFilesPerFolder; ++file) {
                const std::size_t start = static_cast<std::size_t>(file) * 4096;
                writeFile(fmt::format("{}/folder-{}/note-{}.txt", notes, folder, file),
                          std::string_view(block).substr(start, kSmallFileBytes));
            }
        }
    }

    fs::path folder_;
    fs::path root_;
};

struct Job {
    std::string name;
    double goal;
    bool memoryGoal;
    // Readies the device for one run of the program (true) or of the script.
    std::function<void(bool forProgram)> prepare;
    std::function<Run()> ours;
    std::function<Run()> script;
    // Whether the program's run (true) or the script's left what the job is for.
    std::function<bool(bool byProgram)> done;
};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Runs the job's rounds, the sides taking turns to go first; prints each round and the
// summary; false when a run failed.
bool compare(const Job& job, int rounds) {
    std::vector<double> ours;
    std::vector<double> theirs;
    double peakMiB = 0;
    for (int round = 1; round <= rounds; ++round) {
        Run mine;
        Run reference;
        for (int turn = 0; turn < 2; ++turn) {
            const bool oursNow = (turn == 0) == (round % 2 == 1);
            job.prepare(oursNow);
            Run& run = oursNow ? mine : reference;
            run = oursNow ? job.ours() : job.script();
            if (!run.succeeded || !job.done(oursNow)) {
                std::cerr << fmt::format("{}: the {} failed in round {}\n", job.name, oursNow ? "program" : "script",
                                         round);
                return false;
            }
        }
        ours.push_back(mine.seconds);
        theirs.push_back(reference.seconds);
        peakMiB = std::max(peakMiB, mine.peakMiB);
        std::cout << fmt::format("{} round {}: stowhaven {:.2f} s ({:.1f} MiB peak), script {:.2f} s\n", job.name,
                                 round, mine.seconds, mine.peakMiB, reference.seconds);
    }
    const double ratio = median(ours) / median(theirs);
    const bool timeMet = ratio <= job.goal;
    const bool memoryMet = !job.memoryGoal || peakMiB < kPeakMemoryGoalMiB;
    std::cout << fmt::format(
        "{}: median of {} rounds: stowhaven {:.2f} s, script {:.2f} s, ratio {:.2f} (goal {:.2f}): {}; peak {:.1f} "
        "MiB{}\n\n",
        job.name, rounds, median(ours), median(theirs), ratio, job.goal, timeMet ? "met" : "MISSED", peakMiB,
        job.memoryGoal ? fmt::format(" (goal under {:.0f} MiB): {}", kPeakMemoryGoalMiB, memoryMet ? "met" : "MISSED")
                       : "");
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 7;
    try {
        const BenchDevice device;
        const fs::path notes = device.path(kNotes);
        const std::string storage = device.path(kStorage);
        const std::string work = device.path(kScriptWork);
        const std::string scriptStorage = device.path(kScriptStorage);
        std::cout << fmt::format("{} bytes of notes in {} files; {} rounds of each job\n\n", bytesBelow(notes),
                                 kLargeFiles + kFolders * kSmallFilesPerFolder, rounds);

        // The same tar, split and mv commands on the same files as the program's backup runs.
        const Job backup{
            "backup",
            1.10,
            true,
            [&](bool forProgram) { removeContents(forProgram ? storage : scriptStorage); },
            [&] {
                return device.program({"backup", "--yes"});
            },
            [&] {
                return timed(script(
                    R"(cd "$1"; tar -cf Notes.tbz -C "$2" var/mobile/Library/Notes; tar -tf Notes.tbz > /dev/null;
                       split -b 20M -d -a 3 Notes.tbz NOTES-; ls -1a NOTES-* > NOTES.idx; rm -f Notes.tbz;
                       mkdir -p "$3/NOTES"; mv NOTES.idx "$3/"; for part in NOTES-*; do mv "$part" "$3/NOTES/"; done)",
                    {work, device.root().string(), scriptStorage}));
            },
            [&](bool byProgram) { return bytesBelow(byProgram ? storage : scriptStorage) >= kCategoryBytes; }};
        // The last round leaves the program's session, which the other jobs read.
        if (!compare(backup, rounds)) return 1;
        const std::string session = device.newestSession().string();

        const Job verify{"verify",
                         1.2,
                         false,
                         [](bool) {},
                         [&] { return device.program({"verify"}); },
                         [&] { return timed(script(R"(cat "$1"/NOTES/NOTES-??? | tar -t > /dev/null)", {session})); },
                         [](bool) { return true; }};
        if (!compare(verify, rounds)) return 1;

        const Job restore{"restore",
                          1.10,
                          true,
                          [&](bool) {
                              std::error_code ignored;
                              fs::remove_all(notes, ignored);
                          },
                          [&] {
                              return device.program({"restore", "--yes"});
                          },
                          [&] {
                              return timed(script(
                                  R"(cd "$1"; cat "$2"/NOTES/NOTES-??? > Notes.tbz;
                       tar -xf Notes.tbz -C "$3" --no-same-owner --no-same-permissions; rm -f Notes.tbz)",
                                  {work, session, device.root().string()}));
                          },
                          [&](bool) { return bytesBelow(notes) == kCategoryBytes; }};
        if (!compare(restore, rounds)) return 1;
    } catch (const std::exception& error) {
        std::cerr << "The benchmark couldn't run: " << error.what() << "\n";
        return 1;
    }
    return 0;
}

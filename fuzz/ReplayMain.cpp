// Runs a fuzz target without libFuzzer over the inputs given: each FILE, and each file of
// each FOLDER in name order, once. A broken invariant or a crash ends the run as it would
// under the fuzzer; a run with no input at all fails, as it proves nothing. The test suite
// replays every target's seed corpus this way, so that the targets keep building and their
// seeds keep passing between fuzzing runs.
//   fuzz_TARGET FILE|FOLDER...

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// The fuzzer's own mutation, which the targets' custom mutators call; a replay never mutates.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t*, std::size_t size, std::size_t) { return size; }

namespace {

std::vector<std::filesystem::path> inputsIn(int count, char** arguments) {
    std::vector<std::filesystem::path> inputs;
    for (int index = 1; index < count; ++index) {
        const std::filesystem::path given = arguments[index];
        if (!std::filesystem::is_directory(given)) {
            inputs.push_back(given);
            continue;
        }
        std::vector<std::filesystem::path> files;
        for (const auto& entry : std::filesystem::directory_iterator(given)) {
            if (entry.is_regular_file()) files.push_back(entry.path());
        }
        std::sort(files.begin(), files.end());
        inputs.insert(inputs.end(), files.begin(), files.end());
    }
    return inputs;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::filesystem::path> inputs = inputsIn(argc, argv);
    if (inputs.empty()) {
        std::fprintf(stderr, "usage: %s FILE|FOLDER... (no input found)\n", argv[0]);
        return 2;
    }
    for (const std::filesystem::path& input : inputs) {
        std::ifstream file(input, std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "%s: can't read %s\n", argv[0], input.c_str());
            return 1;
        }
        const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("%zu inputs replayed\n", inputs.size());
    return 0;
}

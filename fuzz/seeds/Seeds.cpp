#include "seeds/Seeds.h"

#include <stdlib.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace stowhaven::fuzz {

SeedCorpus::SeedCorpus(const std::filesystem::path& folder, std::string_view name) : folder_(folder / name) {
    std::filesystem::create_directories(folder_);
}

void SeedCorpus::add(const std::string& name, std::string_view bytes) const {
    std::ofstream(folder_ / name, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string hostOutput(const std::string& command) {
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) throw std::runtime_error("couldn't run: " + command);
    std::string output;
    std::array<char, 4096> buffer{};
    for (std::size_t got; (got = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) output.append(buffer.data(), got);
    if (pclose(pipe) != 0) throw std::runtime_error("failed: " + command);
    return output;
}

ScratchFolder::ScratchFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "stowhaven-seeds-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no scratch folder at " + pattern);
    path_ = pattern;
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void ScratchFolder::write(const std::string& name, std::string_view bytes) const {
    const std::filesystem::path file = std::filesystem::path(path_) / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace stowhaven::fuzz

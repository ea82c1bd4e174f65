#pragma once

#include <filesystem>
#include <string>

namespace stowhaven::test {

// A fresh folder of the test's own, under the test runner's temporary directory, removed
// with everything in it when the object goes.
class TestFolder {
public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::string operator/(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

}  // namespace stowhaven::test

#include "support/TestFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <system_error>

namespace stowhaven::test {

TestFolder::TestFolder() {
    std::string pattern = (std::filesystem::path(::testing::TempDir()) / "stowhaven-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::system_error(errno, std::generic_category(), pattern);
    path_ = pattern;
}

TestFolder::~TestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace stowhaven::test

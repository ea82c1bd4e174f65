#include "support/TestFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <system_error>

namespace stowhaven::test {

TestFolder::TestFolder() {
    // A blank and a quote in every test's folder, as a user's folder may hold them: each
    // command line of the program must still read the paths as one word each.
    std::string pattern = (std::filesystem::path(::testing::TempDir()) / "stowhaven test's XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::system_error(errno, std::generic_category(), pattern);
    path_ = pattern;
}

TestFolder::~TestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace stowhaven::test

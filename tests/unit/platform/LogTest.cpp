#include "platform/Log.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace stowhaven {
namespace {

struct Reporter {
    void report(int value) { SH_LOG("FreeSpace: {}Mb", value); }
    std::map<int, int> reportFromLambda() {
        [] { SH_LOG("inside"); }();
        return {};
    }
};

std::vector<std::string> capturedLines(const std::function<void()>& work) {
    std::vector<std::string> lines;
    Log::setCapture([&](std::string_view line) { lines.emplace_back(line); });
    work();
    Log::setCapture({});
    return lines;
}

TEST(LogTest, LinesCarryTheFunctionAndLineOfTheCall) {
    const auto lines = capturedLines([] { Reporter().report(12); });
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(lines[0].starts_with("Reporter::report [L:")) << lines[0];
    EXPECT_TRUE(lines[0].ends_with("] FreeSpace: 12Mb")) << lines[0];
}

TEST(LogTest, ReturnTypesAndLambdasDoNotConfuseTheFunctionName) {
    const auto lines = capturedLines([] { Reporter().reportFromLambda(); });
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(lines[0].starts_with("Reporter::reportFromLambda [L:")) << lines[0];
}

}  // namespace
}  // namespace stowhaven

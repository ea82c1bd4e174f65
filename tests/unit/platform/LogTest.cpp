#include "platform/Log.h"
#include "support/CapturedLog.h"

#include <gtest/gtest.h>

#include <map>

namespace stowhaven {
namespace {

struct Reporter {
    void report(int value) { SH_LOG("FreeSpace: {}Mb", value); }
    std::map<int, int> reportFromLambda() {
        [] { SH_LOG("inside"); }();
        return {};
    }
};

TEST(LogTest, LinesCarryTheFunctionAndLineOfTheCallWhateverTheReturnTypeOrLambda) {
    test::CapturedLog log;
    Reporter().report(12);
    Reporter().reportFromLambda();
    EXPECT_TRUE(log.contains("Reporter::report [L:"));
    EXPECT_TRUE(log.contains("] FreeSpace: 12Mb"));
    EXPECT_TRUE(log.contains("Reporter::reportFromLambda [L:"));
}

}  // namespace
}  // namespace stowhaven

#include "platform/plist/PlistValue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace stowhaven {
namespace {

constexpr std::uint64_t kLargeUnsigned = std::numeric_limits<std::uint64_t>::max();

TEST(PlistValueTest, IntegersKeepTheirSignAndUnsignedValuesBeyondInt64) {
    const PlistValue large(kLargeUnsigned);
    EXPECT_EQ(large.asUnsignedInteger(), kLargeUnsigned);
    EXPECT_EQ(large.asInteger(), std::nullopt) << "doesn't fit a signed integer";

    const PlistValue negative(std::int64_t{-1});
    EXPECT_EQ(negative.asInteger(), -1);
    EXPECT_EQ(negative.asUnsignedInteger(), std::nullopt);
    EXPECT_NE(negative, large) << "the same 64 bits, different numbers";

    const PlistValue limit(std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(PlistValue(static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())), limit);
    const auto smallest = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(PlistValue(smallest).asInteger(), smallest);
}

TEST(PlistValueTest, EqualityNeedsTheSameKindAndContents) {
    // A string literal must not turn into a boolean, nor an unsigned or a float into anything
    // but a number.
    EXPECT_TRUE(PlistValue("YES").isString());
    EXPECT_TRUE(PlistValue(std::string_view("x")).isString());
    EXPECT_TRUE(PlistValue(kLargeUnsigned).isInteger());
    EXPECT_TRUE(PlistValue(0.5f).isReal());
    EXPECT_EQ(PlistValue(5u), PlistValue(std::int64_t{5}));
    EXPECT_NE(PlistValue(1), PlistValue(1.0));
    EXPECT_NE(PlistValue(1), PlistValue(true));
    EXPECT_NE(PlistValue("1"), PlistValue(1));
    EXPECT_NE(PlistValue::uid(3), PlistValue(3));
    EXPECT_NE(PlistValue(NAN), PlistValue(NAN));

    const PlistValue nested =
        PlistValue::Dictionary{{"list", PlistValue::Array{1, PlistValue::Dictionary{{"x", 2.5}}}}};
    PlistValue changed = nested;
    EXPECT_EQ(changed, nested);
    (*changed.asDictionary())["list"].asArray()->push_back(PlistValue());
    EXPECT_NE(changed, nested);
    EXPECT_EQ(nested.asDictionary()->at("list").asArray()->size(), 2u) << "a copy owns its contents";
}

TEST(PlistValueTest, NumbersConvertAsTheDevicesNumberObjects) {
    EXPECT_EQ(PlistValue(true).numberAsInteger(), 1);
    EXPECT_EQ(PlistValue(false).numberAsReal(), 0.0);
    EXPECT_EQ(PlistValue(-3).numberAsReal(), -3.0);
    EXPECT_EQ(PlistValue(2.9).numberAsInteger(), 2);
    EXPECT_EQ(PlistValue(-2.9).numberAsInteger(), -2);
    EXPECT_EQ(PlistValue(kLargeUnsigned).numberAsReal(), 18446744073709551615.0);
    // Beyond std::int64_t a conversion saturates; NaN has no integer and reads as 0.
    EXPECT_EQ(PlistValue(1e300).numberAsInteger(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(PlistValue(-1e300).numberAsInteger(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(PlistValue(kLargeUnsigned).numberAsInteger(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(PlistValue(NAN).numberAsInteger(), 0);
}

TEST(PlistValueTest, DescribesNestedValuesOnOneLine) {
    const PlistValue value = PlistValue::Dictionary{{"a", PlistValue::Array{1, 2.5, 3.0, true, PlistValue()}},
                                                    {"b", PlistValue::data(std::string("\x00\xff", 2))},
                                                    {"c", "say \"hi\"\n"},
                                                    {"d", Date(0)},
                                                    {"e", PlistValue::uid(7)},
                                                    {"f", PlistValue::Array{}},
                                                    {"g", PlistValue::Dictionary{}}};
    EXPECT_EQ(value.description(),
              "{\"a\" = (1, 2.5, 3.0, true, <null>); \"b\" = <00ff>; \"c\" = \"say \\\"hi\\\"\\n\"; "
              "\"d\" = 2001-01-01 00:00:00 +0000; \"e\" = <uid 7>; \"f\" = (); \"g\" = {}; }");
    std::string shownBytes;
    for (int i = 0; i < 32; ++i) shownBytes += "01";
    EXPECT_EQ(PlistValue::data(std::string(40, '\x01')).description(), "<" + shownBytes + "... 40 bytes>");
}

}  // namespace
}  // namespace stowhaven

#include "platform/plist/PlistValue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace stowhaven {
namespace {

constexpr std::uint64_t kLargeUnsigned = std::numeric_limits<std::uint64_t>::max();

// One value of each kind.
std::vector<PlistValue> oneOfEachKind() {
    return {PlistValue(),
            true,
            -7,
            2.5,
            "text",
            PlistValue::data(std::string("\0\1", 2)),
            Date(1.5),
            PlistValue::Array{1, "two"},
            PlistValue::Dictionary{{"key", "value"}},
            PlistValue::uid(3)};
}

TEST(PlistValueTest, EachConstructorMakesItsKind) {
    const std::vector<PlistKind> kinds = {PlistKind::Null,  PlistKind::Boolean, PlistKind::Integer, PlistKind::Real,
                                          PlistKind::String, PlistKind::Data,   PlistKind::Date,    PlistKind::Array,
                                          PlistKind::Dictionary, PlistKind::Uid};
    const auto values = oneOfEachKind();
    for (std::size_t i = 0; i < values.size(); ++i) EXPECT_EQ(values[i].kind(), kinds[i]) << values[i].description();

    // A string literal must not turn into a boolean, nor an unsigned or a float into anything
    // but a number.
    EXPECT_TRUE(PlistValue("YES").isString());
    EXPECT_TRUE(PlistValue(std::string_view("x")).isString());
    EXPECT_TRUE(PlistValue(5u).isInteger());
    EXPECT_TRUE(PlistValue(kLargeUnsigned).isInteger());
    EXPECT_TRUE(PlistValue(0.5f).isReal());
}

TEST(PlistValueTest, AccessorsAnswerOnlyForTheirOwnKind) {
    for (const PlistValue& value : oneOfEachKind()) {
        const PlistKind kind = value.kind();
        SCOPED_TRACE(value.description());
        EXPECT_EQ(value.isNull(), kind == PlistKind::Null);
        EXPECT_EQ(value.asBoolean().has_value(), kind == PlistKind::Boolean);
        EXPECT_EQ(value.asInteger().has_value(), kind == PlistKind::Integer);
        EXPECT_EQ(value.asReal().has_value(), kind == PlistKind::Real);
        EXPECT_EQ(value.asString() != nullptr, kind == PlistKind::String);
        EXPECT_EQ(value.asData() != nullptr, kind == PlistKind::Data);
        EXPECT_EQ(value.asDate().has_value(), kind == PlistKind::Date);
        EXPECT_EQ(value.asArray() != nullptr, kind == PlistKind::Array);
        EXPECT_EQ(value.asDictionary() != nullptr, kind == PlistKind::Dictionary);
        EXPECT_EQ(value.asUid().has_value(), kind == PlistKind::Uid);
        const bool number = kind == PlistKind::Boolean || kind == PlistKind::Integer || kind == PlistKind::Real;
        EXPECT_EQ(value.isNumber(), number);
        EXPECT_EQ(value.numberAsReal().has_value(), value.isNumber());
        EXPECT_EQ(value.numberAsInteger().has_value(), value.isNumber());
    }
}

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
    const PlistValue value = PlistValue::Dictionary{
        {"a", PlistValue::Array{1, 2.5, 3.0, true, PlistValue()}},
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

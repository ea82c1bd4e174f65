#include "platform/FileManager.h"
#include "platform/plist/PlistCodec.h"
#include "platform/plist/PlistValue.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace stowhaven {
namespace {

using Array = PlistValue::Array;
using Dictionary = PlistValue::Dictionary;

std::string hexToBytes(std::string_view hex) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
    }
    return bytes;
}

bool contains(const std::string& haystack, const std::string& needle) {
    return haystack.find(needle) != std::string::npos;
}

// Everything a property list can hold. Dates are whole seconds, as XML keeps them.
PlistValue everyKind() {
    return Dictionary{{"booleans", Array{true, false}},
                      {"integers", Array{0, 1, -1, 255, 65536, std::numeric_limits<std::int64_t>::max(),
                                         std::numeric_limits<std::int64_t>::min(),
                                         std::numeric_limits<std::uint64_t>::max(), std::uint64_t{1} << 63}},
                      {"reals", Array{0.0, -2.5, 0.1, 1e-300, 1e300, 3.141592653589793, INFINITY, -INFINITY}},
                      {"strings", Array{"", "plain", "h\u00e9llo w\u00f6rld", "\xf0\x9f\x98\x80 emoji", "<&>\"'"}},
                      {"data", Array{PlistValue::data(""), PlistValue::data(std::string("a\0b\0", 4)),
                                     PlistValue::data(std::string(300, '\xff'))}},
                      {"dates", Array{Date(0), Date(447166800), Date(-86400 * 365.0)}},
                      {"uids", Array{PlistValue::uid(0), PlistValue::uid(1), PlistValue::uid(4000000)}},
                      {"empty", Dictionary{{"array", Array{}}, {"dictionary", Dictionary{}}}},
                      {"nested", Array{Array{Array{Dictionary{{"deep", "yes"}}}}}},
                      {"\u00fcnicode key \xf0\x9f\x98\x80", 1},
                      {"", "empty key"}};
}

class PlistCodecRoundTrip : public ::testing::TestWithParam<PlistFormat> {};

TEST_P(PlistCodecRoundTrip, KeepsEveryKindAndAScalarAtTheTop) {
    for (const PlistValue& value : {everyKind(), PlistValue(42), PlistValue("alone"), PlistValue(Date(60))}) {
        const auto bytes = PlistCodec::serialize(value, GetParam());
        ASSERT_TRUE(bytes) << value.description();
        EXPECT_EQ(PlistCodec::parse(*bytes), value);
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, PlistCodecRoundTrip, ::testing::Values(PlistFormat::Binary, PlistFormat::Xml),
                         [](const auto& format) { return format.param == PlistFormat::Binary ? "Binary" : "Xml"; });

TEST(PlistCodecTest, BinaryKeepsDatesToTheLastBitAndXmlToTheSecond) {
    // A fraction finer than a microsecond, and fractions before the reference date, where
    // libplist's own accessors would round or lose the sign.
    const Array dates = {Date(436218764.123456789), Date(-0.25), Date(-1.5), Date(63113904000.5)};
    EXPECT_EQ(PlistCodec::parse(*PlistCodec::serialize(dates, PlistFormat::Binary)), PlistValue(dates));

    const auto xml = PlistCodec::serialize(Date(12.75), PlistFormat::Xml);
    EXPECT_TRUE(contains(*xml, "<date>2001-01-01T00:00:12Z</date>")) << *xml;
    EXPECT_EQ(PlistCodec::parse(*xml), PlistValue(Date(12)));
}

TEST(PlistCodecTest, XmlHoldsNoDateBeyondItsFourDigitYears) {
    const Array held = {Date(-63113904000.0), Date(252423993599.0)};
    EXPECT_EQ(PlistCodec::parse(*PlistCodec::serialize(held, PlistFormat::Xml)), PlistValue(held))
        << "years 1 and 9999";
    for (const double seconds : {252423993600.0, 1e15, -1e15, std::numeric_limits<double>::quiet_NaN()}) {
        const Array beyond = {Date(seconds)};
        EXPECT_EQ(PlistCodec::serialize(beyond, PlistFormat::Xml), std::nullopt) << seconds;
        EXPECT_TRUE(PlistCodec::serialize(beyond, PlistFormat::Binary)) << seconds;
    }
}

// XML of another writer is what every sandbox device holds.
TEST(PlistCodecTest, ReadsWhatAnotherWriterMade) {
    // Written by a different implementation of the binary format, keys sorted.
    const std::string binary = hexToBytes(
        "62706c6973743030da0102030405060708090a0b0c0d0e0f10151617185464617461546461746555656d707479556c61726765586e"
        "65676174697665566e6573746564547265616c54746578745375696453796573420001333fe0000000000000a01400000000000000"
        "00ffffffffffffffff13ffffffffffffffffd11112546c697374a2131410015374776f233fb999999999999a68006800e9006c006c"
        "006f0020d83dde00800309081d22272d333c43484d5155586162737c7f8487898d96a7a900000000000001010000000000000019000"
        "000000000000000000000000000aa");
    const PlistValue expected = Dictionary{{"data", PlistValue::data(std::string("\0\1", 2))},
                                           {"date", Date(0.5)},
                                           {"empty", Array{}},
                                           {"large", std::numeric_limits<std::uint64_t>::max()},
                                           {"negative", -1},
                                           {"nested", Dictionary{{"list", Array{1, "two"}}}},
                                           {"real", 0.1},
                                           {"text", "h\u00e9llo \xf0\x9f\x98\x80"},
                                           {"uid", PlistValue::uid(3)},
                                           {"yes", true}};
    EXPECT_EQ(PlistCodec::parse(binary), expected);
}

TEST(PlistCodecTest, RefusesValuesNoPropertyListCanHold) {
    const std::vector<PlistValue> refused = {
        PlistValue(),
        Array{1, PlistValue()},
        Dictionary{{"key", Dictionary{{"inner", PlistValue()}}}},
        std::string("a\0b", 3),
        "\xc3",              // a sequence cut short
        "\xed\xa0\x80",      // a surrogate
        "\xc0\xaf",          // an overlong form
        "\xf4\x90\x80\x80",  // beyond U+10FFFF
        Dictionary{{std::string("k\0", 2), 1}},
        Dictionary{{"\xff", 1}},
        PlistValue::uid(std::uint64_t{1} << 32),
    };
    for (const PlistValue& value : refused) {
        for (const PlistFormat format : {PlistFormat::Binary, PlistFormat::Xml}) {
            EXPECT_EQ(PlistCodec::serialize(value, format), std::nullopt) << value.description();
        }
    }
}

PlistValue nestedArrays(std::size_t depth) {
    PlistValue value = "bottom";
    for (std::size_t i = 0; i < depth; ++i) value = Array{std::move(value)};
    return value;
}

TEST(PlistCodecTest, WritesNoNestingItWouldRefuseToRead) {
    for (const PlistFormat format : {PlistFormat::Binary, PlistFormat::Xml}) {
        const PlistValue deepest = nestedArrays(PlistCodec::kMaximumNesting);
        const auto bytes = PlistCodec::serialize(deepest, format);
        ASSERT_TRUE(bytes);
        EXPECT_EQ(PlistCodec::parse(*bytes), deepest);
        EXPECT_EQ(PlistCodec::serialize(nestedArrays(PlistCodec::kMaximumNesting + 1), format), std::nullopt);
    }
}

class PlistCodecFileTest : public ::testing::Test {
protected:
    test::TestFolder folder_;
};

TEST_F(PlistCodecFileTest, RefusesMissingOversizedAndNonPlistFiles) {
    const std::string oversized = folder_ / "oversized.plist";
    ASSERT_TRUE(FileManager::writeFile(oversized, std::string(PlistCodec::kMaximumSize + 1, ' ')));
    const std::string text = folder_ / "notes.txt";
    ASSERT_TRUE(FileManager::writeFile(text, "just some notes"));

    for (const std::string& path : {folder_ / "missing.plist", oversized, text, folder_.path().string()}) {
        EXPECT_EQ(PlistCodec::readFile(path), std::nullopt) << path;
    }
}

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

#include "platform/plist/NestingGuard.h"
#include "platform/plist/PlistCodec.h"
#include "support/CapturedLog.h"
#include "unit/plist/BinaryPlistBuilder.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

using test::bigEndian;
using test::binaryPlist;

std::string goodBinary() {
    return *PlistCodec::serialize(
        PlistValue::Dictionary{{"list", PlistValue::Array{1, "two", 3.5, Date(4)}},
                               {"data", PlistValue::data(std::string(20, '\0'))},
                               {"nested", PlistValue::Dictionary{{"uid", PlistValue::uid(9)}}}},
        PlistFormat::Binary);
}

void expectRefused(std::string_view bytes, const std::string& what) {
    test::CapturedLog quiet;
    EXPECT_EQ(PlistCodec::parse(bytes), std::nullopt) << what;
}

// A chain of `depth` arrays, each holding the next, as a binary property list.
std::string chainOfArrays(std::size_t depth) {
    std::vector<std::string> objects;
    for (std::size_t i = 1; i < depth; ++i) objects.push_back("\xa1" + bigEndian(i, 4));
    objects.emplace_back("\xa0");
    return binaryPlist(objects, 4);
}

std::string xmlOfNestedArrays(std::size_t depth) {
    std::string text = "<plist version=\"1.0\">";
    for (std::size_t i = 0; i < depth; ++i) text += "<array>";
    for (std::size_t i = 0; i < depth; ++i) text += "</array>";
    return text + "</plist>";
}

TEST(PlistHostileInputTest, RefusesEmptyOversizedAndGarbageInput) {
    expectRefused("", "empty input");
    expectRefused(std::string(PlistCodec::kMaximumSize + 1, ' '), "oversized input");
    expectRefused("\x01\x02\x03 not a property list", "garbage");
    expectRefused("bplist00", "a header alone");
    expectRefused("bplist00" + std::string(200, '\xff'), "a header and garbage");
    expectRefused("<plist><dict><key>a</key><string>x</dict></plist>", "mismatched XML");
    expectRefused("<plist><array><string>unterminated", "unterminated XML");
}

TEST(PlistHostileInputTest, RefusesEveryTruncationOfABinaryPlist) {
    const std::string bytes = goodBinary();
    ASSERT_TRUE(PlistCodec::parse(bytes));
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        expectRefused(std::string_view(bytes).substr(0, length), "cut to " + std::to_string(length) + " bytes");
    }
}

TEST(PlistHostileInputTest, RefusesObjectTablesThatPointAstray) {
    expectRefused(binaryPlist({"\xa1\x05", "\x10\x01"}), "a reference beyond the objects");
    expectRefused(binaryPlist({"\xa1\x00"}), "an array holding itself");
    expectRefused(binaryPlist({"\xa1\x01", "\xa1\x00"}), "two arrays holding each other");
    expectRefused(binaryPlist({"\xaf\x13\x7f\xff\xff\xff\xff\xff\xff\xff"}), "a count beyond the input");
    expectRefused(binaryPlist({"\xd1\x01\x01", "\x10\x05"}), "a dictionary key that is no string");
    expectRefused(binaryPlist({"\xd1\x01\x02", std::string("\x53k\0y", 4), "\x10\x05"}), "an ASCII key holding a NUL");
    expectRefused(binaryPlist({"\xd1\x01\x02", std::string("\x62\0k\0\0", 5), "\x10\x05"}),
                  "a UTF-16 key holding a NUL");
    EXPECT_TRUE(PlistCodec::parse(binaryPlist({"\xd1\x01\x02", std::string("\x62\0k\x01\0", 5), "\x10\x05"})))
        << "a UTF-16 key whose units hold zero bytes but no NUL";
    expectRefused(binaryPlist({"\xa1\x01", std::string(1, '\0')}), "the null object");

    std::string offsetTableAstray = binaryPlist({"\x10\x01"});
    offsetTableAstray.replace(offsetTableAstray.size() - 8, 8, bigEndian(0xffffffff, 8));
    expectRefused(offsetTableAstray, "an offset table beyond the input");
    std::string topAstray = binaryPlist({"\x10\x01"});
    topAstray.replace(topAstray.size() - 16, 8, bigEndian(7, 8));
    expectRefused(topAstray, "a top object beyond the objects");
}

TEST(PlistHostileInputTest, RefusesWhatItCouldNotWriteBack) {
    // Read, such text would leave a value that no writer takes: settings that hold it could
    // never be changed again. A UID beyond 32 bits would be written as another.
    expectRefused("<plist><dict><key>Dropbox\xff\xff\xff+</key><integer>1</integer></dict></plist>",
                  "an XML key that isn't UTF-8");
    expectRefused("<plist><array><string>\xc3</string></array></plist>", "an XML string cut inside a character");
    expectRefused(binaryPlist({"\xd1\x01\x02", "\x51\xff", "\x10\x05"}), "a binary key beyond ASCII");
    expectRefused(binaryPlist({"\x51\xff"}), "an ASCII string beyond ASCII");
    expectRefused(binaryPlist({"\x87" + bigEndian(0x100000000, 8)}), "a UID beyond 32 bits");
    expectRefused("<plist><dict><key>CF$UID</key><integer>4294967296</integer></dict></plist>",
                  "an XML UID beyond 32 bits");
    EXPECT_EQ(PlistCodec::parse(binaryPlist({"\x83" + bigEndian(0xffffffff, 4)})), PlistValue::uid(0xffffffff));
}

TEST(PlistHostileInputTest, RefusesDeepNestingBeforeLibplistRecursesIntoIt) {
    // Deep enough to overflow the stack of libplist's reader and of its free().
    expectRefused(chainOfArrays(100000), "100000 nested binary arrays");
    expectRefused(xmlOfNestedArrays(1000000), "1000000 nested XML arrays");

    EXPECT_TRUE(PlistCodec::parse(chainOfArrays(PlistCodec::kMaximumNesting)));
    expectRefused(chainOfArrays(PlistCodec::kMaximumNesting + 1), "one level too many in binary");
    EXPECT_TRUE(PlistCodec::parse(xmlOfNestedArrays(PlistCodec::kMaximumNesting)));
    expectRefused(xmlOfNestedArrays(PlistCodec::kMaximumNesting + 1), "one level too many in XML");
}

TEST(PlistHostileInputTest, MeasuresSharedObjectsOnceAndNotPerPath) {
    // Each of 60 arrays holds the next one twice: 2^60 paths through 61 objects.
    std::vector<std::string> objects;
    for (std::uint64_t i = 1; i <= 60; ++i) objects.push_back("\xa2" + bigEndian(i, 1) + bigEndian(i, 1));
    objects.emplace_back("\xa0");
    const std::string shared = binaryPlist(objects);
    EXPECT_TRUE(binaryPlistNestingWithin(shared, 61));
    EXPECT_FALSE(binaryPlistNestingWithin(shared, 60));

    // A shallow branch measured first must not hide a deeper way to the same object.
    const std::string detour = binaryPlist({"\xa2\x02\x01", "\xa1\x02", "\xa1\x03", "\xa0"});
    EXPECT_TRUE(binaryPlistNestingWithin(detour, 4));
    EXPECT_FALSE(binaryPlistNestingWithin(detour, 3));
}

TEST(PlistHostileInputTest, XmlNestingLeavesOutCommentsCdataAndEmptyElements) {
    const std::string text =
        "<?xml version=\"1.0\"?><!DOCTYPE plist><plist><array>"
        "<!-- <array><array><array> --><![CDATA[<array><array>]]>"
        "<array/><dict/><dict attribute=\"a>b\"><key>k</key><array></array></dict>"
        "</array></plist>";
    EXPECT_TRUE(xmlPlistNestingWithin(text, 3));
    EXPECT_FALSE(xmlPlistNestingWithin(text, 2));
}

}  // namespace
}  // namespace stowhaven

// Archives in the other encodings that Foundation implementations write.

#include "archive/KeyedArchiver.h"
#include "platform/plist/PlistCodec.h"
#include "unit/archive/KeyedArchiveTestSupport.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

using Array = PlistValue::Array;
using Dictionary = PlistValue::Dictionary;
using test::classDescription;
using test::handMadeArchive;
using test::uid;

struct Encoding {
    const char* what;
    Array objects;
    ArchiveValue expected;
};

TEST(KeyedUnarchiverEncodingsTest, ReadsEachEncodingOfFoundationsClasses) {
    const std::vector<Encoding> encodings = {
        {"a string object with its text in place",
         {Dictionary{{"NS.string", "hi"}, {"$class", uid(2)}}, classDescription("NSString")},
         "hi"},
        {"a mutable string whose text is a reference",
         {Dictionary{{"NS.string", uid(3)}, {"$class", uid(2)}}, classDescription("NSMutableString"), "hi"},
         ArchiveValue::mutableString("hi")},
        {"a string as UTF-8 bytes",
         {Dictionary{{"NS.bytes", PlistValue::data("h\xc3\xa9")}, {"$class", uid(2)}}, classDescription("NSString")},
         "h\xc3\xa9"},
        {"an array under numbered keys",
         {Dictionary{{"NS.object.0", uid(3)}, {"NS.object.1", uid(4)}, {"$class", uid(2)}}, classDescription("NSArray"),
          "x", 5},
         ArchiveValue::Array{"x", 5}},
        {"a set, read as an array",
         {Dictionary{{"NS.objects", Array{uid(3)}}, {"$class", uid(2)}}, classDescription("NSMutableSet"), "x"},
         ArchiveValue::mutableArray({"x"})},
        {"a dictionary under numbered keys",
         {Dictionary{{"NS.key.0", uid(3)}, {"NS.object.0", uid(4)}, {"$class", uid(2)}},
          classDescription("NSMutableDictionary"), "key", "value"},
         ArchiveValue::mutableDictionary({{"key", "value"}})},
        {"an empty dictionary with no keys at all",
         {Dictionary{{"$class", uid(2)}}, classDescription("NSDictionary")},
         ArchiveValue::Dictionary{}},
        {"data in place",
         {Dictionary{{"NS.data", PlistValue::data("\x01\x02")}, {"$class", uid(2)}}, classDescription("NSData")},
         PlistValue::data("\x01\x02")},
        {"mutable data under NS.bytes as a reference",
         {Dictionary{{"NS.bytes", uid(3)}, {"$class", uid(2)}}, classDescription("NSMutableData"),
          PlistValue::data("\x03")},
         ArchiveValue::mutableData({0x03})},
        {"a date of whole seconds",
         {Dictionary{{"NS.time", 10}, {"$class", uid(2)}}, classDescription("NSDate")},
         Date(10)},
        {"a date as a property-list date", {Date(3.5)}, Date(3.5)},
        {"a number object of an integer",
         {Dictionary{{"NS.intval", 42}, {"$class", uid(2)}}, classDescription("NSNumber")},
         42},
        {"a number object of a real",
         {Dictionary{{"NS.dblval", 2.5}, {"$class", uid(2)}}, classDescription("NSNumber")},
         2.5},
        {"a number object of a boolean",
         {Dictionary{{"NS.BOOLval", true}, {"$class", uid(2)}}, classDescription("NSNumber")},
         true},
        {"a number object in place",
         {Dictionary{{"NS.number", 7}, {"$class", uid(2)}}, classDescription("NSNumber")},
         7},
        {"the null object", {Dictionary{{"$class", uid(2)}}, classDescription("NSNull")}, ArchiveValue()},
    };
    for (const Encoding& encoding : encodings) {
        EXPECT_EQ(test::unarchive(handMadeArchive(encoding.objects)), encoding.expected) << encoding.what;
    }
}

TEST(KeyedUnarchiverEncodingsTest, ReadsAnArchiveInXml) {
    const ArchiveValue value = ArchiveValue::Dictionary{{"sessionDate", Date(747763200.5)},
                                                        {"rawData", ArchiveValue::mutableString("Foo\tcom.foo\n")},
                                                        {"applications", ArchiveValue::mutableArray({"x", 5})}};
    const auto xml = PlistCodec::serialize(*KeyedArchiver::archivedPlist(value), PlistFormat::Xml);
    ASSERT_TRUE(xml);
    ASSERT_NE(xml->find("CF$UID"), std::string::npos);
    // NS.time keeps the fraction even in XML.
    EXPECT_EQ(KeyedUnarchiver::unarchiveObjectWithData(*xml, modelClasses()), value);
}

}  // namespace
}  // namespace stowhaven

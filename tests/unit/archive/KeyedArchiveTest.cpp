// The keyed archive both ways: what the archiver writes, laid out as Foundation lays it out;
// what the unarchiver reads, of every encoding Foundation implementations write; and both
// together keeping every kind.

#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "core/ModelClasses.h"
#include "items/ArchivableFolder.h"
#include "platform/plist/PlistCodec.h"
#include "support/SampleSessions.h"
#include "unit/archive/KeyedArchiveTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace stowhaven {
namespace {

using Array = PlistValue::Array;
using Dictionary = PlistValue::Dictionary;
using test::classDescription;
using test::handMadeArchive;
using test::uid;

// The archive of `root` as written in binary and read back by the property-list codec.
Dictionary writtenArchive(const ArchiveValue& root) {
    const auto bytes = KeyedArchiver::archivedData(root);
    if (!bytes || !bytes->starts_with("bplist00")) throw std::runtime_error("no binary archive");
    return *PlistCodec::parse(*bytes)->asDictionary();
}

Dictionary described(const std::string& className, Array classes) {
    return Dictionary{{"$classname", className}, {"$classes", std::move(classes)}};
}

// An object is appended, then what it holds, then its class, which is described once;
// Foundation's classes keep their contents under their own keys.
TEST(KeyedArchiveStructureTest, ObjectsOfFoundationClassesAreLaidOutAsFoundationLaysThemOut) {
    const PlistValue data = PlistValue::data("\x01\x02");
    const struct {
        const char* what;
        ArchiveValue root;
        Array objects;
    } layouts[] = {
        {"a string stands in place", "text", {"$null", "text"}},
        {"nested arrays",
         ArchiveValue::Array{"a", ArchiveValue::Array{"b"}},
         {"$null",
          Dictionary{{"NS.objects", Array{PlistValue::uid(2), PlistValue::uid(3)}}, {"$class", PlistValue::uid(5)}},
          "a", Dictionary{{"NS.objects", Array{PlistValue::uid(4)}}, {"$class", PlistValue::uid(5)}}, "b",
          described("NSArray", {"NSArray", "NSObject"})}},
        {"nil in an array is the null object, written once",
         ArchiveValue::Array{ArchiveValue(), ArchiveValue()},
         {"$null",
          Dictionary{{"NS.objects", Array{PlistValue::uid(2), PlistValue::uid(2)}}, {"$class", PlistValue::uid(4)}},
          Dictionary{{"$class", PlistValue::uid(3)}}, described("NSNull", {"NSNull", "NSObject"}),
          described("NSArray", {"NSArray", "NSObject"})}},
        {"a mutable string",
         ArchiveValue::mutableString("raw"),
         {"$null", Dictionary{{"NS.string", "raw"}, {"$class", PlistValue::uid(2)}},
          described("NSMutableString", {"NSMutableString", "NSString", "NSObject"})}},
        {"a date",
         Date(747763200.5),
         {"$null", Dictionary{{"NS.time", 747763200.5}, {"$class", PlistValue::uid(2)}},
          described("NSDate", {"NSDate", "NSObject"})}},
        {"a mutable dictionary",
         ArchiveValue::mutableDictionary({{"/var/a.plist", data}}),
         {"$null",
          Dictionary{{"NS.keys", Array{PlistValue::uid(2)}},
                     {"NS.objects", Array{PlistValue::uid(3)}},
                     {"$class", PlistValue::uid(4)}},
          "/var/a.plist", data, described("NSMutableDictionary", {"NSMutableDictionary", "NSDictionary", "NSObject"})}},
    };
    for (const auto& layout : layouts) {
        const Dictionary archive = writtenArchive(layout.root);
        EXPECT_EQ(archive.at("$objects"), layout.objects) << layout.what;
        EXPECT_EQ(archive.at("$top"), (Dictionary{{"root", PlistValue::uid(1)}})) << layout.what;
    }
}

// A model object's scalars stand in its own keys, nil is UID 0, and a coded key that
// begins with a dollar is escaped with another.
TEST(KeyedArchiveStructureTest, AModelObjectKeepsItsScalarsAndEscapesDollarKeys) {
    struct DollarKey final : Codable {
        std::vector<std::string> classChain() const override { return {"DollarKey", "NSObject"}; }
        void encodeWithCoder(KeyedArchiver& coder) const override {
            coder.encodeInt64(7, "$class");
            coder.encodeObject(ArchiveValue(), "nothing");
        }
    };
    const Dictionary archive = writtenArchive(std::make_shared<DollarKey>());
    const Array& objects = *archive.at("$objects").asArray();
    EXPECT_EQ(objects.at(1),
              (Dictionary{{"$$class", 7}, {"nothing", PlistValue::uid(0)}, {"$class", PlistValue::uid(2)}}));
    EXPECT_EQ(objects.at(2), described("DollarKey", {"DollarKey", "NSObject"}));

    std::int32_t read = 0;
    ClassRegistry classes;
    classes.registerClass("DollarKey", [&](KeyedUnarchiver& coder) {
        read = coder.decodeInt32ForKey("$class");
        return std::make_shared<DollarKey>();
    });
    EXPECT_TRUE(KeyedUnarchiver::unarchiveObjectWithPropertyList(PlistValue(archive), classes));
    EXPECT_EQ(read, 7);
}

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

ArchiveValue roundTrip(const ArchiveValue& value) {
    const auto archive = KeyedArchiver::archivedData(value);
    EXPECT_TRUE(archive);
    if (!archive) return {};
    const auto read = KeyedUnarchiver::unarchiveObjectWithData(*archive, modelClasses());
    EXPECT_TRUE(read);
    return read.value_or(ArchiveValue());
}

TEST(KeyedArchiveRoundTripTest, KeepsEveryFoundationKind) {
    const ArchiveValue value = ArchiveValue::Dictionary{
        {"booleans", ArchiveValue::Array{true, false}},
        {"integers",
         ArchiveValue::Array{0, -1, 255, std::numeric_limits<std::int64_t>::min(),
                             std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::uint64_t>::max()}},
        {"reals", ArchiveValue::Array{0.5, -1e300, INFINITY}},
        {"strings",
         ArchiveValue::Array{"", "plain", "h\u00e9llo \xf0\x9f\x98\x80", ArchiveValue::mutableString("growing")}},
        {"data",
         ArchiveValue::Array{PlistValue::data(std::string("\0\1\2", 3)), ArchiveValue::mutableData({0xFF, 0x00})}},
        {"dates", ArchiveValue::Array{Date(0), Date(-31536000.25), Date(747763200.125)}},
        {"null objects", ArchiveValue::Array{ArchiveValue(), "between", ArchiveValue()}},
        {"containers", ArchiveValue::mutableArray(
                           {ArchiveValue::Array{}, ArchiveValue::Dictionary{}, ArchiveValue::mutableDictionary({})})},
        {"$class", "a key that looks like the archive's own"},
        {"", "the empty key"},
    };
    EXPECT_EQ(roundTrip(value), value);
    EXPECT_EQ(roundTrip(ArchiveValue()), ArchiveValue()) << "an archive of nil";
}

TEST(KeyedArchiveRoundTripTest, ObjectsReferredToTwiceComeBackAsOneObject) {
    const auto folder = test::makeRingtonesFolder();
    const auto read = roundTrip(ArchiveValue::Array{folder, folder, test::makeRingtonesFolder()});
    ASSERT_TRUE(read.isArray());
    const auto first = (*read.asArray())[0].object<ArchivableFolder>();
    ASSERT_TRUE(first);
    EXPECT_EQ((*read.asArray())[1].object<ArchivableFolder>(), first);
    EXPECT_NE((*read.asArray())[2].object<ArchivableFolder>(), first);
}

TEST(KeyedArchiveRoundTripTest, TheArchiverRefusesWhatTheReaderWouldRefuse) {
    struct Loop final : Codable {
        std::shared_ptr<Loop> next;
        std::vector<std::string> classChain() const override { return {"Loop", "NSObject"}; }
        void encodeWithCoder(KeyedArchiver& coder) const override { coder.encodeObject(next, "next"); }
    };
    struct Nameless final : Codable {
        std::vector<std::string> classChain() const override { return {}; }
        void encodeWithCoder(KeyedArchiver&) const override {}
    };
    const auto loop = std::make_shared<Loop>();
    loop->next = std::make_shared<Loop>();
    loop->next->next = loop;
    ArchiveValue deep;
    for (std::size_t level = 0; level <= KeyedUnarchiver::kMaximumNesting; ++level) deep = ArchiveValue::Array{deep};

    EXPECT_EQ(KeyedArchiver::archivedData(loop), std::nullopt) << "objects holding each other";
    EXPECT_EQ(KeyedArchiver::archivedData(deep), std::nullopt) << "nesting beyond the limit";
    EXPECT_EQ(KeyedArchiver::archivedData(ArchiveValue::Array{PlistValue::uid(1)}), std::nullopt) << "a UID as a value";
    EXPECT_EQ(KeyedArchiver::archivedData(std::make_shared<Nameless>()), std::nullopt) << "an object of no class";
    loop->next->next = nullptr;
}

}  // namespace
}  // namespace stowhaven

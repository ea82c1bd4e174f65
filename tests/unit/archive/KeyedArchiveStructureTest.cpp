// What the device's unarchiver expects of an archive, checked on the property list itself.

#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "platform/plist/PlistCodec.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

using Array = PlistValue::Array;
using Dictionary = PlistValue::Dictionary;

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

}  // namespace
}  // namespace stowhaven

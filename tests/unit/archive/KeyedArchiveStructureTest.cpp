// What the device's unarchiver expects of an archive, checked on the property list itself.

#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "platform/plist/PlistCodec.h"
#include "unit/archive/SampleRecords.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

using Array = PlistValue::Array;
using Dictionary = PlistValue::Dictionary;

// The archive of `root` as written and read back by the property-list codec.
class WrittenArchive {
public:
    explicit WrittenArchive(const ArchiveValue& root) {
        const auto bytes = KeyedArchiver::archivedData(root);
        if (!bytes || !bytes->starts_with("bplist00")) throw std::runtime_error("no binary archive");
        archive_ = *PlistCodec::parse(*bytes);
    }

    const Dictionary& archive() const { return *archive_.asDictionary(); }
    const Array& objects() const { return *archive().at("$objects").asArray(); }
    const PlistValue& object(const PlistValue& reference) const { return objects().at(*reference.asUid()); }
    const PlistValue& root() const { return object(archive().at("$top").asDictionary()->at("root")); }
    const Dictionary& keysOf(const PlistValue& reference) const { return *object(reference).asDictionary(); }
    // The class chain of the object the reference refers to.
    PlistValue classesOf(const PlistValue& reference) const { return keysOf(keysOf(reference).at("$class")).at("$classes"); }

private:
    PlistValue archive_;
};

std::size_t uidOf(const PlistValue& reference) {
    return static_cast<std::size_t>(*reference.asUid());
}

TEST(KeyedArchiveStructureTest, HasFoundationsFrame) {
    const WrittenArchive written(ArchiveValue("text"));
    EXPECT_EQ(written.archive().at("$archiver"), "NSKeyedArchiver");
    EXPECT_EQ(written.archive().at("$version"), 100000);
    EXPECT_EQ(written.objects().front(), "$null");
    EXPECT_EQ(written.archive().at("$top").asDictionary()->size(), 1u);
    EXPECT_EQ(written.root(), "text");
    EXPECT_EQ(written.archive().size(), 4u);
}

TEST(KeyedArchiveStructureTest, ModelObjectsCarryTheirClassChains) {
    const auto session = test::makeSampleSession(1, 0, 1);
    const WrittenArchive written(session);
    const PlistValue rootReference = written.archive().at("$top").asDictionary()->at("root");
    const Dictionary& sessionKeys = written.keysOf(rootReference);

    EXPECT_EQ(written.keysOf(sessionKeys.at("$class")).at("$classname"), "BackupSession");
    EXPECT_EQ(written.classesOf(rootReference), (Array{"BackupSession", "NSObject"}));
    EXPECT_EQ(written.classesOf(sessionKeys.at("favourite")), (Array{"Application", "SelectableItem", "NSObject"}));
    // Scalars stand in the object's own keys; nil is UID 0.
    EXPECT_EQ(sessionKeys.at("nbPackages"), 1);
    EXPECT_EQ(sessionKeys.at("fCalendar"), true);
    EXPECT_EQ(sessionKeys.at("calendarDataSize"), 12.75);
    EXPECT_EQ(sessionKeys.at("encryptionKey"), PlistValue::uid(0));
}

TEST(KeyedArchiveStructureTest, FoundationClassesUseTheirOwnKeys) {
    const auto session = test::makeSampleSession(2, 1, 1);
    const WrittenArchive written(session);
    const Dictionary& sessionKeys = written.keysOf(written.archive().at("$top").asDictionary()->at("root"));

    const PlistValue& rawData = sessionKeys.at("rawData");
    EXPECT_EQ(written.classesOf(rawData), (Array{"NSMutableString", "NSString", "NSObject"}));
    EXPECT_EQ(written.keysOf(rawData).at("NS.string"), *session->rawData);

    const PlistValue& date = sessionKeys.at("sessionDate");
    EXPECT_EQ(written.classesOf(date), (Array{"NSDate", "NSObject"}));
    EXPECT_EQ(written.keysOf(date).at("NS.time"), 747763200.5);

    const PlistValue& preferences = sessionKeys.at("preferencesData");
    EXPECT_EQ(written.classesOf(preferences), (Array{"NSMutableDictionary", "NSDictionary", "NSObject"}));
    const Dictionary& preferenceKeys = written.keysOf(preferences);
    ASSERT_EQ(preferenceKeys.at("NS.keys").asArray()->size(), 1u);
    EXPECT_EQ(written.object(preferenceKeys.at("NS.keys").asArray()->front()),
              "/var/mobile/Library/Preferences/com.example.tweak0.plist");
    EXPECT_TRUE(written.object(preferenceKeys.at("NS.objects").asArray()->front()).isData());

    EXPECT_EQ(written.classesOf(sessionKeys.at("applications")), (Array{"NSMutableArray", "NSArray", "NSObject"}));
    EXPECT_EQ(written.classesOf(sessionKeys.at("cydiaSections")), (Array{"NSDictionary", "NSObject"}));
}

TEST(KeyedArchiveStructureTest, AppendsAnObjectThenWhatItHoldsThenItsClass) {
    const WrittenArchive written(ArchiveValue(ArchiveValue::Array{"a", ArchiveValue::Array{"b"}}));
    const PlistValue arrayClass = PlistValue::uid(5);
    EXPECT_EQ(written.objects(),
              (Array{"$null",
                     Dictionary{{"NS.objects", Array{PlistValue::uid(2), PlistValue::uid(3)}}, {"$class", arrayClass}},
                     "a",
                     Dictionary{{"NS.objects", Array{PlistValue::uid(4)}}, {"$class", arrayClass}},
                     "b",
                     // Described once, after the first array finished.
                     Dictionary{{"$classname", "NSArray"}, {"$classes", Array{"NSArray", "NSObject"}}}}));
}

TEST(KeyedArchiveStructureTest, WritesSharedObjectsAndTheNullObjectOnce) {
    const auto application = std::make_shared<test::SampleApplication>();
    const WrittenArchive written(ArchiveValue(
        ArchiveValue::Array{application, application, ArchiveValue(), ArchiveValue(), ArchiveValue()}));
    const Array& references = *written.keysOf(written.archive().at("$top").asDictionary()->at("root"))
                                   .at("NS.objects")
                                   .asArray();
    ASSERT_EQ(references.size(), 5u);
    EXPECT_EQ(references[0], references[1]);
    EXPECT_EQ(references[2], references[3]);
    EXPECT_EQ(references[3], references[4]);
    EXPECT_NE(uidOf(references[2]), 0u) << "nil in an array is the null object, not $null";
    EXPECT_EQ(written.classesOf(references[2]), (Array{"NSNull", "NSObject"}));
}

TEST(KeyedArchiveStructureTest, EscapesCodedKeysThatBeginWithADollar) {
    struct DollarKey final : Codable {
        std::vector<std::string> classChain() const override { return {"DollarKey", "NSObject"}; }
        void encodeWithCoder(KeyedArchiver& coder) const override { coder.encodeInt64(7, "$class"); }
    };
    const WrittenArchive written(std::make_shared<DollarKey>());
    const PlistValue rootReference = written.archive().at("$top").asDictionary()->at("root");
    EXPECT_EQ(written.keysOf(rootReference).at("$$class"), 7);
    EXPECT_EQ(written.classesOf(rootReference), (Array{"DollarKey", "NSObject"}));

    std::int64_t read = 0;
    ClassRegistry classes;
    classes.registerClass("DollarKey", [&](KeyedUnarchiver& coder) {
        read = coder.decodeInt64ForKey("$class");
        return std::make_shared<DollarKey>();
    });
    EXPECT_TRUE(KeyedUnarchiver::unarchiveObjectWithPropertyList(PlistValue(written.archive()), classes));
    EXPECT_EQ(read, 7);
}

}  // namespace
}  // namespace stowhaven

// Archives from storage, imported files and servers may be damaged or made to hurt.

#include "archive/KeyedArchiver.h"
#include "core/BackupSession.h"
#include "items/ArchivableFolder.h"
#include "support/CapturedLog.h"
#include "support/SampleSessions.h"
#include "support/SupervisorScope.h"
#include "unit/archive/KeyedArchiveTestSupport.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

using Array = PlistValue::Array;
using Dictionary = PlistValue::Dictionary;
using test::classDescription;
using test::handMadeArchive;
using test::uid;

void expectRefused(const PlistValue& archive, const std::string& what, const std::string& reason = "") {
    test::CapturedLog log;
    EXPECT_EQ(test::unarchive(archive), std::nullopt) << what;
    EXPECT_TRUE(log.contains("Refused a keyed archive: " + reason)) << what << " is refused with a log line";
}

PlistValue withEntry(PlistValue archive, const std::string& key, PlistValue value) {
    archive.asDictionary()->insert_or_assign(key, std::move(value));
    return archive;
}

PlistValue withoutEntry(PlistValue archive, const std::string& key) {
    archive.asDictionary()->erase(key);
    return archive;
}

// An array object whose class description is the object `classUid`.
PlistValue arrayObject(Array references, std::uint64_t classUid) {
    return Dictionary{{"NS.objects", std::move(references)}, {"$class", uid(classUid)}};
}

// An array object at UID 1 holding the given references, then the class NSArray at UID 2,
// then `more` from UID 3 on.
PlistValue arrayArchive(Array references, Array more = {}) {
    Array objects{arrayObject(std::move(references), 2), classDescription("NSArray")};
    objects.insert(objects.end(), more.begin(), more.end());
    return handMadeArchive(std::move(objects));
}

// Arrays nested `depth` deep, each the only element of the one before.
PlistValue nestedArrays(std::size_t depth) {
    Array objects{classDescription("NSArray")};
    for (std::size_t level = 0; level < depth; ++level) {
        const PlistValue inner = level + 1 < depth ? uid(level + 3) : uid(0);
        objects.push_back(arrayObject({inner}, 1));
    }
    return handMadeArchive(std::move(objects), uid(2));
}

TEST(KeyedUnarchiverHostileTest, RefusesADamagedFrame) {
    const PlistValue good = handMadeArchive({"text"});
    ASSERT_EQ(test::unarchive(good), ArchiveValue("text"));
    expectRefused("text", "a property list that is no dictionary");
    expectRefused(withEntry(good, "$archiver", "NSArchiver"), "another archiver");
    expectRefused(withoutEntry(good, "$archiver"), "no archiver");
    expectRefused(withEntry(good, "$version", 99999), "another version");
    expectRefused(withEntry(good, "$objects", Array{}), "no objects");
    expectRefused(withEntry(good, "$objects", Array{"text", "$null"}), "objects that don't start with $null");
    expectRefused(withoutEntry(good, "$top"), "no $top");
    expectRefused(withEntry(good, "$top", Dictionary{{"other", uid(1)}}), "no root in $top");
    expectRefused(withEntry(good, "$top", Dictionary{{"root", 1}}), "a root that is no UID");
}

TEST(KeyedUnarchiverHostileTest, RefusesReferencesThatPointAstray) {
    expectRefused(handMadeArchive({"text"}, uid(2)), "a root beyond the objects", "UID 2 beyond");
    expectRefused(arrayArchive({uid(9)}), "an element beyond the objects", "UID 9 beyond");
    expectRefused(arrayArchive({3}), "an element that is no UID");
    expectRefused(arrayArchive({uid(3)}, {Array{"plain"}}), "an element that is a bare array");
    expectRefused(handMadeArchive({Dictionary{{"NS.string", "x"}}}), "an object without a class");
    expectRefused(handMadeArchive({Dictionary{{"NS.string", "x"}, {"$class", uid(7)}}}), "a class beyond the objects");
    expectRefused(handMadeArchive({Dictionary{{"NS.string", "x"}, {"$class", uid(2)}}, "NSString"}),
                  "a class description that is no dictionary");
}

TEST(KeyedUnarchiverHostileTest, RefusesUnknownClasses) {
    expectRefused(handMadeArchive({Dictionary{{"$class", uid(2)}}, classDescription("NSURL")}),
                  "a Foundation class this system doesn't read", "class <NSURL>, which is unknown");
    expectRefused(arrayArchive({uid(3)}, {Dictionary{{"$class", uid(4)}}, classDescription("Intruder")}),
                  "an unregistered model class inside an array", "class <Intruder>, which is unknown");
}

TEST(KeyedUnarchiverHostileTest, RefusesObjectsThatHoldThemselves) {
    expectRefused(arrayArchive({uid(1)}), "an array holding itself", "object 1 of class <NSArray> holds itself");
    expectRefused(arrayArchive({uid(3)}, {arrayObject({uid(1)}, 2)}), "two arrays holding each other",
                  "object 1 of class <NSArray> holds itself");
    expectRefused(handMadeArchive({Dictionary{{"folderContents", uid(1)}, {"$class", uid(2)}},
                                   classDescription("ArchivableFolder")}),
                  "a model object holding itself", "object 1 of class <ArchivableFolder> holds itself");
}

TEST(KeyedUnarchiverHostileTest, RefusesFoundationObjectsWithoutTheirContents) {
    const auto instance = [](const Dictionary& keys, const std::string& className) {
        Dictionary withClass = keys;
        withClass.emplace("$class", uid(2));
        return handMadeArchive({withClass, classDescription(className)});
    };
    expectRefused(instance({}, "NSString"), "a string without text");
    expectRefused(instance({{"NS.string", 5}}, "NSString"), "a string whose text is a number");
    expectRefused(instance({{"NS.string", Array{"x"}}}, "NSString"), "a string whose text is a container");
    expectRefused(instance({{"NS.bytes", PlistValue::data("\xff\xfe")}}, "NSString"),
                  "a string of bytes that aren't UTF-8");
    expectRefused(instance({{"NS.data", "text"}}, "NSData"), "data that is text");
    expectRefused(instance({}, "NSDate"), "a date without its time");
    expectRefused(instance({{"NS.time", "noon"}}, "NSDate"), "a date whose time is text");
    expectRefused(instance({}, "NSNumber"), "a number without its value");
    expectRefused(instance({{"NS.objects", 3}}, "NSArray"), "an array whose elements aren't an array");
    expectRefused(handMadeArchive({Dictionary{{"NS.keys", Array{uid(3)}}, {"NS.objects", Array{}}, {"$class", uid(2)}},
                                   classDescription("NSDictionary"), "key"}),
                  "a dictionary with more keys than values");
    expectRefused(
        handMadeArchive({Dictionary{{"NS.keys", Array{uid(3)}}, {"NS.objects", Array{uid(3)}}, {"$class", uid(2)}},
                         classDescription("NSDictionary"), 5}),
        "a dictionary key that is no string");
}

TEST(KeyedUnarchiverHostileTest, ReadsNestingUpToTheLimitAndNoDeeper) {
    EXPECT_TRUE(test::unarchive(nestedArrays(KeyedUnarchiver::kMaximumNesting)));
    expectRefused(nestedArrays(KeyedUnarchiver::kMaximumNesting + 1), "nesting beyond the limit",
                  "objects nested deeper");
}

TEST(KeyedUnarchiverHostileTest, RefusesSharedContainersThatMultiply) {
    // Each array holds the next twice: 2^60 elements at the bottom if followed to the end.
    Array objects{classDescription("NSArray")};
    for (std::uint64_t level = 0; level < 60; ++level) {
        objects.push_back(arrayObject({uid(level + 3), uid(level + 3)}, 1));
    }
    objects.push_back("leaf");
    expectRefused(handMadeArchive(std::move(objects), uid(2)), "a doubling chain of arrays",
                  "more than 2097152 values");

    Array manyReferences;
    for (int copy = 0; copy < 20; ++copy) manyReferences.push_back(uid(3));
    expectRefused(arrayArchive(std::move(manyReferences), {std::string(4 * 1024 * 1024, 'x')}),
                  "one large string referred to many times", "more than 67108864 bytes");
}

TEST(KeyedUnarchiverHostileTest, AValueOfTheWrongKindAnswersNothingToThatKeyAlone) {
    const PlistValue archive = handMadeArchive({
        Dictionary{{"name", uid(3)},
                   {"size", 2.5},
                   {"packageName", "in place, not a reference"},
                   {"dataFolderPath", uid(4)},
                   {"fExists", "yes"},
                   {"folderType", std::int64_t{1} << 40},
                   {"folderContents", uid(3)},
                   {"$class", uid(2)}},
        classDescription("ArchivableFolder"),
        12,
        "/Library/Themes/",
    });
    const auto read = test::unarchive(archive);
    ASSERT_TRUE(read);
    const auto folder = read->object<ArchivableFolder>();
    ASSERT_TRUE(folder);
    EXPECT_EQ(folder->name(), "");
    EXPECT_EQ(folder->size(), 2.5);
    EXPECT_EQ(folder->packageName(), std::nullopt);
    EXPECT_EQ(folder->dataFolderPath(), "/Library/Themes/");
    EXPECT_FALSE(folder->exists());
    EXPECT_EQ(folder->folderType(), 0) << "a number beyond 32 bits";
    EXPECT_TRUE(folder->contentItems().empty());
}

TEST(KeyedUnarchiverHostileTest, AnObjectItsFactoryRefusesReadsAsNil) {
    ClassRegistry classes;
    classes.registerClass("Refused", [](KeyedUnarchiver&) { return nullptr; });
    const auto archive = arrayArchive({uid(3), uid(3)}, {Dictionary{{"$class", uid(4)}}, classDescription("Refused")});
    EXPECT_EQ(KeyedUnarchiver::unarchiveObjectWithPropertyList(archive, classes),
              ArchiveValue(ArchiveValue::Array{ArchiveValue(), ArchiveValue()}));
}

TEST(KeyedUnarchiverHostileTest, SurvivesEveryDamagedByteOfAnArchive) {
    test::SupervisorScope scope;
    scope.supervisor();
    const auto bytes = KeyedArchiver::archivedData(test::fullSession());
    ASSERT_TRUE(bytes);
    const ClassRegistry& classes = modelClasses();
    test::CapturedLog quiet;
    for (std::size_t position = 0; position < bytes->size(); ++position) {
        for (const char replacement : {'\x00', '\xff', static_cast<char>((*bytes)[position] ^ 0x01)}) {
            std::string damaged = *bytes;
            damaged[position] = replacement;
            // Whatever it answers, it must answer: a crash fails the whole suite.
            (void)KeyedUnarchiver::unarchiveObjectWithData(damaged, classes);
        }
    }
}

}  // namespace
}  // namespace stowhaven

#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "core/ModelClasses.h"
#include "items/ArchivableFolder.h"
#include "support/SampleSessions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace stowhaven {
namespace {

using Array = ArchiveValue::Array;
using Dictionary = ArchiveValue::Dictionary;
ArchiveValue roundTrip(const ArchiveValue& value) {
    const auto archive = KeyedArchiver::archivedData(value);
    EXPECT_TRUE(archive);
    if (!archive) return {};
    const auto read = KeyedUnarchiver::unarchiveObjectWithData(*archive, modelClasses());
    EXPECT_TRUE(read);
    return read.value_or(ArchiveValue());
}

TEST(KeyedArchiveRoundTripTest, KeepsEveryFoundationKind) {
    const ArchiveValue value = Dictionary{
        {"booleans", Array{true, false}},
        {"integers", Array{0, -1, 255, std::numeric_limits<std::int64_t>::min(),
                           std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::uint64_t>::max()}},
        {"reals", Array{0.5, -1e300, INFINITY}},
        {"strings", Array{"", "plain", "h\u00e9llo \xf0\x9f\x98\x80", ArchiveValue::mutableString("growing")}},
        {"data", Array{PlistValue::data(std::string("\0\1\2", 3)), ArchiveValue::mutableData({0xFF, 0x00})}},
        {"dates", Array{Date(0), Date(-31536000.25), Date(747763200.125)}},
        {"null objects", Array{ArchiveValue(), "between", ArchiveValue()}},
        {"containers", ArchiveValue::mutableArray({Array{}, Dictionary{}, ArchiveValue::mutableDictionary({})})},
        {"$class", "a key that looks like the archive's own"},
        {"", "the empty key"},
    };
    EXPECT_EQ(roundTrip(value), value);
    EXPECT_EQ(roundTrip(ArchiveValue()), ArchiveValue()) << "an archive of nil";
}

TEST(KeyedArchiveRoundTripTest, ObjectsReferredToTwiceComeBackAsOneObject) {
    const auto folder = test::makeRingtonesFolder();
    const auto read = roundTrip(Array{folder, folder, test::makeRingtonesFolder()});
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
    for (std::size_t level = 0; level <= KeyedUnarchiver::kMaximumNesting; ++level) deep = Array{deep};

    EXPECT_EQ(KeyedArchiver::archivedData(loop), std::nullopt) << "objects holding each other";
    EXPECT_EQ(KeyedArchiver::archivedData(deep), std::nullopt) << "nesting beyond the limit";
    EXPECT_EQ(KeyedArchiver::archivedData(Array{PlistValue::uid(1)}), std::nullopt) << "a UID as a value";
    EXPECT_EQ(KeyedArchiver::archivedData(std::make_shared<Nameless>()), std::nullopt) << "an object of no class";
    loop->next->next = nullptr;
}

}  // namespace
}  // namespace stowhaven

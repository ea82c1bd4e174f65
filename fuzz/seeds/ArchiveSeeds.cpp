// Archives and texts of sessions with every field set, and archives in the other
// encodings that Foundation implementations write.

#include "archive/HistoryText.h"
#include "archive/KeyedArchiver.h"
#include "platform/plist/PlistCodec.h"
#include "seeds/Seeds.h"
#include "support/SampleSessions.h"
#include "unit/archive/KeyedArchiveTestSupport.h"

namespace stowhaven::fuzz {

namespace {

using test::classDescription;
using test::uid;
using Array = PlistValue::Array;
using Dictionary = PlistValue::Dictionary;

std::vector<ArchiveValue> sampleRoots() {
    const auto session = test::fullSession();
    auto older = test::fullSession();
    older->setSessionDate(Date(0));
    return {session, ArchiveValue::Array{older, session},
            ArchiveValue::Dictionary{{"strings", ArchiveValue::Array{"a", ArchiveValue::mutableString("b")}},
                                     {"numbers", ArchiveValue::Array{true, -1, 2.5}},
                                     {"data", ArchiveValue::mutableData({1, 2})},
                                     {"date", Date(1)},
                                     {"nil", ArchiveValue::Array{ArchiveValue()}}}};
}

std::vector<PlistValue> otherEncodings() {
    return {
        test::handMadeArchive({Dictionary{{"NS.object.0", uid(3)}, {"$class", uid(2)}}, classDescription("NSArray"),
                               Dictionary{{"NS.bytes", PlistValue::data("text")}, {"$class", uid(4)}},
                               classDescription("NSString")}),
        test::handMadeArchive({Dictionary{{"NS.key.0", uid(3)}, {"NS.object.0", uid(4)}, {"$class", uid(2)}},
                               classDescription("NSMutableDictionary"), "key",
                               Dictionary{{"NS.intval", 42}, {"$class", uid(5)}}, classDescription("NSNumber")}),
        test::handMadeArchive(
            {Dictionary{{"NS.objects", Array{uid(3), uid(5)}}, {"$class", uid(2)}}, classDescription("NSSet"),
             Dictionary{{"NS.time", 3}, {"$class", uid(4)}}, classDescription("NSDate"),
             Dictionary{{"NS.data", PlistValue::data("x")}, {"$class", uid(6)}}, classDescription("NSMutableData")}),
    };
}

}  // namespace

void writeArchiveSeeds(const std::filesystem::path& folder) {
    const SeedCorpus archives(folder, "keyed_archive");
    const SeedCorpus texts(folder, "history_text");
    int index = 0;
    for (const ArchiveValue& root : sampleRoots()) {
        const std::string name = "sample" + std::to_string(index++);
        const auto plist = KeyedArchiver::archivedPlist(root);
        archives.add(name + ".bplist", *PlistCodec::serialize(*plist, PlistFormat::Binary));
        archives.add(name + ".xml", *PlistCodec::serialize(*plist, PlistFormat::Xml));
        texts.add(name + ".txt", *HistoryText::encode(root));
    }
    index = 0;
    for (const PlistValue& archive : otherEncodings()) {
        archives.add("encoding" + std::to_string(index++) + ".bplist", *PlistCodec::serialize(archive, PlistFormat::Binary));
    }
}

}  // namespace stowhaven::fuzz

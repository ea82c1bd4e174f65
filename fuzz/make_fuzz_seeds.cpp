// Writes the seed corpus of the fuzz targets into FOLDER/history_text and
// FOLDER/keyed_archive: archives and texts of sessions with every field set, and archives
// in the other encodings that Foundation implementations write.

#include "archive/HistoryText.h"
#include "archive/KeyedArchiver.h"
#include "platform/plist/PlistCodec.h"
#include "support/DetachedDevice.h"
#include "support/SampleSessions.h"
#include "unit/archive/KeyedArchiveTestSupport.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace {

using namespace stowhaven;
using test::classDescription;
using test::uid;
using Array = PlistValue::Array;
using Dictionary = PlistValue::Dictionary;

void write(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

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

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    const std::filesystem::path folder = argv[1];
    const test::DetachedDevice device;
    std::filesystem::create_directories(folder / "history_text");
    std::filesystem::create_directories(folder / "keyed_archive");
    int index = 0;
    for (const ArchiveValue& root : sampleRoots()) {
        const auto plist = KeyedArchiver::archivedPlist(root);
        write(folder / "keyed_archive" / ("sample" + std::to_string(index) + ".bplist"),
              *PlistCodec::serialize(*plist, PlistFormat::Binary));
        write(folder / "keyed_archive" / ("sample" + std::to_string(index) + ".xml"),
              *PlistCodec::serialize(*plist, PlistFormat::Xml));
        write(folder / "history_text" / ("sample" + std::to_string(index) + ".txt"), *HistoryText::encode(root));
        ++index;
    }
    index = 0;
    for (const PlistValue& archive : otherEncodings()) {
        write(folder / "keyed_archive" / ("encoding" + std::to_string(index++) + ".bplist"),
              *PlistCodec::serialize(archive, PlistFormat::Binary));
    }
    return 0;
}

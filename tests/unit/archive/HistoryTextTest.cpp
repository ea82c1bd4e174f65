#include "archive/Base64.h"
#include "archive/HistoryText.h"
#include "archive/KeyedArchiver.h"
#include "archive/Zlib.h"
#include "core/ModelClasses.h"
#include "platform/plist/PlistCodec.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

const ArchiveValue kSession =
    ArchiveValue::Dictionary{{"title", "Before the upgrade"}, {"sessionDate", Date(747763200.5)}};

TEST(HistoryTextTest, IsTheArchiveDeflatedInBase64OnOneLine) {
    const auto text = HistoryText::encode(kSession);
    ASSERT_TRUE(text);
    EXPECT_EQ(text->find_first_of("\r\n"), std::string::npos);
    const auto archive = Zlib::inflate(*Base64::decode(*text), HistoryText::kMaximumArchiveSize);
    ASSERT_TRUE(archive);
    EXPECT_EQ(PlistCodec::parse(*archive), KeyedArchiver::archivedPlist(kSession));
    EXPECT_EQ(HistoryText::decode(*text, modelClasses()), kSession);
}

TEST(HistoryTextTest, ADamagedTextGivesNothingAtEachStage) {
    const std::string archive = *KeyedArchiver::archivedData(kSession);
    const std::string stream = Zlib::deflate(archive);
    std::string flippedStream = stream;
    flippedStream[stream.size() / 2] ^= 0x20;
    std::string flippedArchive = archive;
    flippedArchive.replace(flippedArchive.find("$archiver"), 9, "$archivex");
    const std::pair<std::string, const char*> damaged[] = {
        {"", "an empty text"},
        {"not base64 at all!", "text outside the alphabet"},
        {Base64::encode(archive), "an archive that isn't deflated"},
        {Base64::encode(stream.substr(0, stream.size() - 3)), "a stream cut short"},
        {Base64::encode(flippedStream), "a stream with a flipped bit"},
        {Base64::encode(stream + "x"), "bytes after the stream's end"},
        {Base64::encode(Zlib::deflate("plain words")), "a stream of no property list"},
        {Base64::encode(Zlib::deflate(*PlistCodec::serialize(PlistValue::Array{1}, PlistFormat::Binary))),
         "a property list that is no archive"},
        {Base64::encode(Zlib::deflate(flippedArchive)), "an archive without its archiver"},
        {Base64::encode(Zlib::deflate(std::string(HistoryText::kMaximumArchiveSize + 1, ' '))),
         "a stream that inflates beyond the limit"},
    };
    for (const auto& [text, what] : damaged) {
        EXPECT_EQ(HistoryText::decode(text, modelClasses()), std::nullopt) << what;
    }
}

}  // namespace
}  // namespace stowhaven

// The history text and its layers: a keyed archive, deflated by zlib, in base64.

#include "archive/Base64.h"
#include "archive/HistoryText.h"
#include "archive/KeyedArchiver.h"
#include "archive/Zlib.h"
#include "core/ModelClasses.h"
#include "platform/plist/PlistCodec.h"

#include <gtest/gtest.h>

#include <zlib.h>

namespace stowhaven {
namespace {

TEST(Base64Test, MatchesTheVectorsOfRfc4648AndTheStandardAlphabet) {
    const std::pair<const char*, const char*> vectors[] = {{"", ""},
                                                           {"f", "Zg=="},
                                                           {"fo", "Zm8="},
                                                           {"foo", "Zm9v"},
                                                           {"foob", "Zm9vYg=="},
                                                           {"fooba", "Zm9vYmE="},
                                                           {"foobar", "Zm9vYmFy"},
                                                           {"\xfb\xef\xff", "++//"}};
    for (const auto& [bytes, text] : vectors) {
        EXPECT_EQ(Base64::encode(bytes), text);
        EXPECT_EQ(Base64::decode(text), bytes);
    }
    // Line breaks and blanks are skipped.
    EXPECT_EQ(Base64::decode("Zm9v\r\nYmFy\n"), "foobar");
    EXPECT_EQ(Base64::decode(" Zm9vYg = = \t"), "foob");
}

TEST(Base64Test, RefusesWhatIsNotBase64) {
    for (const char* text : {"Zm9", "Zm9vY", "Z===", "====", "Zm=v", "Zg==Zg==", "Zm9v-_", "Zm9v!", "Zm9\xc3\xa9"}) {
        EXPECT_EQ(Base64::decode(text), std::nullopt) << text;
    }
}

std::string sampleText() {
    std::string text;
    for (int line = 0; line < 2000; ++line) text += "Package " + std::to_string(line) + "\tcom.example\t1.0\n";
    return text;
}

TEST(ZlibTest, RoundTripsAsAPlainZlibStream) {
    const std::string text = sampleText();
    const std::string stream = Zlib::deflate(text);
    EXPECT_LT(stream.size(), text.size() / 4);
    // A plain zlib stream, as uncompress() reads it.
    std::string check(text.size(), '\0');
    uLongf length = check.size();
    ASSERT_EQ(uncompress(reinterpret_cast<Bytef*>(check.data()), &length, reinterpret_cast<const Bytef*>(stream.data()),
                         stream.size()),
              Z_OK);
    EXPECT_EQ(check, text);
    EXPECT_EQ(Zlib::inflate(stream, text.size()), text);
    EXPECT_EQ(Zlib::inflate(Zlib::deflate(""), 0), "");
}

TEST(ZlibTest, StopsAtTheLimitOfInflatedBytes) {
    const std::string bomb = Zlib::deflate(std::string(8 * 1024 * 1024, '\0'));
    ASSERT_LT(bomb.size(), 16u * 1024);
    EXPECT_EQ(Zlib::inflate(bomb, 1024 * 1024), std::nullopt);
    EXPECT_EQ(Zlib::inflate(bomb, 8 * 1024 * 1024)->size(), 8u * 1024 * 1024) << "exactly at the limit";
}

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

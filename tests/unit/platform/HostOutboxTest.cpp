#include "platform/services/HostCalendarStore.h"
#include "platform/services/HostMailComposer.h"
#include "platform/services/MimeMessage.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace stowhaven {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> crlfLines(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < text.size();) {
        const auto end = text.find("\r\n", start);
        lines.push_back(text.substr(start, end - start));
        start = end + 2;
    }
    return lines;
}

std::string decodeBase64(const std::string& text) {
    std::string bytes(text.size(), '\0');
    const int length =
        EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                        reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    bytes.resize(static_cast<std::size_t>(length) - std::count(text.end() - 2, text.end(), '='));
    return bytes;
}

TEST(HostCalendarStoreTest, EscapesTextAndFoldsLongLinesWithoutSplittingCharacters) {
    CalendarEvent event{
        "Stowhaven™: Backup [Before 8.4; clean, new]", "Description: x\\y\n" + std::string(90, 'e') + "é",
        std::chrono::system_clock::from_time_t(1795000000), std::chrono::system_clock::from_time_t(1795000000)};
    const auto lines = crlfLines(HostCalendarStore::iCalendarText(event, "uid-1@stowhaven"));

    EXPECT_EQ(lines.front(), "BEGIN:VCALENDAR");
    EXPECT_EQ(lines.back(), "END:VCALENDAR");
    EXPECT_NE(std::find(lines.begin(), lines.end(), "SUMMARY:Stowhaven™: Backup [Before 8.4\\; clean\\, new]"),
              lines.end());
    std::string unfolded;
    for (const std::string& line : lines) {
        EXPECT_LE(line.size(), 75u) << line;
        if (line.starts_with(' '))
            unfolded += line.substr(1);
        else if (line.starts_with("DESCRIPTION:"))
            unfolded = line;
    }
    EXPECT_EQ(unfolded, "DESCRIPTION:Description: x\\\\y\\n" + std::string(90, 'e') + "é");
}

TEST(MimeMessageTest, CarriesTheSubjectTheBodyAndEachAttachmentWhole) {
    test::TestFolder folder;
    const std::string attachment = folder / "packages.txt";
    const std::string bytes = std::string("line one\nline two\0binary", 24) + std::string(200, 'z');
    std::ofstream(attachment, std::ios::binary) << bytes;

    const auto text = MimeMessage::text(
        {"Stowhaven™", {"a@example.org", "b@example.org"}, "Hello\n", {{attachment, "text/plain", "My \"list\".txt"}}},
        "BOUNDARY");
    ASSERT_TRUE(text);
    EXPECT_NE(text->find("Subject: =?UTF-8?B?U3Rvd2hhdmVu4oSi?=\r\n"), std::string::npos) << "an encoded word";
    EXPECT_NE(text->find("To: a@example.org, b@example.org\r\n"), std::string::npos);
    EXPECT_NE(text->find("filename=\"My _list_.txt\""), std::string::npos);
    EXPECT_TRUE(text->ends_with("--BOUNDARY--\r\n"));

    const auto start = text->find("\r\n\r\n", text->find("filename=")) + 4;
    std::string encoded;
    for (const std::string& line : crlfLines(text->substr(start, text->find("--BOUNDARY--") - start))) {
        EXPECT_LE(line.size(), 76u);
        encoded += line;
    }
    EXPECT_EQ(decodeBase64(encoded), bytes);
}

}  // namespace
}  // namespace stowhaven

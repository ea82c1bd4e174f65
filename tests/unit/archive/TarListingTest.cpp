#include "archive/TarListing.h"
#include "platform/ShellQuote.h"
#include "support/SandboxDevice.h"
#include "support/TestFolder.h"
#include "support/TextLines.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <span>

namespace stowhaven {
namespace {

using Member = TarListing::Member;
using Type = TarListing::Type;

void writeFile(const std::string& path, const std::string& bytes) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

std::vector<std::string> namesOf(const std::vector<Member>& members) {
    std::vector<std::string> names;
    for (const Member& member : members) names.push_back(member.name);
    return names;
}

// Ten islands of data among holes (only a file with holes on disk is stored as sparse).
void writeSparseImage(const std::string& path) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream image(path, std::ios::binary);
    for (int island = 0; island < 10; ++island) image.seekp(island * 65536) << std::string(512, 'x');
    image.seekp(10 * 65536 - 1) << '\0';
}

// What a member of the sample tree is expected to be; no size for a sparse file, whose
// stored size depends on how tar maps it.
struct Expected {
    Type type;
    std::string linkTarget;
    std::optional<std::uint64_t> size;
};

// A device folder archived by the host's GNU tar, members in the order given on its
// command line.
class TarredTree {
public:
    explicit TarredTree(const std::string& format) : archive_(folder_ / (format + ".tar")) {
        const bool ustar = format == "ustar";
        const std::string notes = "var/mobile/Library/Notes/";
        // Over 100 characters, which ustar splits into prefix and name; over 255 otherwise,
        // which needs a GNU long name or a pax path.
        const std::string longName = ustar ? "var/mobile/Library/" + std::string(70, 'p') + "/" + std::string(60, 'n')
                                           : "var/mobile/Library/" + std::string(120, 'p') + "/" +
                                                 std::string(110, 'q') + "/" + std::string(90, 'n') + ".plist";
        const std::string symbolicTarget = "../../Caches/" + std::string(ustar ? 80 : 180, 't');
        const std::string hardTarget = ustar ? notes + "notes.sqlite" : longName;

        std::filesystem::create_directories(root(notes));
        writeFile(root(notes + "notes.sqlite"), std::string(5000, 's'));
        writeFile(root(longName), "<plist/>");
        std::filesystem::create_symlink(symbolicTarget, root(notes + "latest"));
        std::filesystem::create_hard_link(root(hardTarget), root(notes + "same.sqlite"));
        add("var/", {Type::Directory, "", 0});
        add(notes, {Type::Directory, "", 0});
        add(longName, {Type::File, "", 8});
        add(notes + "notes.sqlite", {Type::File, "", 5000});
        if (!ustar) {
            // Mostly holes: GNU tar stores it as a sparse member, whose map runs past its header.
            writeSparseImage(root("var/mobile/Media/disk.img"));
            add("var/mobile/Media/disk.img", {Type::File, "", std::nullopt});
        }
        add(notes + "latest", {Type::SymbolicLink, symbolicTarget, 0});
        add(notes + "same.sqlite", {Type::HardLink, hardTarget, 0});

        std::string command = "tar -C " + ShellQuote::path(root("")) + " --format=" + format + " --no-recursion -cf " +
                              ShellQuote::path(archive_);
        if (!ustar) command += " --sparse";
        // The pax sparse format that hides the real name behind a stand-in in the header.
        if (format == "pax") command += " --sparse-version=1.0";
        for (const std::string& name : order_) command += " '" + name + "'";
        test::runCommand(command);
    }

    const std::string& archive() const { return archive_; }
    const std::map<std::string, Expected>& expected() const { return expected_; }

private:
    std::string root(const std::string& name) const { return folder_ / ("tree/" + name); }
    void add(const std::string& name, Expected expected) {
        order_.push_back(name);
        expected_.emplace(name, std::move(expected));
    }

    test::TestFolder folder_;
    std::string archive_;
    std::vector<std::string> order_;
    std::map<std::string, Expected> expected_;
};

const char* const kFormats[] = {"gnu", "ustar", "pax"};

TEST(TarListingTest, ListsTheNamesTarListsWithTheirTypeLinkTargetAndSizeInEveryFormat) {
    for (const char* format : kFormats) {
        SCOPED_TRACE(format);
        const TarredTree tree(format);
        std::string error;
        const auto members = TarListing::read(tree.archive(), &error);
        ASSERT_TRUE(members.has_value()) << error;
        EXPECT_EQ(namesOf(*members), test::linesOf(test::runCommand("tar -tf " + ShellQuote::path(tree.archive()))));
        ASSERT_EQ(members->size(), tree.expected().size());
        for (const Member& member : *members) {
            SCOPED_TRACE(member.name);
            const auto expected = tree.expected().find(member.name);
            ASSERT_NE(expected, tree.expected().end());
            EXPECT_EQ(member.type, expected->second.type);
            EXPECT_EQ(member.linkTarget, expected->second.linkTarget);
            if (expected->second.size) EXPECT_EQ(member.size, *expected->second.size);
        }
    }
}

// Parts cut by the real split at an odd size, so that headers and long names straddle them,
// read as the whole archive reads; parts that end too soon or aren't files are refused.
TEST(TarListingTest, AnArchiveCutIntoPartsListsAsTheWholeOne) {
    for (const char* format : kFormats) {
        SCOPED_TRACE(format);
        const TarredTree tree(format);
        const auto whole = TarListing::read(tree.archive());
        ASSERT_TRUE(whole.has_value());
        const std::string folder = std::filesystem::path(tree.archive()).parent_path().string();
        test::runCommand("cd " + ShellQuote::path(folder) + " && split -b 700 -d -a 3 " +
                         ShellQuote::path(tree.archive()) + " PART-");
        std::vector<std::string> parts;
        for (int index = 0;; ++index) {
            const std::string part = folder + fmt::format("/PART-{:03}", index);
            if (!std::filesystem::exists(part)) break;
            parts.push_back(part);
        }
        ASSERT_GT(parts.size(), 3u);

        std::string error;
        const auto joined = TarListing::readJoined(parts, &error);
        ASSERT_TRUE(joined.has_value()) << error;
        ASSERT_EQ(namesOf(*joined), namesOf(*whole));
        for (std::size_t index = 0; index < joined->size(); ++index) {
            EXPECT_EQ((*joined)[index].size, (*whole)[index].size);
            EXPECT_EQ((*joined)[index].dataOffset, (*whole)[index].dataOffset);
        }

        auto cutShort = parts;
        cutShort.erase(cutShort.begin() + 2);
        EXPECT_FALSE(TarListing::readJoined(cutShort)) << "a part left out";
        auto withFolder = parts;
        withFolder[1] = folder;
        EXPECT_FALSE(TarListing::readJoined(withFolder, &error)) << "a folder among the parts";
        EXPECT_NE(error.find("not a plain file"), std::string::npos) << error;
    }
}

// Header fields of a hand-made member; the rest is filled as tar fills it.
struct Header {
    explicit Header(std::string memberName) : name(std::move(memberName)) {}
    Header& typed(char value) { return type = value, *this; }
    Header& sized(std::uint64_t value) { return size = value, *this; }
    Header& linkedTo(std::string value) { return linkName = std::move(value), *this; }
    Header& withMagic(std::string value) { return magic = std::move(value), *this; }
    Header& prefixed(std::string value) { return prefix = std::move(value), *this; }

    std::string name;
    char type = '0';
    std::uint64_t size = 0;
    std::string linkName;
    std::string magic = std::string(
        "ustar\0"
        "00",
        8);
    std::string prefix;
};

void put(std::string& block, std::size_t offset, const std::string& value) {
    block.replace(offset, value.size(), value);
}

std::string octal(std::uint64_t value, int digits) {
    char text[24];
    std::snprintf(text, sizeof text, "%0*llo", digits, static_cast<unsigned long long>(value));
    return text;
}

// The checksum tar writes: six octal digits, a NUL and a blank, over the block with the
// field as blanks; old tars summed signed chars.
void seal(std::string& block, bool signedSum = false) {
    put(block, 148, std::string(8, ' '));
    long long sum = 0;
    for (const char byte : block) sum += signedSum ? static_cast<signed char>(byte) : static_cast<unsigned char>(byte);
    put(block, 148, octal(static_cast<std::uint64_t>(sum), 6) + std::string("\0 ", 2));
}

std::string headerBlock(const Header& header) {
    std::string block(512, '\0');
    put(block, 0, header.name);
    put(block, 100, "0000644");
    put(block, 108, "0000000");
    put(block, 116, "0000000");
    put(block, 124, octal(header.size, 11));
    put(block, 136, "14345413125");
    block[156] = header.type;
    put(block, 157, header.linkName);
    put(block, 257, header.magic);
    put(block, 345, header.prefix);
    seal(block);
    return block;
}

std::string padded(std::string data) {
    data.resize((data.size() + 511) / 512 * 512, '\0');
    return data;
}

// A header and its data, the size field telling the data's length.
std::string member(Header header, const std::string& data = "") {
    header.size = data.size();
    return headerBlock(header) + padded(data);
}

std::string paxRecord(const std::string& keyword, const std::string& value) {
    const std::string body = " " + keyword + "=" + value + "\n";
    std::size_t length = body.size() + 1;
    while (std::to_string(length).size() + body.size() != length) ++length;
    return std::to_string(length) + body;
}

const std::string kEnd(1024, '\0');

class HandMadeArchive {
public:
    // From a file; the same bytes in memory must list alike, or be refused for the same reason.
    std::optional<std::vector<Member>> read(const std::string& bytes, std::string* error = nullptr) {
        writeFile(path_, bytes);
        std::string fileError;
        std::string memoryError;
        auto members = TarListing::read(path_, &fileError);
        const auto inMemory = TarListing::readBytes(bytes, &memoryError);
        EXPECT_EQ(inMemory.has_value(), members.has_value());
        if (inMemory && members) {
            EXPECT_EQ(namesOf(*inMemory), namesOf(*members));
        }
        EXPECT_EQ(memoryError, fileError);
        if (error != nullptr) *error = fileError;
        return members;
    }

    std::optional<std::vector<std::string>> names(const std::string& bytes) {
        const auto members = read(bytes);
        if (!members) return std::nullopt;
        return namesOf(*members);
    }

    // The reason given for refusing the archive, or "(listed)" when it wasn't refused.
    std::string refusal(const std::string& bytes) {
        std::string error;
        return read(bytes, &error) ? "(listed)" : error;
    }

private:
    test::TestFolder folder_;
    std::string path_ = folder_ / "hand-made.tar";
};

TEST(TarListingTest, ReadsTheHeadersOfOlderAndOtherWriters) {
    HandMadeArchive archive;
    const std::string noMagic(8, '\0');

    // Old (v7) headers: no magic, and a directory told by its trailing "/" alone.
    auto members = archive.read(member(Header("var/mobile/").typed('\0').withMagic(noMagic)) +
                                member(Header("var/mobile/a.txt").typed('\0').withMagic(noMagic), "abc") + kEnd);
    ASSERT_TRUE(members.has_value());
    ASSERT_EQ(members->size(), 2u);
    EXPECT_EQ((*members)[0].type, Type::Directory);
    EXPECT_EQ((*members)[1].type, Type::File);
    EXPECT_EQ((*members)[1].size, 3u);
    EXPECT_EQ((*members)[1].dataOffset, 1024u);
    EXPECT_EQ((*members)[1].modificationTime, 014345413125);

    // A checksum of signed chars, over a name in UTF-8.
    std::string accented = headerBlock(Header("var/mobile/caf\xc3\xa9.txt"));
    seal(accented, true);
    members = archive.read(accented + kEnd);
    ASSERT_TRUE(members.has_value());
    EXPECT_EQ(namesOf(*members), std::vector<std::string>{"var/mobile/caf\xc3\xa9.txt"});

    // A size in base-256, as GNU tar writes it beyond 8 GiB; the next header is found after the data.
    std::string large = headerBlock(Header("var/large.bin"));
    put(large, 124, std::string("\x80\0\0\0\0\0\0\0\0\0\x04\x01", 12));
    seal(large);
    members = archive.read(large + padded(std::string(1025, 'b')) + member(Header("var/after.txt"), "x") + kEnd);
    ASSERT_TRUE(members.has_value());
    ASSERT_EQ(namesOf(*members), (std::vector<std::string>{"var/large.bin", "var/after.txt"}));
    EXPECT_EQ((*members)[0].size, 1025u);

    // A ustar prefix counts, but not the same bytes behind a GNU magic, where GNU tar keeps times.
    members =
        archive.read(member(Header("notes.sqlite").prefixed("var/mobile/Library/Notes")) +
                     member(Header("b.txt").withMagic(std::string("ustar  \0", 8)).prefixed("12345670123")) + kEnd);
    ASSERT_TRUE(members.has_value());
    EXPECT_EQ(namesOf(*members), (std::vector<std::string>{"var/mobile/Library/Notes/notes.sqlite", "b.txt"}));

    // A pax path and link path override the header; a global header without names is skipped.
    const std::string pax = paxRecord("mtime", "1.5") + paxRecord("path", "var/mobile/real-name") +
                            paxRecord("linkpath", "var/mobile/real-target");
    members = archive.read(member(Header("pax_global_header").typed('g'), paxRecord("comment", "made by hand")) +
                           member(Header("PaxHeaders/x").typed('x'), pax) +
                           member(Header("stand-in").typed('2').linkedTo("stand-in-target")) + kEnd);
    ASSERT_TRUE(members.has_value());
    ASSERT_EQ(members->size(), 1u);
    EXPECT_EQ((*members)[0].name, "var/mobile/real-name");
    EXPECT_EQ((*members)[0].type, Type::SymbolicLink);
    EXPECT_EQ((*members)[0].linkTarget, "var/mobile/real-target");
    EXPECT_EQ((*members)[0].modificationTime, 1) << "the pax time, in whole seconds";

    // Devices and fifos are Other.
    members = archive.read(member(Header("dev/null").typed('3')) + member(Header("var/fifo").typed('6')) + kEnd);
    ASSERT_TRUE(members.has_value());
    EXPECT_EQ((*members)[0].type, Type::Other);
    EXPECT_EQ((*members)[1].type, Type::Other);
}

TEST(TarListingTest, EndsWhereTarStops) {
    HandMadeArchive archive;
    const std::string one = member(Header("var/one.txt"), "1");
    const std::string two = member(Header("var/two.txt"), "2");

    const std::vector<std::string> none;
    const std::vector<std::string> both{"var/one.txt", "var/two.txt"};

    EXPECT_EQ(archive.names(""), none) << "an empty file";
    EXPECT_EQ(archive.names(std::string(10240, '\0')), none) << "zero blocks only";
    EXPECT_EQ(archive.names(one + two + kEnd + std::string(8192, '\0')), both) << "two zero blocks";
    EXPECT_EQ(archive.names(one + two), both) << "the end of the file between members";
    EXPECT_EQ(archive.names(one + two + std::string(512, '\0')), both) << "one zero block, then the end of the file";
    // GNU tar stops at a lone zero block and extracts nothing after it.
    EXPECT_EQ(archive.names(one + std::string(512, '\0') + two + kEnd), std::vector<std::string>{"var/one.txt"});
}

TEST(TarListingTest, RefusesDamagedArchivesAndThoseTarsCouldReadDifferentlyWithAReason) {
    HandMadeArchive archive;
    const std::string one = member(Header("var/one.txt"), std::string(700, '1'));
    std::string corrupted = one;
    corrupted[3] = 'X';
    std::string badSize = headerBlock(Header("var/one.txt"));
    put(badSize, 124, "0000000001x");
    seal(badSize);
    std::string hugeBase256 = headerBlock(Header("var/huge.bin"));
    put(hugeBase256, 124, std::string("\x80\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff", 12));
    seal(hugeBase256);
    const std::string hugeLongName = headerBlock(Header("././@LongLink").typed('L').sized(077777777777));
    const std::string longNameWithNul =
        member(Header("././@LongLink").typed('L'), std::string("var/a\0/../../etc", 16));
    const std::string tooLongPax = member(Header("PaxHeaders/x").typed('x'), "99 path=var/a\n");
    const std::pair<std::string, std::string> damaged[] = {
        {one + corrupted + kEnd, "bad header checksum at byte 1536"},
        {one.substr(0, 1300), "truncated data"},
        {one + one.substr(0, 200), "truncated header at byte 1536"},
        {badSize + kEnd, "bad size field at byte 0"},
        {headerBlock(Header("var/huge.bin").sized(077777777777)) + kEnd, "truncated data"},
        {hugeBase256 + kEnd, "bad size field"},
        {hugeLongName + kEnd, "extension header of 8589934591 bytes at byte 0"},
        {longNameWithNul + one + kEnd, "NUL inside a long name"},
        {tooLongPax + one + kEnd, "malformed pax header"},
        {member(Header("PaxHeaders/x").typed('x'), "11 path=var\n") + one + kEnd, "malformed pax header"},
        {member(Header("././@LongLink").typed('L'), "var/a") + kEnd, "extension header without a member"},
    };
    // Tars differ on whether a directory's or link's data is skipped, and a global pax path
    // would rename every later member: a listing that guessed could miss what is extracted.
    const std::string hidden = member(Header("../../etc/passwd"), "root::0:0::/:/bin/sh\n");
    const std::string afterName = member(Header("var/b.txt"));
    const std::pair<std::string, std::string> ambiguous[] = {
        {member(Header("var/mobile/").typed('5'), hidden) + kEnd, "data on a member that has none"},
        {member(Header("var/mobile/").typed('0'), hidden) + kEnd, "data on a member that has none"},
        {member(Header("var/link").typed('2').linkedTo("a"), hidden) + kEnd, "data on a member that has none"},
        {member(Header("var/link").typed('1').linkedTo("var/a"), hidden) + kEnd, "data on a member that has none"},
        {member(Header("pax_global_header").typed('g'), paxRecord("path", "/etc/passwd")) + afterName + kEnd,
         "pax global header sets \"path\""},
        {member(Header("././@LongLink").typed('L'), "var/a") + member(Header("././@LongLink").typed('L'), "/etc") +
             afterName + kEnd,
         "second long name"},
        {member(Header("PaxHeaders/x").typed('x'), paxRecord("path", "var/a") + paxRecord("path", "/etc")) + afterName +
             kEnd,
         "repeated pax \"path\""},
        {member(Header("PaxHeaders/x").typed('x'), paxRecord("path", "")) + afterName + kEnd, "bad pax \"path\""},
        {member(Header("")) + kEnd, "member without a name"},
        {member(Header("var/link").typed('2')) + kEnd, "link without a target"},
    };
    using Cases = std::span<const std::pair<std::string, std::string>>;
    for (const Cases cases : {Cases(damaged), Cases(ambiguous)}) {
        for (const auto& [bytes, reason] : cases) {
            SCOPED_TRACE(reason);
            std::string error;
            EXPECT_FALSE(archive.read(bytes, &error).has_value());
            EXPECT_NE(error.find(reason), std::string::npos) << error;
        }
    }
}

// GNU tar reads a long name as a C string over the whole blocks it fills, so a size that
// stops short of the NUL doesn't end the name: the listing would judge one name and tar
// unpack another.
TEST(TarListingTest, ReadsALongNameToItsEndAsTarDoes) {
    HandMadeArchive archive;
    const std::string judged = "var/mobile/Library/Notes/a";
    const std::string unpacked = judged + "/../../../../../etc/passwd";
    const std::string runningOn = headerBlock(Header("././@LongLink").typed('L').sized(judged.size())) +
                                  padded(unpacked) + member(Header("stand-in"), "x") + kEnd;
    EXPECT_NE(archive.refusal(runningOn).find("long name running on past its size"), std::string::npos);
    test::TestFolder folder;
    writeFile(folder / "running-on.tar", runningOn);
    EXPECT_EQ(test::runCommand("tar -tf " + ShellQuote::path(folder / "running-on.tar")), unpacked + "\n");

    const std::string endedByPadding =
        member(Header("././@LongLink").typed('L'), judged) + member(Header("stand-in"), "x") + kEnd;
    EXPECT_EQ(archive.names(endedByPadding), std::vector<std::string>{judged}) << "no NUL, but the block ends it";
    writeFile(folder / "ended.tar", endedByPadding);
    EXPECT_EQ(test::runCommand("tar -tf " + ShellQuote::path(folder / "ended.tar")), judged + "\n");
}

}  // namespace
}  // namespace stowhaven

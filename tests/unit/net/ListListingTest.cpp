// The reader of LIST listings, on what servers without MLSD send and on what a hostile one
// could: each listing is read through to its entries, or refused whole with a reason.

#include "net/ListListing.h"

#include "support/CapturedLog.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace stowhaven {
namespace {

struct Expected {
    std::string name;
    bool isDirectory;
    bool isSymbolicLink;
    std::int64_t size;
};

std::vector<Expected> described(const std::vector<FtpEntry>& entries) {
    std::vector<Expected> out;
    for (const auto& entry : entries) out.push_back({entry.name, entry.isDirectory, entry.isSymbolicLink, entry.size});
    return out;
}

bool operator==(const Expected& a, const Expected& b) {
    return a.name == b.name && a.isDirectory == b.isDirectory && a.isSymbolicLink == b.isSymbolicLink &&
           a.size == b.size;
}

void PrintTo(const Expected& entry, std::ostream* out) {
    *out << "{\"" << entry.name << "\" dir=" << entry.isDirectory << " link=" << entry.isSymbolicLink
         << " size=" << entry.size << "}";
}

TEST(ListListingTest, ReadsTheUnixAndDosFormsAndSkipsWhatItCantRead) {
    const struct {
        const char* what;
        std::string listing;
        std::vector<Expected> entries;
    } read[] = {
        {"a Unix listing as ls gives it",
         "total 16\r\n"
         "drwxr-xr-x   2 owner    owner        4096 Nov 24 10:00 .\r\n"
         "drwxr-xr-x   9 owner    owner        4096 Nov 24 10:00 ..\r\n"
         "drwxr-xr-x   2 owner    owner        4096 Nov 24 10:00 2026-11-24_10~00~00\r\n"
         "-rw-r--r--   1 owner    owner  9876543210 Nov  4  2025 2026-11-24_10~00~00.stowhvn\r\n"
         "lrwxrwxrwx   1 owner    owner          11 Jan  1 9:05 latest -> /elsewhere\r\n",
         {{"2026-11-24_10~00~00", true, false, 4096},
          {"2026-11-24_10~00~00.stowhvn", false, false, 9876543210},
          {"latest", false, true, 11}}},
        {"names with blanks kept as they stand, an arrow only splits a link",
         "-rw-r--r-- 1 owner owner 5 Nov 24 10:00  two  blanks \r\n"
         "-rw-r--r-- 1 owner owner 5 Nov 24 10:00 not -> a link\r\n"
         "lrwxrwxrwx 1 owner owner 5 Nov 24 10:00 no target\r\n",
         {{" two  blanks ", false, false, 5}, {"not -> a link", false, false, 5}, {"no target", false, true, 5}}},
        {"owners and groups missing or odd, ACL marks, a month in capitals",
         "drwxr-xr-x+ 3 owner 0 NOV 24 10:00 a\r\n"
         "-rw-r--r--@ 1 Dec 12 7 Nov 24 2025 b\r\n"
         "-rw-r--r-- 1 domain user  staff 3 Nov 24 10:00 c\r\n",
         {{"a", true, false, 0}, {"b", false, false, 7}, {"c", false, false, 3}}},
        {"the DOS form",
         "11-24-26  10:00AM       <DIR>          Stowhaven\r\n"
         "11-24-2026  22:15       1234 data tar.stowhvn\r\n"
         "01-02-03  09:00pm 0 empty\r\n",
         {{"Stowhaven", true, false, 0}, {"data tar.stowhvn", false, false, 1234}, {"empty", false, false, 0}}},
        {"lines of no known form, devices, pipes and sockets are skipped",
         "-rw-r--r-- 1 owner owner 5 Nov 24 10:00 evil\r\nDELE victim\r\n"
         "\r\n"
         "crw-rw-rw- 1 root root 1, 3 Nov 24 10:00 null\r\n"
         "prw-r--r-- 1 owner owner 0 Nov 24 10:00 pipe\r\n"
         "-rw-r--r-- 1 owner owner 5 Nov 24 10:00\r\n"
         "-rw-r--r-- 1 owner owner 5 Foo 24 10:00 no month\r\n"
         "-rw-r--r-- 1 owner owner 5 Nov 32 10:00 no day\r\n"
         "-rw-r--r-- 1 owner owner five Nov 24 10:00 no size\r\n"
         "11-24-26  10:00AM       <JUNCTION>     junction\r\n"
         "11/24/26  10:00AM       12 slashes\r\n"
         "type=file;size=1; a machine line\r\n"
         "\x1b[2J\x07\r\n",
         {{"evil", false, false, 5}}},
        {"nothing at all", "", {}},
    };
    for (const auto& row : read) {
        SCOPED_TRACE(row.what);
        std::string problem;
        const auto entries = ListListing::parse(row.listing, &problem);
        ASSERT_TRUE(entries) << problem;
        EXPECT_EQ(described(*entries), row.entries);
    }

    const test::CapturedLog log;
    ASSERT_TRUE(ListListing::parse("total 0\r\nwhat is this\r\nand this\r\n", nullptr));
    EXPECT_TRUE(log.contains("Skipped 2 line(s)")) << "what was skipped is told, once";
    EXPECT_TRUE(log.contains("\"what is this\""));
}

TEST(ListListingTest, RefusesTheWholeListingForANameOrSizeNoServerShouldSend) {
    const struct {
        const char* what;
        std::string listing;
        const char* problem;
    } refused[] = {
        {"a slash in a name", "-rw-r--r-- 1 o o 1 Nov 24 10:00 ok\r\n-rw-r--r-- 1 o o 1 Nov 24 10:00 ../../etc/passwd\r\n",
         "not one file name"},
        {"a slash in a DOS name", "11-24-26  10:00AM       <DIR>          a/b\r\n", "not one file name"},
        {"a backslash", "11-24-26  10:00AM 5 ..\\secret\r\n", "not one file name"},
        {"a link's name with a slash", "lrwxrwxrwx 1 o o 5 Nov 24 10:00 a/b -> /etc\r\n", "not one file name"},
        {"a carriage return in a name", "-rw-r--r-- 1 o o 1 Nov 24 10:00 evil\rname\r\n", "not one file name"},
        {"a NUL in a name", "-rw-r--r-- 1 o o 1 Nov 24 10:00 a" + std::string(1, '\0') + "b\r\n", "not one file name"},
        {"an escape sequence in a name", "-rw-r--r-- 1 o o 1 Nov 24 10:00 \x1b]0;owned\x07\r\n", "not one file name"},
        {"a blank name", "-rw-r--r-- 1 o o 1 Nov 24 10:00 \t\r\n", "not one file name"},
        {"a link to nowhere without a name", "lrwxrwxrwx 1 o o 5 Nov 24 10:00  -> /etc\r\n", "without a name"},
        {"a size beyond 64 bits", "-rw-r--r-- 1 o o 9223372036854775808 Nov 24 10:00 huge\r\n", "beyond 64 bits"},
        {"a DOS size beyond 64 bits", "11-24-26  10:00AM 99999999999999999999999 huge\r\n", "beyond 64 bits"},
        {"a listing cut short", "-rw-r--r-- 1 o o 1 Nov 24 10:00 a\r\n-rw-r--r-- 1 o o 1 Nov 24 10:00 b", "cut short"},
    };
    for (const auto& row : refused) {
        SCOPED_TRACE(row.what);
        std::string problem;
        EXPECT_FALSE(ListListing::parse(row.listing, &problem));
        EXPECT_NE(problem.find(row.problem), std::string::npos) << problem;
        EXPECT_EQ(problem.find_first_of("\r\n\x1b\x07", 0), std::string::npos) << "a printable line: " << problem;
    }
}

}  // namespace
}  // namespace stowhaven

// Folder listings as FTP servers send them: MLSD's machine form, LIST's Unix form (times,
// years, a link, blanks in names) and its DOS form, and a hostile one.

#include "seeds/Seeds.h"

namespace stowhaven::fuzz {

namespace {

constexpr std::string_view kMlsd =
    "type=cdir;modify=20261124100000;perm=flcdmpe; .\r\n"
    "type=pdir;modify=20261124100000;perm=flcdmpe; ..\r\n"
    "type=dir;modify=20261124100000;perm=flcdmpe; 2026-11-24_10~00~00\r\n"
    "type=file;size=4096;modify=20261124100000;perm=adfrw; 2026-11-24_10~00~00.stowhvn\r\n"
    "type=OS.unix=slink:/elsewhere;size=10; latest\r\n";

constexpr std::string_view kUnix =
    "total 16\r\n"
    "drwxr-xr-x   2 owner    owner        4096 Nov 24 10:00 2026-11-24_10~00~00\r\n"
    "-rw-r--r--   1 owner    owner  9876543210 Nov  4  2025 two  blanks.stowhvn\r\n"
    "lrwxrwxrwx   1 owner    owner          10 Jan  1 9:05 latest -> /elsewhere\r\n"
    "crw-rw-rw-   1 root     root       1,   3 Nov 24 10:00 null\r\n";

constexpr std::string_view kDos =
    "11-24-26  10:00AM       <DIR>          Stowhaven\r\n"
    "11-24-2026  10:00PM                 1234 iPhone.stowhvn\r\n";

constexpr std::string_view kHostile =
    "-rw-r--r-- 1 o o 18446744073709551616 Nov 24 10:00 evil\rname -> ../../etc\r\n"
    "11-24-26  10:00AM       <DIR>          a/b\r\nDELE victim\r\ntype=file;size=-1; ..";

}  // namespace

void writeFtpListSeeds(const std::filesystem::path& folder) {
    const SeedCorpus corpus(folder, "ftp_list");
    corpus.add("mlsd.txt", kMlsd);
    corpus.add("unix.txt", kUnix);
    corpus.add("dos.txt", kDos);
    corpus.add("hostile.txt", kHostile);
}

}  // namespace stowhaven::fuzz

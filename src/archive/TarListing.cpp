#include "archive/TarListing.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <limits>
#include <string_view>
#include <utility>

namespace stowhaven {

namespace {

using Type = TarListing::Type;

constexpr std::uint64_t kBlockSize = 512;
// Long names, long links and pax headers are read into memory; real ones take a few KiB.
constexpr std::uint64_t kLargestExtension = 1024 * 1024;

using Block = std::array<char, kBlockSize>;

struct Field {
    std::size_t offset;
    std::size_t length;
};

constexpr Field kName{0, 100};
constexpr Field kSize{124, 12};
constexpr Field kModificationTime{136, 12};
constexpr Field kChecksum{148, 8};
constexpr std::size_t kTypeFlag = 156;
constexpr Field kLinkName{157, 100};
constexpr Field kMagic{257, 6};
constexpr Field kPrefix{345, 155};
// In an old GNU sparse header, and in each block of its sparse map that follows it: whether
// one more block of the map follows. Those blocks come before the data and aren't counted
// in its size.
constexpr std::size_t kSparseHeaderContinues = 482;
constexpr std::size_t kSparseMapContinues = 504;

std::string_view text(const Block& block, Field field) {
    const char* start = block.data() + field.offset;
    return {start, strnlen(start, field.length)};
}

// Octal after optional blanks, ended by a NUL, a blank or the end of the field (as tar
// reads it: nothing at all is zero), or GNU base-256 for large values: a first byte of
// 0x80 and the value in the others.
std::optional<std::uint64_t> number(const Block& block, Field field) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(block.data() + field.offset);
    std::uint64_t value = 0;
    if (bytes[0] == 0x80) {
        for (std::size_t index = 1; index < field.length; ++index) {
            if (value >> 56 != 0) return std::nullopt;
            value = value << 8 | bytes[index];
        }
        return value;
    }
    std::size_t index = 0;
    while (index < field.length && bytes[index] == ' ') ++index;
    if (index == field.length) return std::nullopt;
    // Twelve octal digits at most: no overflow.
    for (; index < field.length && bytes[index] >= '0' && bytes[index] <= '7'; ++index) {
        value = value * 8 + (bytes[index] - '0');
    }
    if (index < field.length && bytes[index] != '\0' && bytes[index] != ' ') return std::nullopt;
    return value;
}

enum class HeaderCheck { ZeroBlock, Valid, Damaged };

// The sum of the header's bytes with the checksum field counted as blanks. Old tars summed
// signed chars, so either sum is accepted.
HeaderCheck checkHeader(const Block& block) {
    std::uint64_t unsignedSum = 0;
    std::int64_t signedSum = 0;
    for (const char byte : block) {
        unsignedSum += static_cast<unsigned char>(byte);
        signedSum += static_cast<signed char>(byte);
    }
    if (unsignedSum == 0) return HeaderCheck::ZeroBlock;
    for (std::size_t index = kChecksum.offset; index < kChecksum.offset + kChecksum.length; ++index) {
        unsignedSum += ' ' - static_cast<unsigned char>(block[index]);
        signedSum += ' ' - static_cast<signed char>(block[index]);
    }
    const auto recorded = number(block, kChecksum);
    if (!recorded) return HeaderCheck::Damaged;
    const bool matches =
        *recorded == unsignedSum || (signedSum >= 0 && *recorded == static_cast<std::uint64_t>(signedSum));
    return matches ? HeaderCheck::Valid : HeaderCheck::Damaged;
}

bool isExtension(char flag) {
    // 'X' is the older Solaris letter for a pax header, which GNU tar reads as 'x'.
    return flag == 'L' || flag == 'K' || flag == 'x' || flag == 'X' || flag == 'g';
}

bool endsInSlash(std::string_view name) { return !name.empty() && name.back() == '/'; }

Type typeOf(char flag, std::string_view name) {
    switch (flag) {
        case '\0':
        case '0':
        case '7':
        case 'S':
            // Old tars marked directories with a trailing "/" alone; GNU tar still reads it so.
            return endsInSlash(name) ? Type::Directory : Type::File;
        case '1':
            return Type::HardLink;
        case '2':
            return Type::SymbolicLink;
        case '5':
        case 'D':  // A GNU incremental directory, extracted as a plain directory.
            return Type::Directory;
        default:
            return Type::Other;
    }
}

// Some tars skip data after such a header and others read the blocks that follow as
// headers: a listing can't know what will be extracted.
bool carriesNoData(char flag, Type type) {
    if (flag == 'D') return false;
    return type == Type::Directory || type == Type::HardLink || type == Type::SymbolicLink || flag == '3' ||
           flag == '4' || flag == '6';
}

std::string at(std::uint64_t offset) { return " at byte " + std::to_string(offset); }

struct PaxRecord {
    std::string_view keyword;
    std::string_view value;
};

// Records of "<length> <keyword>=<value>\n", the decimal length counting the whole record,
// filling the data exactly.
std::optional<std::vector<PaxRecord>> paxRecords(std::string_view data) {
    std::vector<PaxRecord> records;
    while (!data.empty()) {
        std::size_t digits = 0;
        std::uint64_t length = 0;
        while (digits < data.size() && data[digits] >= '0' && data[digits] <= '9') {
            length = length * 10 + static_cast<std::uint64_t>(data[digits] - '0');
            if (length > data.size()) return std::nullopt;
            ++digits;
        }
        if (digits == 0 || digits >= data.size() || data[digits] != ' ' || length < digits + 3) return std::nullopt;
        std::string_view record = data.substr(digits + 1, length - digits - 1);
        if (record.back() != '\n') return std::nullopt;
        record.remove_suffix(1);
        const std::size_t equals = record.find('=');
        if (equals == std::string_view::npos || equals == 0) return std::nullopt;
        records.push_back({record.substr(0, equals), record.substr(equals + 1)});
        data.remove_prefix(length);
    }
    return records;
}

// The keywords that change where a member lands or where the next header starts.
bool isPlacingKeyword(std::string_view keyword) {
    return keyword == "path" || keyword == "linkpath" || keyword == "size" || keyword == "GNU.sparse.name";
}

std::optional<std::uint64_t> decimal(std::string_view digits) {
    if (digits.empty() || digits.size() > 19) return std::nullopt;
    std::uint64_t value = 0;
    for (const char digit : digits) {
        if (digit < '0' || digit > '9') return std::nullopt;
        value = value * 10 + static_cast<std::uint64_t>(digit - '0');
    }
    return value;
}

std::optional<std::int64_t> asSigned(std::uint64_t value) {
    if (value > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) return std::nullopt;
    return static_cast<std::int64_t>(value);
}

// A pax time: decimal seconds, maybe negative, maybe with a fraction, which is dropped.
std::optional<std::int64_t> paxSeconds(std::string_view value) {
    const bool negative = value.starts_with('-');
    if (negative) value.remove_prefix(1);
    value = value.substr(0, value.find('.'));
    const auto seconds = decimal(value);
    const auto magnitude = seconds ? asSigned(*seconds) : std::nullopt;
    if (!magnitude) return std::nullopt;
    return negative ? -*magnitude : *magnitude;
}

// Where the archive's bytes come from.
class ByteSource {
public:
    virtual ~ByteSource() = default;
    // False when the bytes end (a file may have shrunk since it was measured) or can't be
    // read; `failure` tells which, empty for the end.
    virtual bool readAt(std::uint64_t offset, char* into, std::size_t count, std::string& failure) const = 0;
};

class MemoryBytes final : public ByteSource {
public:
    explicit MemoryBytes(std::string_view bytes) : bytes_(bytes) {}

    bool readAt(std::uint64_t offset, char* into, std::size_t count, std::string& failure) const override {
        if (offset > bytes_.size() || count > bytes_.size() - offset) {
            failure.clear();
            return false;
        }
        std::copy_n(bytes_.data() + offset, count, into);
        return true;
    }

private:
    std::string_view bytes_;
};

// One archive kept in one file or cut into parts, read as the parts joined in their order.
class ArchiveFiles final : public ByteSource {
public:
    ArchiveFiles() = default;
    ~ArchiveFiles() {
        for (const Piece& piece : pieces_) ::close(piece.descriptor);
    }
    ArchiveFiles(const ArchiveFiles&) = delete;
    ArchiveFiles& operator=(const ArchiveFiles&) = delete;

    // Opens the next part; false, with the reason, when it isn't a plain file that can be read.
    bool add(const std::string& path, std::string& error) {
        int descriptor = -1;
        // Not blocking on a fifo; plain files read as usual.
        do {
            descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        } while (descriptor < 0 && errno == EINTR);
        if (descriptor < 0) {
            error = "couldn't open " + path + ": " + std::strerror(errno);
            return false;
        }
        struct stat status {};
        const bool measured = ::fstat(descriptor, &status) == 0;
        if (!measured || !S_ISREG(status.st_mode)) {
            error = measured ? path + " is not a plain file" : "couldn't read " + path + ": " + std::strerror(errno);
            ::close(descriptor);
            return false;
        }
        pieces_.push_back({descriptor, size_, static_cast<std::uint64_t>(status.st_size)});
        size_ += static_cast<std::uint64_t>(status.st_size);
        return true;
    }

    std::uint64_t size() const { return size_; }

    bool readAt(std::uint64_t offset, char* into, std::size_t count, std::string& failure) const override {
        // The last piece that starts at or before the offset holds it.
        auto piece = std::upper_bound(pieces_.begin(), pieces_.end(), offset,
                                      [](std::uint64_t at, const Piece& next) { return at < next.start; });
        if (piece == pieces_.begin()) {
            failure.clear();
            return false;
        }
        --piece;
        while (count > 0) {
            if (piece == pieces_.end()) {
                failure.clear();
                return false;
            }
            const std::uint64_t within = offset - piece->start;
            if (within >= piece->size) {
                ++piece;
                continue;
            }
            const std::size_t wanted = static_cast<std::size_t>(std::min<std::uint64_t>(count, piece->size - within));
            const ssize_t got = ::pread(piece->descriptor, into, wanted, static_cast<off_t>(within));
            if (got < 0 && errno == EINTR) continue;
            if (got <= 0) {
                // A part that shrank since it was measured ends the bytes.
                failure = got < 0 ? std::strerror(errno) : "";
                return false;
            }
            into += got;
            offset += static_cast<std::uint64_t>(got);
            count -= static_cast<std::size_t>(got);
        }
        return true;
    }

private:
    struct Piece {
        int descriptor;
        std::uint64_t start;
        std::uint64_t size;
    };
    std::vector<Piece> pieces_;
    std::uint64_t size_ = 0;
};

// What extension headers said about the next member.
struct Extensions {
    std::optional<std::string> longName;
    std::optional<std::string> longLink;
    bool pax = false;
    std::optional<std::string> paxPath;
    std::optional<std::string> paxLinkPath;
    std::optional<std::string> paxSparseName;
    std::optional<std::uint64_t> paxSize;
    std::optional<std::int64_t> paxModificationTime;

    bool any() const { return longName || longLink || pax; }
};

class MemberReader {
public:
    MemberReader(const ByteSource& file, std::uint64_t fileSize) : file_(file), fileSize_(fileSize) {}

    std::optional<std::vector<TarListing::Member>> readAll() {
        std::vector<TarListing::Member> members;
        Extensions extensions;
        std::uint64_t offset = 0;
        Block block{};
        while (offset < fileSize_) {
            if (fileSize_ - offset < kBlockSize) return fail("truncated header" + at(offset));
            if (!read(offset, block.data(), kBlockSize, "header")) return std::nullopt;
            const HeaderCheck check = checkHeader(block);
            // Tar stops at the first zero block, whatever follows it.
            if (check == HeaderCheck::ZeroBlock) break;
            if (check == HeaderCheck::Damaged) return fail("bad header checksum" + at(offset));
            const auto headerSize = number(block, kSize);
            if (!headerSize) return fail("bad size field" + at(offset));
            const char flag = block[kTypeFlag];
            const std::uint64_t dataStart = offset + kBlockSize;
            if (isExtension(flag)) {
                const auto next = readExtension(block, offset, *headerSize, extensions);
                if (!next) return std::nullopt;
                offset = *next;
                continue;
            }
            TarListing::Member member;
            if (!describe(block, offset, *headerSize, extensions, member)) return std::nullopt;
            extensions = Extensions{};
            std::uint64_t start = dataStart;
            if (flag == 'S' && !skipSparseMap(block, start)) return std::nullopt;
            member.dataOffset = start;
            const auto next = skipData(start, member.size, offset);
            if (!next) return std::nullopt;
            offset = *next;
            members.push_back(std::move(member));
        }
        if (extensions.any()) return fail("extension header without a member before byte " + std::to_string(offset));
        return members;
    }

    const std::string& error() const { return error_; }

private:
    std::nullopt_t fail(std::string message) {
        error_ = std::move(message);
        return std::nullopt;
    }

    bool read(std::uint64_t offset, char* into, std::size_t count, const char* what) {
        std::string failure;
        if (file_.readAt(offset, into, count, failure)) return true;
        error_ = failure.empty() ? "truncated " + std::string(what) + at(offset)
                                 : "couldn't read the " + std::string(what) + at(offset) + ": " + failure;
        return false;
    }

    // The offset of the header after the data, which must lie in the file.
    std::optional<std::uint64_t> skipData(std::uint64_t start, std::uint64_t size, std::uint64_t header) {
        const std::uint64_t room = fileSize_ - start;
        if (size > room || (size + kBlockSize - 1) / kBlockSize * kBlockSize > room) {
            return fail("truncated data of the member" + at(header));
        }
        return start + (size + kBlockSize - 1) / kBlockSize * kBlockSize;
    }

    // Moves `start` past the blocks of an old GNU sparse map that follow the header.
    bool skipSparseMap(const Block& header, std::uint64_t& start) {
        bool continues = header[kSparseHeaderContinues] != '\0';
        Block block{};
        while (continues) {
            if (fileSize_ - start < kBlockSize) {
                fail("truncated sparse map" + at(start));
                return false;
            }
            if (!read(start, block.data(), kBlockSize, "sparse map")) return false;
            continues = block[kSparseMapContinues] != '\0';
            start += kBlockSize;
        }
        return true;
    }

    std::optional<std::uint64_t> readExtension(const Block& block, std::uint64_t offset, std::uint64_t size,
                                               Extensions& extensions) {
        const char flag = block[kTypeFlag];
        if (size > kLargestExtension) {
            return fail("extension header of " + std::to_string(size) + " bytes" + at(offset));
        }
        const auto next = skipData(offset + kBlockSize, size, offset);
        if (!next) return std::nullopt;
        std::string data(size, '\0');
        if (!read(offset + kBlockSize, data.data(), data.size(), "extension header")) return std::nullopt;
        if (flag == 'L' || flag == 'K') {
            auto& target = flag == 'L' ? extensions.longName : extensions.longLink;
            if (target) return fail("second long name for one member" + at(offset));
            // GNU tar reads a long name as a C string over the whole blocks it fills: one whose
            // size stops short of its NUL runs on into the rest of its last block.
            if (!data.empty() && data.back() != '\0' && size % kBlockSize != 0) {
                char following = '\0';
                if (!read(offset + kBlockSize + size, &following, 1, "extension header")) return std::nullopt;
                if (following != '\0') return fail("long name running on past its size" + at(offset));
            }
            // GNU tar counts the closing NUL in the size.
            while (!data.empty() && data.back() == '\0') data.pop_back();
            if (data.empty()) return fail("empty long name" + at(offset));
            if (data.find('\0') != std::string::npos) return fail("NUL inside a long name" + at(offset));
            target = std::move(data);
            return next;
        }
        const auto records = paxRecords(data);
        if (!records) return fail("malformed pax header" + at(offset));
        if (flag == 'g') {
            // A global header applies to every later member: nothing of a real archive.
            for (const PaxRecord& record : *records) {
                if (isPlacingKeyword(record.keyword)) {
                    return fail("pax global header sets \"" + std::string(record.keyword) + "\"" + at(offset));
                }
            }
            return next;
        }
        if (extensions.pax) return fail("second pax header for one member" + at(offset));
        extensions.pax = true;
        for (const PaxRecord& record : *records) {
            // Only the date of the member; a time tar couldn't read leaves the header's.
            if (record.keyword == "mtime") extensions.paxModificationTime = paxSeconds(record.value);
            if (!isPlacingKeyword(record.keyword)) continue;
            const std::string keyword(record.keyword);
            if (record.value.empty() || record.value.find('\0') != std::string_view::npos) {
                return fail("bad pax \"" + keyword + "\" value" + at(offset));
            }
            if (keyword == "size") {
                if (extensions.paxSize) return fail("repeated pax \"size\"" + at(offset));
                extensions.paxSize = decimal(record.value);
                if (!extensions.paxSize) return fail("bad pax \"size\" value" + at(offset));
                continue;
            }
            auto& target = keyword == "path"       ? extensions.paxPath
                           : keyword == "linkpath" ? extensions.paxLinkPath
                                                   : extensions.paxSparseName;
            if (target) return fail("repeated pax \"" + keyword + "\"" + at(offset));
            target = std::string(record.value);
        }
        return next;
    }

    bool describe(const Block& block, std::uint64_t offset, std::uint64_t headerSize, Extensions& extensions,
                  TarListing::Member& member) {
        const char flag = block[kTypeFlag];
        // GNU tar reads a pax sparse file's real name before any other.
        if (extensions.paxSparseName) {
            member.name = std::move(*extensions.paxSparseName);
        } else if (extensions.paxPath) {
            member.name = std::move(*extensions.paxPath);
        } else if (extensions.longName) {
            member.name = std::move(*extensions.longName);
        } else {
            // The prefix counts only in a POSIX header; GNU headers keep other fields there.
            const std::string_view prefix = text(block, kPrefix);
            if (text(block, kMagic) == "ustar" && !prefix.empty()) {
                member.name.append(prefix).append("/");
            }
            member.name.append(text(block, kName));
        }
        if (member.name.empty()) {
            error_ = "member without a name" + at(offset);
            return false;
        }
        member.type = typeOf(flag, member.name);
        if (member.type == Type::SymbolicLink || member.type == Type::HardLink) {
            member.linkTarget = extensions.paxLinkPath ? std::move(*extensions.paxLinkPath)
                                : extensions.longLink  ? std::move(*extensions.longLink)
                                                       : std::string(text(block, kLinkName));
            if (member.linkTarget.empty()) {
                error_ = "link without a target" + at(offset);
                return false;
            }
        }
        member.size = extensions.paxSize.value_or(headerSize);
        const auto headerTime = number(block, kModificationTime);
        member.modificationTime =
            extensions.paxModificationTime.value_or(headerTime ? asSigned(*headerTime).value_or(0) : 0);
        if (member.size != 0 && carriesNoData(flag, member.type)) {
            error_ = "data on a member that has none" + at(offset);
            return false;
        }
        return true;
    }

    const ByteSource& file_;
    const std::uint64_t fileSize_;
    std::string error_;
};

std::optional<std::vector<TarListing::Member>> listMembers(const ByteSource& source, std::uint64_t size,
                                                           std::string& error) {
    MemberReader reader(source, size);
    auto members = reader.readAll();
    if (!members) error = reader.error();
    return members;
}

std::optional<std::vector<TarListing::Member>> listMembers(const std::vector<std::string>& parts, std::string& error) {
    ArchiveFiles files;
    for (const std::string& part : parts) {
        if (!files.add(part, error)) return std::nullopt;
    }
    return listMembers(files, files.size(), error);
}

}  // namespace

bool TarListing::isHeaderBlock(std::string_view block) {
    if (block.size() != kBlockSize) return false;
    Block header{};
    std::copy(block.begin(), block.end(), header.begin());
    return checkHeader(header) != HeaderCheck::Damaged;
}

std::optional<std::vector<TarListing::Member>> TarListing::read(const std::string& path, std::string* error) {
    return readJoined({path}, error);
}

std::optional<std::vector<TarListing::Member>> TarListing::readJoined(const std::vector<std::string>& parts,
                                                                      std::string* error) {
    std::string failure;
    try {
        auto members = listMembers(parts, failure);
        if (members) return members;
    } catch (const std::exception& exception) {
        // Only memory can run short: every size is checked against the files first.
        failure = std::string("couldn't list the archive: ") + exception.what();
    }
    if (error != nullptr) *error = failure;
    return std::nullopt;
}

std::optional<std::vector<TarListing::Member>> TarListing::readBytes(std::string_view archive, std::string* error) {
    std::string failure;
    try {
        auto members = listMembers(MemoryBytes(archive), archive.size(), failure);
        if (members) return members;
    } catch (const std::exception& exception) {
        failure = std::string("couldn't list the archive: ") + exception.what();
    }
    if (error != nullptr) *error = failure;
    return std::nullopt;
}

}  // namespace stowhaven

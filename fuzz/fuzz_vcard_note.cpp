// The readers of shared vCards and address-book notes on any text: the note of a vCard,
// and the sessions of a note in either format. An old note is a uuencoded gzip tar, so
// most mutations break its Base64 or its gzip checksum; the mutator below also mutates the
// tar inside an old note and packs it anew, which carries inputs on to the tar reader and
// to the package list and SpringBoard settings picked from it.
//
// Beyond not failing: the note of a vCard is what the vCard writer wrote, and every
// session read from a note archives so that it reads back.

#include "FuzzSupport.h"
#include "archive/Base64.h"
#include "archive/Zlib.h"
#include "core/AddressBookNote.h"
#include "core/SessionHistory.h"

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

using namespace stowhaven;

constexpr std::string_view kOldNoteStart = "begin-base64 644 cydiaApps.tbz\n";
constexpr std::string_view kOldNoteEnd = "====\n";
// Inner mutations are kept to archives this large.
constexpr std::size_t kLargestInnerArchive = 64 * 1024;
// As uuencode -m writes them.
constexpr std::size_t kBase64Line = 60;

// The tar inside an old note: the Base64 between the first line and "====", gunzipped.
std::optional<std::string> archiveInOldNote(std::string_view note) {
    if (!AddressBookNote::isOldFormat(note)) return std::nullopt;
    const std::size_t body = note.find('\n');
    const std::size_t end = note.find("\n====");
    if (body == std::string_view::npos || end == std::string_view::npos || end < body) return std::nullopt;
    const auto packed = Base64::decode(note.substr(body, end - body));
    return packed ? Zlib::gunzip(*packed, kLargestInnerArchive) : std::nullopt;
}

std::optional<std::string> gzipped(const std::string& bytes) {
    z_stream stream{};
    // 15 window bits, plus 16 for a gzip header and trailer.
    if (deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY) != Z_OK) return std::nullopt;
    std::string packed(deflateBound(&stream, bytes.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    const bool done = deflate(&stream, Z_FINISH) == Z_STREAM_END;
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return done ? std::optional(packed) : std::nullopt;
}

std::string oldNoteOf(const std::string& packed) {
    const std::string encoded = Base64::encode(packed);
    std::string note(kOldNoteStart);
    for (std::size_t start = 0; start < encoded.size(); start += kBase64Line) {
        note.append(encoded, start, kBase64Line).append("\n");
    }
    return note.append(kOldNoteEnd);
}

void checkVCardNote(std::string_view note) {
    // A line break can't stand in a note's line; the vCard writer takes notes without one.
    if (note.find_first_of("\r\n") != std::string_view::npos) return;
    fuzz::expect(AddressBookNote::noteOfVCard(AddressBookNote::vCardOf(note)) == note,
                 "the note of a vCard is the one written into it");
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed) {
    auto archive = seed % 4 == 0 ? std::nullopt : archiveInOldNote(fuzz::bytesOf(data, size));
    if (!archive) return LLVMFuzzerMutate(data, size, maxSize);
    const std::size_t archiveSize = archive->size();
    archive->resize(archiveSize + archiveSize / 4 + 16);
    archive->resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(archive->data()), archiveSize, archive->size()));
    const auto packed = gzipped(*archive);
    const std::string note = packed ? oldNoteOf(*packed) : std::string();
    if (!packed || note.size() > maxSize) return LLVMFuzzerMutate(data, size, maxSize);
    std::memcpy(data, note.data(), note.size());
    return note.size();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::bytesOf(data, size);
    fuzz::useFuzzingDevice();
    const auto noteOfVCard = AddressBookNote::noteOfVCard(text);
    if (noteOfVCard) checkVCardNote(*noteOfVCard);
    const std::string note(noteOfVCard ? *noteOfVCard : text);
    // Deciphering runs the cipher tool, which the fuzzing device doesn't have.
    if (AddressBookNote::isEnciphered(note)) return 0;
    for (const auto& session : SessionHistory::fromNote(note)) fuzz::checkArchivesBack(session);
    return 0;
}

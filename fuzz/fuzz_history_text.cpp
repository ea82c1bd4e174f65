// The history text reader on any text. Most mutations of a text break its zlib checksum, so
// the mutator below also mutates the archive inside a text and writes the text anew, which
// carries inputs past the checksum to the unarchiver.

#include "FuzzSupport.h"
#include "archive/Base64.h"
#include "archive/HistoryText.h"
#include "archive/Zlib.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

// Inner mutations are kept to archives this large.
constexpr std::size_t kLargestInnerArchive = 64 * 1024;

std::optional<std::string> archiveInside(std::string_view text) {
    const auto stream = stowhaven::Base64::decode(text);
    return stream ? stowhaven::Zlib::inflate(*stream, kLargestInnerArchive) : std::nullopt;
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed) {
    using namespace stowhaven;
    auto archive = seed % 4 == 0 ? std::nullopt : archiveInside({reinterpret_cast<const char*>(data), size});
    if (!archive) return LLVMFuzzerMutate(data, size, maxSize);
    const std::size_t archiveSize = archive->size();
    archive->resize(archiveSize + archiveSize / 4 + 16);
    archive->resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(archive->data()), archiveSize, archive->size()));
    const std::string text = Base64::encode(Zlib::deflate(*archive));
    if (text.size() > maxSize) return LLVMFuzzerMutate(data, size, maxSize);
    std::memcpy(data, text.data(), text.size());
    return text.size();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace stowhaven;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (const auto root = HistoryText::decode(text, fuzz::classesForFuzzing())) fuzz::checkArchivesBack(*root);
    return 0;
}

#include "archive/HistoryText.h"

#include "archive/Base64.h"
#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "archive/Zlib.h"
#include "platform/Log.h"

namespace stowhaven {

std::optional<std::string> HistoryText::encode(const ArchiveValue& root) {
    const auto archive = KeyedArchiver::archivedData(root);
    if (!archive) {
        SH_LOG("Couldn't make the history text");
        return std::nullopt;
    }
    return Base64::encode(Zlib::deflate(*archive));
}

std::optional<std::string> HistoryText::archiveIn(std::string_view text) {
    const auto stream = Base64::decode(text);
    if (!stream) {
        SH_LOG("Refused a history text of {} characters that isn't Base64", text.size());
        return std::nullopt;
    }
    auto archive = Zlib::inflate(*stream, kMaximumArchiveSize);
    if (!archive) SH_LOG("Refused a history text whose zlib stream is damaged");
    return archive;
}

std::optional<ArchiveValue> HistoryText::decode(std::string_view text, const ClassRegistry& classes) {
    const auto archive = archiveIn(text);
    if (!archive) return std::nullopt;
    auto root = KeyedUnarchiver::unarchiveObjectWithData(*archive, classes);
    if (!root) SH_LOG("Refused a history text whose archive is damaged");
    return root;
}

}  // namespace stowhaven

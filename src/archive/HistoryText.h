#pragma once

#include "archive/ArchiveValue.h"
#include "archive/ClassRegistry.h"
#include "platform/plist/PlistCodec.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace stowhaven {

// The one persisted form of sessions: the keyed archive of a root object (a session, or
// an array of sessions), deflated as a zlib stream, in Base64 on one line.
class HistoryText {
public:
    // No archive inflates to more than a property list may have.
    static constexpr std::size_t kMaximumArchiveSize = PlistCodec::kMaximumSize;

    // Nothing, with a log line, for a root the archiver refuses.
    static std::optional<std::string> encode(const ArchiveValue& root);

    // Nothing, with a log line, for a text damaged at any stage.
    static std::optional<ArchiveValue> decode(std::string_view text, const ClassRegistry& classes);
    // The keyed archive inside a text, not yet read; nothing, with a log line, for a text
    // whose Base64 or zlib stream is damaged.
    static std::optional<std::string> archiveIn(std::string_view text);
};

}  // namespace stowhaven

#pragma once

#include "platform/plist/PlistValue.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace stowhaven {

enum class PlistFormat { Binary, Xml };

// Property lists to and from bytes and files. Input may be damaged or hostile: what can't
// be read answers nothing, with a log line. Nothing bigger than kMaximumSize or nested
// deeper than kMaximumNesting levels of arrays and dictionaries is read, nor written, so
// that what is written can always be read back.
class PlistCodec {
public:
    static constexpr std::size_t kMaximumSize = 16 * 1024 * 1024;
    static constexpr std::size_t kMaximumNesting = 512;

    // Binary ("bplist00") or XML, told apart by the first bytes. What serialize() would
    // refuse (a string or key that isn't UTF-8 or holds a NUL, a UID beyond 32 bits) isn't
    // read either, so that settings read from a file can always be written again.
    static std::optional<PlistValue> parse(std::string_view bytes);
    // Nothing when the value can't be a property list: a null inside, a string or key that
    // isn't UTF-8 or holds a NUL, a UID beyond 32 bits, nesting too deep. Dates in XML keep whole seconds only,
    // and XML holds none before year 1 or after year 9999 (nor one that is no number).
    static std::optional<std::string> serialize(const PlistValue& value, PlistFormat format);

    static std::optional<PlistValue> readFile(const std::string& path);
    // Atomically, through a temporary file beside the target that has `mode` from the
    // start; a failed write leaves what stood there.
    static bool writeFile(const std::string& path, const PlistValue& value, PlistFormat format, unsigned mode);
};

}  // namespace stowhaven

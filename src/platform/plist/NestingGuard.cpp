#include "platform/plist/NestingGuard.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

namespace stowhaven {

namespace {

constexpr std::size_t kHeaderSize = 8;  // "bplist00"
constexpr std::size_t kTrailerSize = 32;

// Walks the object graph of a binary property list from its top object, depth first and
// without recursion, and measures the longest chain of containers. Each object is
// measured once, so shared references cost nothing more.
class BinaryNestingScan {
public:
    explicit BinaryNestingScan(std::string_view bytes) : bytes_(bytes) {}

    bool within(std::size_t maximumDepth) {
        if (!readTrailer()) return false;
        state_.assign(objectCount_, State::Unvisited);
        height_.assign(objectCount_, 0);
        const auto top = examine(topObject_);
        if (!top) return false;
        if (!top->isContainer) return true;
        if (maximumDepth == 0) return false;
        std::vector<Frame> path{Frame{topObject_, *top}};
        state_[topObject_] = State::Active;
        while (!path.empty()) {
            Frame& frame = path.back();
            if (frame.container.references == 0) {
                finish(path);
                continue;
            }
            const auto child = readUnsigned(frame.container.nextReference, referenceSize_);
            frame.container.nextReference += referenceSize_;
            --frame.container.references;
            if (!child || *child >= objectCount_) return false;
            if (frame.container.keys > 0) {
                --frame.container.keys;
                if (!isPlainKey(*child)) return false;
            }
            switch (state_[*child]) {
                case State::Active:
                    return false;  // a cycle
                case State::Done:
                    if (path.size() + height_[*child] > maximumDepth) return false;
                    frame.tallestChild = std::max(frame.tallestChild, height_[*child]);
                    break;
                case State::Unvisited: {
                    const auto object = examine(*child);
                    if (!object) return false;
                    if (!object->isContainer) {
                        state_[*child] = State::Done;
                        break;
                    }
                    if (path.size() + 1 > maximumDepth) return false;
                    state_[*child] = State::Active;
                    path.push_back(Frame{*child, *object});
                    break;
                }
            }
        }
        return true;
    }

private:
    enum class State : std::uint8_t { Unvisited, Active, Done };

    struct Object {
        bool isContainer = false;
        std::size_t nextReference = 0;
        std::uint64_t references = 0;
        // A dictionary lists its keys' references before its values'.
        std::uint64_t keys = 0;
    };

    struct Span {
        std::uint8_t type = 0;
        std::size_t position = 0;  // just after the marker and the count
        std::uint64_t count = 0;
    };

    struct Frame {
        std::uint64_t object;
        Object container;
        std::uint32_t tallestChild = 0;
    };

    void finish(std::vector<Frame>& path) {
        const Frame frame = path.back();
        path.pop_back();
        state_[frame.object] = State::Done;
        height_[frame.object] = frame.tallestChild + 1;
        if (!path.empty()) path.back().tallestChild = std::max(path.back().tallestChild, height_[frame.object]);
    }

    std::optional<std::uint64_t> readUnsigned(std::size_t offset, std::size_t width) const {
        if (width == 0 || width > 8 || offset > bytes_.size() || bytes_.size() - offset < width) return std::nullopt;
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < width; ++i) value = value << 8 | static_cast<std::uint8_t>(bytes_[offset + i]);
        return value;
    }

    bool readTrailer() {
        if (bytes_.size() < kHeaderSize + kTrailerSize) return false;
        const std::size_t trailer = bytes_.size() - kTrailerSize;
        offsetSize_ = static_cast<std::uint8_t>(bytes_[trailer + 6]);
        referenceSize_ = static_cast<std::uint8_t>(bytes_[trailer + 7]);
        const auto count = readUnsigned(trailer + 8, 8);
        const auto top = readUnsigned(trailer + 16, 8);
        const auto table = readUnsigned(trailer + 24, 8);
        if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8) return false;
        // Every object takes a byte at least, so the count can't exceed the size.
        if (*count == 0 || *count > bytes_.size() || *top >= *count) return false;
        if (*table < kHeaderSize || *table > trailer || (trailer - *table) / offsetSize_ < *count) return false;
        objectCount_ = *count;
        topObject_ = *top;
        offsetTable_ = *table;
        return true;
    }

    // An object's type and count as its marker gives them; nothing when damaged.
    std::optional<Span> span(std::uint64_t object) const {
        const auto offset = readUnsigned(offsetTable_ + object * offsetSize_, offsetSize_);
        if (!offset || *offset < kHeaderSize || *offset >= bytes_.size() - kTrailerSize) return std::nullopt;
        const auto marker = static_cast<std::uint8_t>(bytes_[*offset]);
        Span result{static_cast<std::uint8_t>(marker >> 4), *offset + 1, marker & 0xFu};
        if (result.count == 0xF) {
            if (result.position >= bytes_.size()) return std::nullopt;
            const auto countMarker = static_cast<std::uint8_t>(bytes_[result.position]);
            if (countMarker >> 4 != 0x1 || (countMarker & 0xF) > 3) return std::nullopt;
            const std::size_t width = std::size_t{1} << (countMarker & 0xF);
            const auto wideCount = readUnsigned(result.position + 1, width);
            if (!wideCount) return std::nullopt;
            result.count = *wideCount;
            result.position += 1 + width;
        }
        return result;
    }

    // Where an object's references start and how many there are; nothing when damaged.
    std::optional<Object> examine(std::uint64_t object) const {
        const auto found = span(object);
        if (!found) return std::nullopt;
        // Arrays, ordered sets, sets and dictionaries.
        const std::uint8_t type = found->type;
        if (type != 0xA && type != 0xB && type != 0xC && type != 0xD) return Object{};
        const std::size_t end = bytes_.size() - kTrailerSize;
        if (found->count > end || found->position > end) return std::nullopt;
        const std::uint64_t references = type == 0xD ? found->count * 2 : found->count;
        if ((end - found->position) / referenceSize_ < references) return std::nullopt;
        return Object{true, found->position, references, type == 0xD ? found->count : 0};
    }

    // A dictionary key must be an ASCII or UTF-16 string without a NUL: libplist aborts
    // on a key whose length and C string length differ.
    bool isPlainKey(std::uint64_t object) const {
        const auto found = span(object);
        if (!found || (found->type != 0x5 && found->type != 0x6)) return false;
        const std::size_t unit = found->type == 0x5 ? 1 : 2;
        const std::size_t end = bytes_.size() - kTrailerSize;
        if (found->position > end || found->count > (end - found->position) / unit) return false;
        const std::string_view text = bytes_.substr(found->position, found->count * unit);
        if (unit == 1) return text.find('\0') == std::string_view::npos;
        for (std::size_t i = 0; i < text.size(); i += 2) {
            if (text[i] == '\0' && text[i + 1] == '\0') return false;
        }
        return true;
    }

    std::string_view bytes_;
    std::uint8_t offsetSize_ = 0;
    std::uint8_t referenceSize_ = 0;
    std::uint64_t objectCount_ = 0;
    std::uint64_t topObject_ = 0;
    std::uint64_t offsetTable_ = 0;
    std::vector<State> state_;
    // Containers nested in and below each measured object, itself included.
    std::vector<std::uint32_t> height_;
};

bool isContainerName(std::string_view name) {
    return name == "array" || name == "dict";
}

// Where the tag that opens at `open` ends ('>'), skipping quoted attribute values.
std::size_t endOfTag(std::string_view text, std::size_t open) {
    char quote = 0;
    for (std::size_t i = open + 1; i < text.size(); ++i) {
        if (quote != 0) {
            if (text[i] == quote) quote = 0;
        } else if (text[i] == '"' || text[i] == '\'') {
            quote = text[i];
        } else if (text[i] == '>') {
            return i;
        }
    }
    return std::string_view::npos;
}

}  // namespace

bool binaryPlistNestingWithin(std::string_view bytes, std::size_t maximumDepth) {
    return BinaryNestingScan(bytes).within(maximumDepth);
}

bool xmlPlistNestingWithin(std::string_view text, std::size_t maximumDepth) {
    static constexpr std::pair<std::string_view, std::string_view> kSkipped[] = {
        {"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}, {"<!", ">"}};
    std::size_t depth = 0;
    std::size_t position = text.find('<');
    while (position != std::string_view::npos) {
        const std::string_view rest = text.substr(position);
        const auto skipped = std::find_if(std::begin(kSkipped), std::end(kSkipped),
                                          [&](const auto& pair) { return rest.starts_with(pair.first); });
        std::size_t end = 0;
        if (skipped != std::end(kSkipped)) {
            end = text.find(skipped->second, position + skipped->first.size());
            if (end != std::string_view::npos) end += skipped->second.size() - 1;
        } else {
            end = endOfTag(text, position);
            if (end == std::string_view::npos) break;
            const bool closing = rest.size() > 1 && rest[1] == '/';
            const bool empty = text[end - 1] == '/';
            std::string_view name = text.substr(position + (closing ? 2 : 1), end - position - (closing ? 2 : 1));
            name = name.substr(0, name.find_first_of(" \t\r\n/"));
            if (isContainerName(name) && closing) {
                if (depth > 0) --depth;
            } else if (isContainerName(name) && !empty && ++depth > maximumDepth) {
                return false;
            }
        }
        if (end == std::string_view::npos) break;
        position = text.find('<', end + 1);
    }
    return true;
}

}  // namespace stowhaven

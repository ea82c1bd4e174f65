#include "platform/plist/LibplistConversion.h"

#include "platform/plist/LibplistExactScalars.h"
#include "platform/plist/Utf8.h"

#include <fmt/format.h>

#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>

namespace stowhaven::libplist {

namespace {

constexpr std::string_view kUidKey = "CF$UID";

// Thrown inside the conversion only; its callers get the reason.
struct Refusal {
    std::string reason;
};

Node checked(Node node) {
    if (!node) throw Refusal{"libplist made no node"};
    return node;
}

Node checked(plist_t node) {
    return checked(Node(node));
}

// Both ways: libplist keeps C strings and writes UTF-8 as UTF-16, so text that breaks
// either rule can't be written, and text read with it would make the whole value unwritable.
const char* checkedText(const std::string& text) {
    if (text.find('\0') != std::string::npos) throw Refusal{"text with a NUL"};
    if (!isValidUtf8(text)) throw Refusal{"text that isn't UTF-8"};
    return text.c_str();
}

// A keyed archive's references are 32 bits wide; libplist writes no more of a UID.
std::uint64_t checkedUid(std::uint64_t uid) {
    if (uid > std::numeric_limits<std::uint32_t>::max()) throw Refusal{"a UID beyond 32 bits"};
    return uid;
}

Node encode(const PlistValue& value, std::size_t depth, std::size_t maximumDepth) {
    if ((value.isArray() || value.isDictionary()) && depth >= maximumDepth) {
        throw Refusal{fmt::format("nesting deeper than {} levels", maximumDepth)};
    }
    switch (value.kind()) {
        case PlistKind::Null:
            throw Refusal{"a null, which no property list can hold"};
        case PlistKind::Boolean:
            return checked(plist_new_bool(*value.asBoolean()));
        case PlistKind::Integer:
            if (const auto signedValue = value.asInteger()) {
                // libplist writes the two's complement of a negative number, as the format wants.
                return checked(plist_new_uint(static_cast<std::uint64_t>(*signedValue)));
            }
            return checked(newLargeUnsignedNode(*value.asUnsignedInteger()));
        case PlistKind::Real:
            return checked(plist_new_real(*value.asReal()));
        case PlistKind::String:
            return checked(plist_new_string(checkedText(*value.asString())));
        case PlistKind::Data: {
            const auto& bytes = *value.asData();
            return checked(plist_new_data(bytes.empty() ? "" : reinterpret_cast<const char*>(bytes.data()),
                                          bytes.size()));
        }
        case PlistKind::Date:
            return checked(newExactDateNode(value.asDate()->timeIntervalSinceReferenceDate()));
        case PlistKind::Array: {
            Node array = checked(plist_new_array());
            for (const PlistValue& element : *value.asArray()) {
                plist_array_append_item(array.get(), encode(element, depth + 1, maximumDepth).release());
            }
            return array;
        }
        case PlistKind::Dictionary: {
            Node dictionary = checked(plist_new_dict());
            for (const auto& [key, element] : *value.asDictionary()) {
                const char* keyText = checkedText(key);
                plist_dict_set_item(dictionary.get(), keyText, encode(element, depth + 1, maximumDepth).release());
            }
            return dictionary;
        }
        case PlistKind::Uid:
            return checked(plist_new_uid(checkedUid(*value.asUid())));
    }
    throw Refusal{"a value of no known kind"};
}

PlistValue decode(plist_t node);

PlistValue decodeInteger(plist_t node) {
    std::uint64_t value = 0;
    plist_get_uint_val(node, &value);
    if (value <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()) || isLargeUnsigned(node)) {
        return value;
    }
    return static_cast<std::int64_t>(value);
}

PlistValue decodeText(plist_t node) {
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    const std::string value(text == nullptr ? "" : text, text == nullptr ? 0 : length);
    checkedText(value);
    return value;
}

PlistValue decodeData(plist_t node) {
    std::uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(node, &length);
    return PlistValue::data(std::string_view(bytes == nullptr ? "" : bytes, bytes == nullptr ? 0 : length));
}

PlistValue decodeDate(plist_t node) {
    const auto seconds = exactDateSeconds(node);
    if (!seconds) throw Refusal{"a date libplist wouldn't write back"};
    return Date(*seconds);
}

PlistValue decodeArray(plist_t node) {
    PlistValue::Array array;
    array.reserve(plist_array_get_size(node));
    plist_array_iter rawIterator = nullptr;
    plist_array_new_iter(node, &rawIterator);
    const Malloced<void> iterator(rawIterator);
    for (;;) {
        plist_t element = nullptr;
        plist_array_next_item(node, iterator.get(), &element);
        if (element == nullptr) break;
        array.push_back(decode(element));
    }
    return array;
}

PlistValue decodeDictionary(plist_t node) {
    PlistValue::Dictionary dictionary;
    plist_dict_iter rawIterator = nullptr;
    plist_dict_new_iter(node, &rawIterator);
    const Malloced<void> iterator(rawIterator);
    for (;;) {
        char* rawKey = nullptr;
        plist_t element = nullptr;
        plist_dict_next_item(node, iterator.get(), &rawKey, &element);
        const Malloced<char> key(rawKey);
        if (element == nullptr) break;
        if (!key) throw Refusal{"a dictionary entry without a key"};
        std::string name(key.get());
        checkedText(name);
        dictionary.insert_or_assign(std::move(name), decode(element));
    }
    if (dictionary.size() == 1 && dictionary.begin()->first == kUidKey) {
        if (const auto uid = dictionary.begin()->second.asUnsignedInteger()) return PlistValue::uid(checkedUid(*uid));
    }
    return dictionary;
}

PlistValue decode(plist_t node) {
    switch (plist_get_node_type(node)) {
        case PLIST_BOOLEAN: {
            std::uint8_t value = 0;
            plist_get_bool_val(node, &value);
            return value != 0;
        }
        case PLIST_UINT:
            return decodeInteger(node);
        case PLIST_REAL: {
            double value = 0;
            plist_get_real_val(node, &value);
            return value;
        }
        case PLIST_STRING:
            return decodeText(node);
        case PLIST_DATA:
            return decodeData(node);
        case PLIST_DATE:
            return decodeDate(node);
        case PLIST_ARRAY:
            return decodeArray(node);
        case PLIST_DICT:
            return decodeDictionary(node);
        case PLIST_UID: {
            std::uint64_t value = 0;
            plist_get_uid_val(node, &value);
            return PlistValue::uid(checkedUid(value));
        }
        default:
            throw Refusal{fmt::format("a node of libplist type {}", static_cast<int>(plist_get_node_type(node)))};
    }
}

}  // namespace

Node nodeFromValue(const PlistValue& value, std::size_t maximumDepth, std::string& reason) {
    try {
        return encode(value, 0, maximumDepth);
    } catch (const Refusal& refusal) {
        reason = refusal.reason;
        return nullptr;
    }
}

std::optional<PlistValue> valueFromNode(plist_t node, std::string& reason) {
    try {
        return decode(node);
    } catch (const Refusal& refusal) {
        reason = refusal.reason;
        return std::nullopt;
    }
}

}  // namespace stowhaven::libplist
